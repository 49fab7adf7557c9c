#include "faultkeeperctl/check/hierarchy/TreeContents.h"

#include "Common/database/ConfigurationFormat.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

namespace
{
void FollowDeepLinks(const CHierarchy& hierarchy, std::size_t error, CHierarchy::Errors& next)
{
    for (const STriggerSetModel& set : hierarchy.Model().errors[error].sets)
    {
        if (set.linking == eelmShallow && !set.Doubts(ConfigurationFormat::kErrorLinking))
            continue;
        for (const SReference& trigger : set.triggers)
        {
            const std::size_t linked = trigger.target == kNoError ? trigger.meant : trigger.target;
            if (linked != kNoError)
                next.push_back(linked);
        }
    }
}

/// @param titlesBelow  known of the set's triggers
bool GivesTitle(const CHierarchy& hierarchy, const CHierarchy::SSet& set,
                const std::vector<char>& titlesBelow)
{
    const bool fromTrigger = set.model->title == eetsTrigger;
    const bool goesOn = set.model->linking != eelmShallow;
    return !hierarchy.Model().IsCertain(*set.model) || !set.model->doubtful.empty() ||
           std::any_of(set.triggers.begin(), set.triggers.end(),
                       [&](std::size_t trigger)
                       {
                           return (fromTrigger && hierarchy.Model().errors[trigger].MayHaveTitle()) ||
                                  (goesOn && titlesBelow[trigger] != 0);
                       });
}
} // namespace

std::vector<char> FindShown(const CHierarchy& hierarchy, bool perhaps)
{
    const SConfigurationModel& model = hierarchy.Model();
    std::vector<char> shown(model.errors.size(), 0);
    CHierarchy::Errors next;
    for (std::size_t error = 0; error < shown.size(); ++error)
    {
        if (perhaps ? model.errors[error].mayBeVisible
                    : model.errors[error].visible && !model.IsReplaced(error))
            next.push_back(error);
    }
    while (!next.empty())
    {
        const std::size_t error = next.back();
        next.pop_back();
        if (shown[error] == 0)
            FollowDeepLinks(hierarchy, error, next);
        shown[error] = 1;
    }
    return shown;
}

std::vector<char> FindShownAlone(const CHierarchy& hierarchy, const std::vector<char>& shown)
{
    std::vector<char> shownAlone(shown.size(), 0);
    for (std::size_t error = 0; error < shown.size(); ++error)
    {
        for (const CHierarchy::SSet& set : hierarchy.Sets(error))
        {
            for (const std::size_t trigger : set.triggers)
            {
                if (shown[error] != 0 && set.model->linking == eelmShallow)
                    shownAlone[trigger] = 1;
            }
        }
    }
    return shownAlone;
}

std::vector<char> FindTitlesBelow(const CHierarchy& hierarchy)
{
    std::vector<char> titlesBelow(hierarchy.Model().errors.size(), 1); // in circles nobody can tell
    for (const std::size_t error : hierarchy.FromLeaves())
    {
        const std::vector<CHierarchy::SSet>& sets = hierarchy.Sets(error);
        const auto gives = [&](const CHierarchy::SSet& set)
        { return GivesTitle(hierarchy, set, titlesBelow); };
        const bool whole = hierarchy.Model().errors[error].setsWhole;
        titlesBelow[error] = !whole || std::any_of(sets.begin(), sets.end(), gives) ? 1 : 0;
    }
    return titlesBelow;
}

} // namespace Faultkeeper::Apps
