#include "faultkeeperd/owner/Orphans.h"

#include "faultkeeperd/store/StateKeeper.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>

namespace Faultkeeper::Apps
{

namespace
{
using States = std::map<ErrorId, bool>;

ErrorId IdOf(const STransition& transition)
{
    return {transition.problemCode, transition.problemType};
}

ErrorId IdOf(const CError& error)
{
    return {static_cast<int>(error.ProblemCode()), error.ProblemType()};
}

template <typename Operation>
void ForEachTransition(CStateKeeper& keeper, std::uint64_t from, const Operation& operation)
{
    constexpr std::size_t kAtOnce = 1000;
    std::vector<STransition> transitions = keeper.Journal(from, kAtOnce);
    while (!transitions.empty())
    {
        std::for_each(transitions.begin(), transitions.end(), operation);
        transitions = keeper.Journal(transitions.back().number + 1, kAtOnce);
    }
}

/// Where the journal of this start of the machine begins, and what was active there.
class CBeginning
{
public:
    void Look(const STransition& transition)
    {
        const auto last = m_last.find(IdOf(transition));
        const bool again = last != m_last.end() && last->second == transition.raised;
        if (again || transition.sinceBoot < m_sinceBoot) // a restart clears without a word
        {
            m_number = transition.number;
            m_states.clear();
            m_last.clear();
        }
        m_sinceBoot = transition.sinceBoot;
        m_states.emplace(IdOf(transition), !transition.raised);
        m_last[IdOf(transition)] = transition.raised;
    }

    std::uint64_t Number() const { return m_number; }

    /// @param stored  as they are now: those that the journal does not name have been so all along
    States Before(const std::vector<SStoredError>& stored) const
    {
        States states = m_states;
        for (const SStoredError& error : stored)
            states.emplace(ErrorId(error.entry.problemCode, error.entry.problemType), error.entry.flags != 0);
        return states;
    }

private:
    std::uint64_t m_number = 0;
    std::int64_t m_sinceBoot = 0;
    States m_states; // before the first transition of each
    States m_last;   // after the last one so far
};

/// What has happened, with what follows from it by the links of this configuration.
class CReplay
{
public:
    CReplay(const CErrorDatabase& database, const States& states) : m_database(database), m_active(states) {}

    void Repeat(const STransition& transition)
    {
        const ErrorId id = IdOf(transition);
        const bool before = Active(id);
        m_active[id] = transition.raised;
        m_followed.erase(id);
        const CError* const error = m_database.RetrieveError(id.first, id.second);
        if (error == nullptr)
            return;
        if (transition.raised && transition.caused)
        {
            m_active[id] = RaisedBy(*error, {transition.causeCode, transition.causeType});
            m_followed.insert(id);
        }
        if (Active(id) != before)
            TellParents(*error);
    }

    std::set<ErrorId> Orphans() const
    {
        std::set<ErrorId> orphans;
        std::copy_if(m_followed.begin(), m_followed.end(), std::inserter(orphans, orphans.end()),
                     [this](const ErrorId& id) { return !m_active.at(id); });
        return orphans;
    }

private:
    bool Active(const ErrorId& id) const
    {
        const auto found = m_active.find(id);
        return found != m_active.end() && found->second;
    }

    /// Does this set raise its error now that the child is raised? Or, the child being cleared, does it want
    /// its error cleared?
    bool Wants(const CTriggerSet& set, const CError& child, bool raised) const
    {
        const auto active = std::count_if(set.Triggers().begin(), set.Triggers().end(),
                                          [&](const CError* trigger)
                                          { return trigger == &child ? raised : Active(IdOf(*trigger)); });
        return set.HasTrigger(&child) && (set.TriggersRequired() <= active) == raised;
    }

    /// One set is enough to raise an error; to clear it, all have to agree.
    bool Follows(const CError& parent, const CError& child, bool raised) const
    {
        const std::vector<CTriggerSet>& sets = parent.TriggerSets();
        const auto wants = [&](const CTriggerSet& set)
        { return set.AutoTrigger() && Wants(set, child, raised); };
        return raised ? std::any_of(sets.begin(), sets.end(), wants)
                      : std::all_of(sets.begin(), sets.end(),
                                    [&](const CTriggerSet& set) { return !set.AutoTrigger() || wants(set); });
    }

    bool RaisedBy(const CError& parent, const ErrorId& cause) const
    {
        const CError* const child = m_database.RetrieveError(cause.first, cause.second);
        return child != nullptr && Active(cause) && Follows(parent, *child, true);
    }

    /// What was not raised by following others is as the journal says.
    void TellParents(const CError& child)
    {
        const bool raised = Active(IdOf(child));
        for (const CError* parent : child.Parents())
        {
            const ErrorId id = IdOf(*parent);
            if (m_followed.count(id) == 0 || Active(id) == raised || !Follows(*parent, child, raised))
                continue;
            m_active[id] = raised;
            TellParents(*parent);
        }
    }

    const CErrorDatabase& m_database;
    States m_active;
    std::set<ErrorId> m_followed; // raised because of others, and not cleared since
};
} // namespace

std::set<ErrorId> FindOrphans(CStateKeeper& keeper, const CErrorDatabase& database,
                              const std::vector<SStoredError>& stored)
{
    CBeginning beginning;
    ForEachTransition(keeper, 0, [&](const STransition& transition) { beginning.Look(transition); });
    CReplay replay(database, beginning.Before(stored));
    ForEachTransition(keeper, beginning.Number(),
                      [&](const STransition& transition) { replay.Repeat(transition); });
    return replay.Orphans();
}

} // namespace Faultkeeper::Apps
