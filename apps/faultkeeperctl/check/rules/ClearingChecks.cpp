#include "faultkeeperctl/check/rules/Checks.h"

#include "faultkeeperctl/check/hierarchy/Propagation.h"

#include <algorithm>
#include <cstddef>
#include <map>

namespace Faultkeeper::Apps
{

namespace
{
typedef CHierarchy::Errors Errors;

/// An automatic set of an error.
struct SAutomatic
{
    const CHierarchy::SSet* set;
    Errors members; // sorted, none twice
};

bool Holds(const SAutomatic& automatic, std::size_t trigger)
{
    return std::binary_search(automatic.members.begin(), automatic.members.end(), trigger);
}

bool ShareOne(const SAutomatic& left, const SAutomatic& right)
{
    return std::any_of(left.members.begin(), left.members.end(),
                       [&right](std::size_t member) { return Holds(right, member); });
}

/// An error without several automatic sets has none here, nor has one with a set that is in doubt or links
/// nothing, which was told. Triggers that the library skips are none.
std::vector<SAutomatic> AutomaticSets(const CHierarchy& hierarchy, std::size_t error)
{
    std::vector<SAutomatic> sets;
    for (const CHierarchy::SSet& set : hierarchy.Sets(error))
    {
        if (!set.model->autoTrigger)
            continue;
        if (!hierarchy.Model().IsCertain(*set.model) || set.model->DoubtsWhatClears() || set.triggers.empty())
            return {};
        SAutomatic automatic = {&set, set.triggers};
        Errors& members = automatic.members;
        std::sort(members.begin(), members.end());
        members.erase(std::unique(members.begin(), members.end()), members.end());
        sets.push_back(automatic);
    }
    return sets.size() < 2 ? std::vector<SAutomatic>() : sets;
}

/// The triggers that stand in every one of the sets.
Errors InCommon(const std::vector<SAutomatic>& sets)
{
    Errors common = sets.front().members;
    for (const SAutomatic& automatic : sets)
        common.erase(std::remove_if(common.begin(), common.end(),
                                    [&automatic](std::size_t member) { return !Holds(automatic, member); }),
                     common.end());
    return common;
}

std::string Line(const SAutomatic& automatic)
{
    return std::to_string(automatic.set->model->place.line);
}

/// Clearing asks every automatic set whether it holds the trigger that was cleared.
bool TellUnrelated(const std::vector<SAutomatic>& sets, CFindings& findings)
{
    for (std::size_t later = 1; later < sets.size(); ++later)
    {
        for (std::size_t earlier = 0; earlier < later; ++earlier)
        {
            if (ShareOne(sets[earlier], sets[later]))
                continue;
            findings.Warning(sets[later].set->model->place,
                             "this set and the one in line " + Line(sets[earlier]) +
                                 " are automatic but share no trigger: the error is never cleared by its "
                                 "triggers");
            return true;
        }
    }
    return false;
}

void TellNothingInCommon(const std::vector<SAutomatic>& sets, CFindings& findings)
{
    findings.Warning(sets.back().set->model->place,
                     "the automatic sets of this error have no trigger in common: "
                     "the error is never cleared by its triggers");
}

/// Looks in one error for triggers that raise it, and do not clear it because they do not stand in all of its
/// automatic sets.
class CStuckTriggers
{
public:
    /// @param hierarchy  borrowed
    /// @param sets       borrowed
    CStuckTriggers(const CHierarchy& hierarchy, std::size_t error, const std::vector<SAutomatic>& sets)
        : m_hierarchy(hierarchy), m_error(error), m_sets(sets), m_common(InCommon(sets))
    {
    }

    void Tell(CFindings& findings)
    {
        for (const SAutomatic& raising : m_sets)
        {
            Errors together;
            for (const std::size_t trigger : raising.members)
            {
                if (std::binary_search(m_common.begin(), m_common.end(), trigger))
                    continue;
                if (raising.set->model->needed > Count(raising, {trigger}))
                    together.push_back(trigger);
                else if (StaysRaised(trigger))
                    TellLone(raising, trigger, findings);
            }
            TellTogether(raising, together, findings);
        }
    }

private:
    static std::ptrdiff_t Count(const SAutomatic& automatic, const Errors& active)
    {
        const Errors& triggers = automatic.set->triggers;
        return std::count_if(triggers.begin(), triggers.end(),
                             [&active](std::size_t trigger)
                             { return std::find(active.begin(), active.end(), trigger) != active.end(); });
    }

