#include "faultkeeperctl/check/rules/Checks.h"

#include <algorithm>
#include <set>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::set<std::size_t> Members;

/// An automatic set of an error.
struct SAutomatic
{
    const STriggerSetModel* set;
    std::vector<std::size_t> linked;
    Members members;
};

bool ShareOne(const Members& left, const Members& right)
{
    return std::any_of(left.begin(), left.end(),
                       [&right](std::size_t member) { return right.count(member) != 0; });
}

/// An error without several automatic sets has none here, nor has one with a set whose triggers are in doubt.
/// Triggers that the library skips are none.
std::vector<SAutomatic> AutomaticSets(const SConfigurationModel& model, const SDefinition& error)
{
    std::vector<SAutomatic> sets;
    for (const STriggerSetModel& set : error.sets)
    {
        if (!set.autoTrigger)
            continue;
        if (!model.IsCertain(set))
            return {};
        const std::vector<std::size_t> linked = set.Linked();
        sets.push_back({&set, linked, Members(linked.begin(), linked.end())});
    }
    return sets.size() < 2 ? std::vector<SAutomatic>() : sets;
}

std::string Line(const SAutomatic& automatic)
{
    return std::to_string(automatic.set->place.line);
}

/// Clearing asks every automatic set whether it holds the trigger that was cleared.
bool TellUnrelated(const std::vector<SAutomatic>& sets, CFindings& findings)
{
    for (std::size_t later = 1; later < sets.size(); ++later)
    {
        for (std::size_t earlier = 0; earlier < later; ++earlier)
        {
            if (ShareOne(sets[earlier].members, sets[later].members))
                continue;
            findings.Warning(sets[later].set->place,
                             "this set and the one in line " + Line(sets[earlier]) +
                                 " are automatic but share no trigger: the error is never cleared by its "
                                 "triggers");
            return true;
        }
    }
    return false;
}

bool TellNothingInCommon(const std::vector<SAutomatic>& sets, CFindings& findings)
{
    const Members& first = sets.front().members;
    const bool common = std::any_of(first.begin(), first.end(),
                                    [&sets](std::size_t member)
                                    {
                                        return std::all_of(sets.begin(), sets.end(),
                                                           [member](const SAutomatic& automatic)
                                                           { return automatic.members.count(member) != 0; });
                                    });
    if (!common)
        findings.Warning(sets.back().set->place,
                         "the automatic sets of this error have no trigger in common: "
                         "the error is never cleared by its triggers");
    return !common;
}

bool RaisesAlone(const SAutomatic& automatic, std::size_t trigger)
{
    return automatic.set->needed <= std::count(automatic.linked.begin(), automatic.linked.end(), trigger);
}

/// A trigger that raises the error by one set has to stand in the others, too, if it is to clear it.
void TellLone(const std::vector<SAutomatic>& sets, const SConfigurationModel& model, CFindings& findings)
{
    for (const SAutomatic& raising : sets)
    {
        for (const std::size_t trigger : raising.members)
        {
            const auto missing = std::find_if(sets.begin(), sets.end(),
                                              [trigger](const SAutomatic& other)
                                              { return other.members.count(trigger) == 0; });
            if (missing == sets.end() || !RaisesAlone(raising, trigger))
                continue;
            findings.Warning(
                raising.set->place,
                "\"" + model.errors[trigger].Name() +
                    "\" raises the error by this automatic set, but does not stand in the one in "
                    "line " +
                    Line(*missing) + ": clearing it does not clear the error");
        }
    }
}
} // namespace

void CheckClearing(const SConfigurationModel& model, CFindings& findings)
{
    for (const SDefinition& error : model.errors)
    {
        const std::vector<SAutomatic> sets = AutomaticSets(model, error);
        if (!sets.empty() && !TellUnrelated(sets, findings) && !TellNothingInCommon(sets, findings))
            TellLone(sets, model, findings);
    }
}

} // namespace Faultkeeper::Apps
