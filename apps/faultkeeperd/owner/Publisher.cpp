#include "faultkeeperd/owner/Publisher.h"

#include <Faultkeeper/ErrorDatabase.h>

namespace Faultkeeper::Apps
{

constexpr std::size_t CPublisher::kBatchLimit;

CPublisher::CPublisher(const CErrorDatabase& database, CErrorDatabaseView& view)
    : m_database(database), m_view(view), m_stage(epsEmpty), m_withdrawn(false), m_formerStates(false)
{
}

void CPublisher::Restore(const std::vector<SErrorEntry>& records, bool states)
{
    m_former = records;
    m_formerStates = states;
}

void CPublisher::ErrorRaised(int problemCode, int problemType)
{
    m_changes.push_back({problemCode, problemType, true});
}

void CPublisher::ErrorCleared(int problemCode, int problemType)
{
    m_changes.push_back({problemCode, problemType, false});
}

bool CPublisher::Publish()
{
    while (!Done())
    {
        if (!Advance())
            return false;
    }
    return true;
}

bool CPublisher::Done() const
{
    return m_stage == epsWithdrawn || (m_stage == epsReady && m_changes.empty() && !m_withdrawn);
}

bool CPublisher::Advance()
{
    if (m_withdrawn && m_stage < epsReady && m_changes.empty())
        return Reach(epsWithdrawn, true); // a creating view leaves the table not ready
    if (m_stage == epsEmpty)
        return Reach(epsLoaded, m_view.LoadErrors(m_database));
    if (m_stage == epsLoaded)
        return Reach(epsRestored, RestoreRecords());
    if (m_stage == epsRestored)
        return Reach(epsReady, m_view.FaultkeeperReady(true));
    return m_changes.empty() ? Reach(epsWithdrawn, m_view.FaultkeeperReady(false)) : PublishBatch();
}

bool CPublisher::RestoreRecords()
{
    if (m_former.empty())
        return true;
    return m_formerStates ? m_view.RestoreErrors(m_former) : m_view.UpdateErrorDetails(m_former);
}

bool CPublisher::Reach(EPublishingStage stage, bool done)
{
    if (done)
        m_stage = stage;
    return done;
}

bool CPublisher::PublishBatch()
{
    if (m_changes.size() <= kBatchLimit)
    {
        const bool published = m_view.ApplyChanges(m_changes);
        if (published)
            m_changes.clear();
        return published;
    }
    const auto end = m_changes.begin() + static_cast<std::ptrdiff_t>(kBatchLimit);
    const bool published = m_view.ApplyChanges(std::vector<SErrorChange>(m_changes.begin(), end));
    if (published)
        m_changes.erase(m_changes.begin(), end);
    return published;
}

} // namespace Faultkeeper::Apps