    /// @return the first set that holds none of the triggers, or null
    const SAutomatic* Lacking(const Errors& triggers) const
    {
        const auto lacking = std::find_if(m_sets.begin(), m_sets.end(),
                                          [&triggers](const SAutomatic& automatic)
                                          { return Count(automatic, triggers) == 0; });
        return lacking == m_sets.end() ? nullptr : &*lacking;
    }

    /// Is the error raised by the triggers, and not cleared by them? Those may raise others that clear it.
    bool StaysRaised(const Errors& triggers) const
    {
        CPropagation propagation(m_hierarchy);
        for (const std::size_t trigger : triggers)
            propagation.Raise(trigger);
        const bool raised = propagation.Active(m_error);
        for (const std::size_t trigger : triggers)
            propagation.Clear(trigger);
        return raised && propagation.Active(m_error);
    }

    bool StaysRaised(std::size_t trigger)
    {
        const auto known = m_stayRaised.find(trigger);
        if (known != m_stayRaised.end())
            return known->second;
        return m_stayRaised[trigger] = StaysRaised(Errors{trigger});
    }

    /// Does the trigger raise one that stands in all sets, so that the error is cleared along with that one?
    bool RaisesCommon(std::size_t trigger)
    {
        const auto known = m_raiseCommon.find(trigger);
        if (known != m_raiseCommon.end())
            return known->second;
        CPropagation propagation(m_hierarchy);
        propagation.Raise(trigger);
        return m_raiseCommon[trigger] =
                   std::any_of(m_common.begin(), m_common.end(),
                               [&propagation](std::size_t common) { return propagation.Active(common); });
    }

    std::string Name(std::size_t error) const
    {
        return "\"" + m_hierarchy.Model().errors[error].Name() + "\"";
    }

    void TellLone(const SAutomatic& raising, std::size_t trigger, CFindings& findings) const
    {
        findings.Warning(
            raising.set->model->place,
            Name(trigger) +
                " raises the error by this automatic set, but does not stand in the one in line " +
                Line(*Lacking({trigger})) + ": clearing it does not clear the error");
    }

    /// @param triggers  none of which raises the error alone
    void TellTogether(const SAutomatic& raising, const Errors& triggers, CFindings& findings)
    {
        if (TellEnough(raising, Enough(raising, triggers), findings))
            return;
        Errors others = triggers;
        std::stable_partition(others.begin(), others.end(),
                              [this](std::size_t trigger) { return !RaisesCommon(trigger); });
        TellEnough(raising, Enough(raising, others), findings);
    }

    /// The first triggers that satisfy the set; none if all of them do not.
    static Errors Enough(const SAutomatic& raising, const Errors& triggers)
    {
        Errors enough;
        for (const std::size_t trigger : triggers)
        {
            enough.push_back(trigger);
            if (Count(raising, enough) >= raising.set->model->needed)
                return enough;
        }
        return {};
    }

    /// @return false if the triggers clear the error
    bool TellEnough(const SAutomatic& raising, const Errors& enough, CFindings& findings) const
    {
        if (enough.empty() || !StaysRaised(enough))
            return false;
        const std::string others =
            enough.size() == 2 ? Name(enough.back()) : std::to_string(enough.size() - 1) + " others";
        const SAutomatic* const lacking = Lacking(enough);
        findings.Warning(raising.set->model->place,
                         Name(enough.front()) + " and " + others +
                             " together raise the error by this automatic set, but " +
                             (lacking == nullptr ? "each of them is missing in another one"
                                                 : "do not stand in the one in line " + Line(*lacking)) +
                             ": clearing them does not clear the error");
        return true;
    }

    const CHierarchy& m_hierarchy;
    const std::size_t m_error;
    const std::vector<SAutomatic>& m_sets;
    const Errors m_common;
    std::map<std::size_t, bool> m_stayRaised;  // of single triggers
    std::map<std::size_t, bool> m_raiseCommon; // likewise
};
} // namespace

void CheckClearing(const CHierarchy& hierarchy, CFindings& findings)
{
    const bool allSets = hierarchy.KnowsWhatClears(); // by a set that is not known a trigger may clear more
    for (std::size_t error = 0; error < hierarchy.Model().errors.size(); ++error)
    {
        const std::vector<SAutomatic> sets = AutomaticSets(hierarchy, error);
        if (sets.empty())
            continue;
        const bool common = !InCommon(sets).empty();
        if (common && allSets)
            CStuckTriggers(hierarchy, error, sets).Tell(findings);
        else if (!common && !TellUnrelated(sets, findings))
            TellNothingInCommon(sets, findings);
    }
}

} // namespace Faultkeeper::Apps
