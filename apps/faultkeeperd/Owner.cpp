#include "faultkeeperd/Owner.h"

#include <Faultkeeper/ErrorDatabase.h>

namespace Faultkeeper::Apps
{

COwner::COwner(CErrorDatabase& database)
    : m_database(database), m_view(true, eViewOwner), m_publisher(m_database, m_view)
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
    if (m_publisher.Publish())
        m_pause.Succeeded();
    else
        m_pause.Failed(now);
}

int COwner::MillisecondsToPublish(Clock::time_point now) const
{
    return m_publisher.Done() ? -1 : m_pause.MillisecondsLeft(now);
}

} // namespace Faultkeeper::Apps
