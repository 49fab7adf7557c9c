#include "faultkeeperctl/check/rules/Checks.h"

#include "faultkeeperctl/check/hierarchy/TreeContents.h"

#include "Common/database/ConfigurationFormat.h"

#include <Faultkeeper/Identifiers.h>
#include <Faultkeeper/StatusTable.h>

namespace Faultkeeper::Apps
{

namespace
{
bool SamePlace(const SPlace& left, const SPlace& right)
{
    return left.file == right.file && left.line == right.line && left.column == right.column;
}
} // namespace

void CheckDefinitions(const SConfigurationModel& model, CFindings& findings)
{
    std::map<ErrorId, const SDefinition*> before;
    for (const SDefinition& error : model.errors)
    {
        if (!error.identified || error.id.second == eptUnknown)
            continue;
        const auto added = before.emplace(error.id, &error);
        // a file that is listed twice has been told of where it is listed
        if (!added.second && !SamePlace(added.first->second->place, error.place))
            findings.Warning(error.place, "\"" + error.Name() + "\" is defined before, in " +
                                              PlaceText(added.first->second->place) +
                                              ": triggers and reports find this one only");
        added.first->second = &error;
    }
}

void CheckDisplay(const CHierarchy& hierarchy, CFindings& findings)
{
    const SConfigurationModel& model = hierarchy.Model();
    if (!model.KnowsAllLinks())
        return; // a link that is missing may show any error
    const std::vector<char> shown = FindShown(hierarchy, true);
    const std::vector<char> shownAlone = FindShownAlone(hierarchy, shown);
    for (std::size_t error = 0; error < shown.size(); ++error)
    {
        const bool hidden = shown[error] == 0 && !model.IsReplaced(error);
        for (const CHierarchy::SSet& set : hierarchy.Sets(error))
        {
            const bool mayRaise =
                set.model->autoTrigger || set.model->Doubts(ConfigurationFormat::kAutoTrigger);
            if (hidden && !mayRaise && !set.triggers.empty())
                findings.Warning(
                    set.model->place,
                    std::string("this set is never shown, and while its error is active it hides "
                                "its triggers: it is not automatic, and its error is ") +
                        (shownAlone[error] == 0 ? "neither visible nor shown in the tree of one that is"
                                                : "not visible, and others show it by a shallow link only"));
        }
    }
}

void CheckCapacity(const SConfigurationModel& model, CFindings& findings)
{
    const std::size_t capacity = kStatusTableCapacity;
    if (model.errors.size() > capacity)
        findings.ErrorAcross(model.errors[capacity].place,
                             std::to_string(model.errors.size()) +
                                 " errors are defined, but the shared table holds " +
                                 std::to_string(capacity) +
                                 ": from here on they are not shown, and no state key can be built for them");
}

} // namespace Faultkeeper::Apps
