#include "faultkeeperctl/past/PastState.h"

#include "faultkeeperctl/text/TimeText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>

namespace Faultkeeper::Apps
{

namespace
{
constexpr double kTolerance = 1e9; // nanoseconds by which clocks that run on may differ

ErrorId IdOf(const STransition& transition)
{
    return ErrorId(transition.problemCode, transition.problemType);
}

ErrorId IdOf(const SStoredError& error)
{
    return ErrorId(error.entry.problemCode, error.entry.problemType);
}

/// What is known of one error at one moment.
enum EKnown : int
{
    ekNo,
    ekActive,
    ekInactive
};

EKnown Known(bool active)
{
    return active ? ekActive : ekInactive;
}

/// Between which transitions a moment lies. Clocks that are set back bring the same time several times.
class CMoment
{
public:
    CMoment(const SPast& past, std::int64_t time) : m_past(past), m_time(time)
    {
        for (std::size_t at = 0; at <= past.journal.size(); ++at)
        {
            if (!Fits(at))
                continue;
            ++m_count;
            const bool solid = at > 0 && WhatIsBetween(past, at - 1) == ebNothing;
            if (!solid && m_solid)
                continue;
            m_solid = solid;
            m_after = at;
        }
    }

    /// Number of transitions before the moment.
    std::size_t After() const { return m_after; }
    /// How often there was such a time.
    int Count() const { return m_count; }

private:
    bool Fits(std::size_t at) const
    {
        const std::vector<STransition>& journal = m_past.journal;
        return (at == 0 || journal[at - 1].time.Nanoseconds() <= m_time) &&
               (at == journal.size() || journal[at].time.Nanoseconds() > m_time);
    }

    const SPast& m_past;
    const std::int64_t m_time;
    std::size_t m_after = 0;
    int m_count = 0;
    bool m_solid = false;
};

/// Looks one moment up, error by error.
class CLookUp
{
public:
    CLookUp(const SPast& past, std::size_t after) : m_past(past), m_begin(after), m_after(after), m_end(after)
    {
        const std::size_t length = past.journal.size();
        while (m_begin > 0 && (m_begin == after || WhatIsBetween(past, m_begin - 1) == ebNothing))
            --m_begin;
        while (m_end < length && WhatIsBetween(past, m_end - 1) == ebNothing)
            ++m_end;
        m_open = m_end == length && WhatIsBetween(past, length - 1) == ebNothing;
        for (std::size_t at = 0; at < length; ++at)
            m_touched[IdOf(past.journal[at])].push_back(at);
        for (const SStoredError& error : past.errors)
        {
            m_stored[IdOf(error)] = &error;
            m_touched[IdOf(error)];
        }
    }

    /// All of which the past tells anything.
    std::vector<ErrorId> Errors() const
    {
        std::vector<ErrorId> errors;
        for (const auto& error : m_touched)
            errors.push_back(error.first);
        return errors;
    }

    EKnown Of(const ErrorId& id) const
    {
        const STransition* const last = Last(id, m_begin, m_after);
        if (last != nullptr)
            return Known(last->raised);
        const STransition* const next = First(id, m_after, m_end);
        if (next != nullptr)
            return Known(!next->raised);
        const auto stored = m_stored.find(id);
        if (m_open)
            return Known(stored != m_stored.end() && (stored->second->entry.flags & kRaisedFlag) != 0);
        return Before(id);
    }

    /// @return zero if the journal does not go back so far
    Core::Time RaisedTime(const ErrorId& id) const
    {
        const STransition* const last = Last(id, 0, m_after);
        if (last != nullptr)
            return last->time;
        const auto stored = m_stored.find(id);
        return stored != m_stored.end() && !RaisedAgain(id) ? stored->second->entry.raisedTime : Core::Time();
    }

private:
    /// Numbers of the transitions of an error from `begin` on.
    std::vector<std::size_t>::const_iterator From(const ErrorId& id, std::size_t begin) const
    {
        const std::vector<std::size_t>& touched = m_touched.at(id);
        return std::lower_bound(touched.begin(), touched.end(), begin);
    }

    const STransition* First(const ErrorId& id, std::size_t begin, std::size_t end) const
    {
        const auto first = From(id, begin);
        return first != m_touched.at(id).end() && *first < end ? &m_past.journal[*first] : nullptr;
    }

    const STransition* Last(const ErrorId& id, std::size_t begin, std::size_t end) const
    {
        const auto next = From(id, end);
        return next != m_touched.at(id).begin() && *(next - 1) >= begin ? &m_past.journal[*(next - 1)]
                                                                        : nullptr;
    }

    bool RaisedAgain(const ErrorId& id) const
    {
        return std::any_of(From(id, m_after), m_touched.at(id).end(),
                           [this](std::size_t at) { return m_past.journal[at].raised; });
    }

