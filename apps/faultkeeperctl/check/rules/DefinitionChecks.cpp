#include "faultkeeperctl/check/rules/Checks.h"

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

bool ShowsTriggers(const SConfigurationModel& model, std::size_t parent, std::size_t error)
{
    for (const STriggerSetModel& set : model.errors[parent].sets)
    {
        for (const std::size_t trigger : set.Linked())
        {
            if (trigger == error && set.linking != eelmShallow)
                return true;
        }
    }
    return false;
}

/// For each error, whether what its triggers say can be read anywhere: in its own tree, or in one above it.
std::vector<char> FindShown(const CHierarchy& hierarchy)
{
    const SConfigurationModel& model = hierarchy.Model();
    std::vector<char> shown(model.errors.size(), 0);
    std::vector<std::size_t> next;
    for (std::size_t error = 0; error < shown.size(); ++error)
    {
        if (model.errors[error].visible)
            next.push_back(error);
    }
    while (!next.empty())
    {
        const std::size_t error = next.back();
        next.pop_back();
        if (shown[error] != 0)
            continue;
        shown[error] = 1;
        for (const std::size_t trigger : hierarchy.Triggers(error))
        {
            if (shown[trigger] == 0 && ShowsTriggers(model, error, trigger))
                next.push_back(trigger);
        }
    }
    return shown;
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
    const std::vector<char> shown = FindShown(hierarchy);
    for (std::size_t error = 0; error < shown.size(); ++error)
    {
        for (const STriggerSetModel& set : hierarchy.Model().errors[error].sets)
        {
            if (shown[error] == 0 && !set.autoTrigger && !set.Linked().empty())
                findings.Warning(
                    set.place,
                    "this set is never shown, and while its error is active it hides its triggers: "
                    "it is not automatic, and its error is neither visible nor shown in the tree "
                    "of one that is");
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
