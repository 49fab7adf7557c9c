#include "faultkeeperd/owner/StateRecorder.h"

#include "faultkeeperd/store/StateKeeper.h"
#include "store/BootClock.h"

#include <Faultkeeper/Error.h>

#include <Core/Time.h>

namespace Faultkeeper::Apps
{

void CStateRecorder::Restore(const SStoredError& error, const SErrorEntry& shown)
{
    m_states[ErrorId(error.entry.problemCode, error.entry.problemType)] = {shown, error.raises};
    m_keeper.Keep(error);
}

void CStateRecorder::Begin(const std::string& session)
{
    m_causes.Begin();
    m_session = session;
    m_reason = eorNone;
}

void CStateRecorder::Begin(EOwnersReason reason)
{
    Begin(std::string());
    m_reason = reason;
}

void CStateRecorder::Note(const ErrorId& id, bool raised)
{
    const CError* const cause = m_causes.CauseOf(id.first, id.second, raised);
    SStoredError& state = m_states[id];
    if (((state.entry.flags & kRaisedFlag) != 0) == raised)
        return;
    const Core::Time now = Core::Time::Now(); // until the table gives its own
    Count(state.entry, id, raised, now);
    state.raises += raised ? 1 : 0;
    m_changed.insert(id);
    m_untimed.insert(id);
    Journal(id, raised, now, cause);
}

void CStateRecorder::Count(SErrorEntry& entry, const ErrorId& id, bool raised, const Core::Time& now)
{
    entry.problemCode = id.first;
    entry.problemType = static_cast<std::int16_t>(id.second);
    entry.flags = raised ? kRaisedFlag : std::uint16_t(0);
    (raised ? entry.raisedTime : entry.clearedTime) = now;
    if (!raised)
        return;
    ++entry.counter1;
    ++entry.counter2;
}

void CStateRecorder::Journal(const ErrorId& id, bool raised, const Core::Time& time, const CError* cause)
{
    STransition transition;
    transition.time = time;
    transition.sinceBoot = NanosecondsSinceBoot();
    transition.raised = raised;
    transition.problemCode = id.first;
    transition.problemType = id.second;
    transition.caused = cause != nullptr;
    transition.causeCode = cause != nullptr ? cause->ProblemCode() : 0;
    transition.causeType = cause != nullptr ? cause->ProblemType() : 0;
    if (cause == nullptr)
    {
        transition.session = m_session;
        transition.reason = m_reason;
    }
    m_keeper.Keep(transition);
}

void CStateRecorder::HandOver()
{
    for (const ErrorId& id : m_changed)
        m_keeper.Keep(m_states[id]);
    m_changed.clear();
}

void CStateRecorder::TakeTimes(const std::vector<SErrorEntry>& records)
{
    for (const SErrorEntry& record : records)
    {
        const ErrorId id(record.problemCode, record.problemType);
        if (m_untimed.erase(id) == 0)
            continue; // also the second of two records with one identifier, which nobody writes to
        SErrorEntry& entry = m_states[id].entry;
        entry.raisedTime = record.raisedTime;
        entry.clearedTime = record.clearedTime;
        m_changed.insert(id);
    }
    m_untimed.clear(); // of an error that the table has no room for
    HandOver();
}

} // namespace Faultkeeper::Apps
