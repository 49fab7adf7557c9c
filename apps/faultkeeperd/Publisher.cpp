#include "faultkeeperd/Publisher.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <utility>
#include <vector>

namespace Faultkeeper::Apps
{

constexpr std::size_t CPublisher::kRunLimit;

CPublisher::CPublisher(const CErrorDatabase& database, CErrorDatabaseView& view)
    : m_database(database), m_view(view), m_stage(epsEmpty), m_withdrawn(false)
{
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
        return Reach(epsReady, m_view.FaultkeeperReady(true));
    return m_changes.empty() ? Reach(epsWithdrawn, m_view.FaultkeeperReady(false)) : PublishRun();
}

bool CPublisher::Reach(EPublishingStage stage, bool done)
{
    if (done)
        m_stage = stage;
    return done;
}

bool CPublisher::PublishRun()
{
    // Neighbours of one kind share a taking of the lock and a time; the order of raises and clears stays.
    const bool raised = m_changes.front().raised;
    std::vector<std::pair<int, int>> run;
    for (const SChange& change : m_changes)
    {
        if (change.raised != raised || run.size() == kRunLimit)
            break;
        run.emplace_back(change.problemCode, change.problemType);
    }
    if (!(raised ? m_view.RaiseErrors(run) : m_view.ClearErrors(run)))
        return false;
    m_changes.erase(m_changes.begin(), m_changes.begin() + static_cast<std::ptrdiff_t>(run.size()));
    return true;
}

} // namespace Faultkeeper::Apps
