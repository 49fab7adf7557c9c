#include "faultkeeperd/owner/LockWatch.h"

#include "common/owner/TableCalls.h"
#include "faultkeeperd/Log.h"

#include <Faultkeeper/ErrorDatabaseView.h>

#include <string>

namespace Faultkeeper::Apps
{

constexpr std::chrono::seconds CLockWatch::kAuditPause;
constexpr std::chrono::seconds CLockWatch::kBusyForLong;

namespace
{
// The lock of the working directory, or -1.
int Semaphore()
{
    key_t key = -1;
    return TableKey(key) ? FindSemaphore(key) : -1;
}

// A table that may not be written is another user's, whose owner can be running. Without a table the lock is
// that of one that somebody has removed.
bool LockMayBeOurs()
{
    key_t key = -1;
    return TableKey(key) && (FindSegment(key) == -1 || SegmentUsable(key));
}
} // namespace

CLockWatch::CLockWatch() : m_surplus(LockMayBeOurs() ? TakeDownLock(Semaphore()) : 0)
{
    if (m_surplus > 0)
        LogInfo("a former owner had left the lock at " + std::to_string(m_surplus));
}

bool CLockWatch::Audit(CErrorDatabaseView& view, Clock::time_point now)
{
    if (MillisecondsToAudit(now) > 0)
        return true;
    if (!view.GetLock(false))
        return false;
    const int surplus = TakeDownLock(Semaphore()); // held, it is 0 unless it admits others beside us
    view.ReleaseLock();
    m_audited = now;
    m_surplus += surplus;
    if (surplus > 0)
        LogWarning("the lock of the shared table was too high by " + std::to_string(surplus) +
                   ", which admits several processes at once; mended");
    return true;
}

int CLockWatch::MillisecondsToAudit(Clock::time_point now) const
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_audited + kAuditPause - now).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

bool CLockWatch::Held()
{
    if (m_semaphore == -1)
        m_semaphore = Semaphore();
    return LockValue(m_semaphore) == 0;
}

void CLockWatch::LockBusy(Clock::time_point now, bool progress, const std::string& waiting)
{
    if (progress || !m_busySince)
        m_busySince = now;
    if (m_busyTold || now - *m_busySince < kBusyForLong)
        return;
    m_busyTold = true;
    m_waitingTold = !waiting.empty();
    LogWarning("the shared table is locked by process " + std::to_string(LastLocker(Semaphore())) +
               ", which does not let go" + (waiting.empty() ? "" : "; " + waiting));
}

void CLockWatch::LockFree()
{
    if (m_busyTold)
        LogInfo(std::string("the shared table is free again") + (m_waitingTold ? "; nothing waits" : ""));
    m_busySince.reset();
    m_busyTold = false;
}

} // namespace Faultkeeper::Apps