    // Of an error that nothing has happened to while the machine ran on: from the time before.
    EKnown Before(const ErrorId& id) const
    {
        for (std::size_t at = m_begin; at > 0; --at)
        {
            if (WhatIsBetween(m_past, at - 1) == ebRestart)
                return ekInactive;
            const STransition& transition = m_past.journal[at - 1];
            if (IdOf(transition) == id) // it may have been forgotten since, but not raised
                return transition.raised ? ekNo : ekInactive;
        }
        return m_past.journal.front().number == 1 ? ekInactive : BeforeTheJournal(id);
    }

    EKnown BeforeTheJournal(const ErrorId& id) const
    {
        const auto stored = m_stored.find(id);
        if (stored == m_stored.end() || stored->second->raises <= RaisesInJournal(id))
            return ekInactive; // it was never raised before
        const SErrorEntry& entry = stored->second->entry;
        if (!m_touched.at(id).empty())
            return ekNo; // what is stored is of a later time
        if ((entry.flags & kRaisedFlag) != 0)
            return ekActive;
        return entry.clearedTime >= entry.raisedTime ? ekInactive : ekNo;
    }

    std::uint64_t RaisesInJournal(const ErrorId& id) const
    {
        const std::vector<std::size_t>& touched = m_touched.at(id);
        return static_cast<std::uint64_t>(std::count_if(
            touched.begin(), touched.end(), [this](std::size_t at) { return m_past.journal[at].raised; }));
    }

    const SPast& m_past;
    std::size_t m_begin; // from here to the end the machine ran on
    std::size_t m_after;
    std::size_t m_end;
    bool m_open = false; // and goes on to run
    std::map<ErrorId, const SStoredError*> m_stored;
    std::map<ErrorId, std::vector<std::size_t>> m_touched; // when, by places in the journal
};

/// When the machine was started, for all that the transition after a moment tells.
std::int64_t StartBefore(const SPast& past, std::size_t after)
{
    if (after == past.journal.size())
        return past.bootTime;
    const STransition& next = past.journal[after];
    return next.time.Nanoseconds() - next.sinceBoot;
}

std::string NoteOfStart(std::int64_t start)
{
    return "the machine was started at " + ExactTimeText(Core::Time::FromNanoseconds(start), 3) +
           ", and when it went down before, and whether it ran meanwhile, is not known";
}

bool Tellable(const SPast& past, std::int64_t time, std::size_t after, std::string& problem)
{
    if (past.journal.empty())
        problem = "the journal is empty: nothing has been raised since the store was begun, or nothing is "
                  "remembered";
    else if (after == 0)
        problem = "the journal begins at " + ExactTimeText(past.journal.front().time, 3) +
                  ": what was active before is not known";
    else if (after == past.journal.size() && !past.ofThisBoot && time >= past.bootTime)
        problem = "no owner has used the store since the machine was started at " +
                  ExactTimeText(Core::Time::FromNanoseconds(past.bootTime), 3) +
                  ": what is active since is not known";
    else
        return true;
    return false;
}
} // namespace

EBetween WhatIsBetween(const SPast& past, std::size_t at)
{
    const STransition& before = past.journal[at];
    const bool last = at + 1 == past.journal.size();
    if (last && !past.ofThisBoot)
        return ebDoubt; // nobody knows whether another owner has used the store after it
    const std::int64_t time = last ? past.now : past.journal[at + 1].time.Nanoseconds();
    const std::int64_t sinceBoot = last ? past.now - past.bootTime : past.journal[at + 1].sinceBoot;
    if (sinceBoot < before.sinceBoot)
        return ebRestart;
    const double byClock = static_cast<double>(time) - static_cast<double>(before.time.Nanoseconds());
    const double bySystem = static_cast<double>(sinceBoot) - static_cast<double>(before.sinceBoot);
    return std::fabs(byClock - bySystem) <= kTolerance ? ebNothing : ebDoubt;
}

bool StateAt(const SPast& past, std::int64_t time, SPastState& state, std::string& problem)
{
    const CMoment moment(past, time);
    const std::size_t after = moment.After();
    if (!Tellable(past, time, after, problem))
        return false;
    if (moment.Count() > 1)
        state.notes.push_back("the clock was set back meanwhile, so there were " +
                              std::to_string(moment.Count()) +
                              " such times; this is the last one of which the journal is sure");
    const EBetween around = WhatIsBetween(past, after - 1);
    const bool started = around != ebNothing && time >= StartBefore(past, after);
    if (started && around == ebRestart)
        return true; // nothing has been raised anew
    if (!started && around != ebNothing)
        state.notes.push_back(NoteOfStart(StartBefore(past, after)));
    const CLookUp lookUp(past, after);
    for (const ErrorId& id : lookUp.Errors())
    {
        const EKnown found = lookUp.Of(id);
        const EKnown known = started && found == ekActive ? ekNo : found;
        if (known == ekActive)
            state.active.push_back({id, lookUp.RaisedTime(id)});
        else if (known == ekNo)
            state.unknown.push_back(id);
    }
    return true;
}

} // namespace Faultkeeper::Apps
