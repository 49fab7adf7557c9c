#include "faultkeeperd/Owner.h"

#include "common/TableCalls.h"
#include "faultkeeperd/Log.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::chrono::seconds kRefusedForLong(1);

// The lock of the working directory, or -1.
int Semaphore()
{
    key_t key = -1;
    return TableKey(key) ? FindSemaphore(key) : -1;
}
} // namespace

COwner::COwner(CErrorDatabase& database)
    : m_database(database), m_surplus(TakeDownLock(Semaphore())), m_view(true, eViewOwner),
      m_publisher(m_database, m_view)
{
    m_database.SetCallback(&m_publisher);
}

COwner::~COwner()
{
    m_database.SetCallback(nullptr);
}

bool COwner::Apply(int problemCode, int problemType, bool raised)
{
    if (m_database.RetrieveError(problemCode, problemType) == nullptr)
        return false;
    if (raised)
        m_database.RaiseError(problemCode, problemType, false);
    else
        m_database.ClearError(problemCode, problemType, false);
    return true;
}

void COwner::Publish(Clock::time_point now)
{
    if (!m_pause.Due(now))
        return;
    const std::size_t waiting = m_publisher.Waiting();
    if (m_publisher.Publish())
    {
        m_pause.Succeeded();
        NoteSuccess();
        return;
    }
    m_pause.Failed(now);
    NoteRefusal(now, m_publisher.Waiting() < waiting);
}

void COwner::NoteRefusal(Clock::time_point now, bool progress)
{
    if (progress || !m_refusedSince)
        m_refusedSince = now;
    if (m_refusalTold || Failed() || now - *m_refusedSince < kRefusedForLong)
        return;
    m_refusalTold = true;
    LogWarning("the shared table is locked by process " + std::to_string(LastLocker(Semaphore())) +
               ", which does not let go; changes wait");
}

void COwner::NoteSuccess()
{
    if (m_refusalTold)
        LogInfo("the shared table is free again; nothing waits");
    m_refusedSince.reset();
    m_refusalTold = false;
}

int COwner::MillisecondsToPublish(Clock::time_point now) const
{
    return m_publisher.Done() ? -1 : m_pause.MillisecondsLeft(now);
}

} // namespace Faultkeeper::Apps
