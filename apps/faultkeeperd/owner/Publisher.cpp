#include "faultkeeperd/owner/Publisher.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstdint>

namespace Faultkeeper::Apps
{

constexpr std::size_t CPublisher::kBatchLimit;
constexpr std::size_t CPublisher::kWaitingLimit;

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
    Add(problemCode, problemType, true);
}

void CPublisher::ErrorCleared(int problemCode, int problemType)
{
    Add(problemCode, problemType, false);
}

void CPublisher::Add(int problemCode, int problemType, bool raised)
{
    if (m_changes.size() >= m_limit)
        Condense();
    m_changes.push_back({problemCode, problemType, raised});
}

/// Leaves out pairs of a raise and a clear, whichever comes first, that have two later changes of the same
/// error behind them; their raises are counted. What is left still ends in the same state, at the same time.
void CPublisher::Condense()
{
    std::map<ErrorId, std::size_t> waiting;
    for (const SErrorChange& change : m_changes)
        ++waiting[ErrorId(change.problemCode, change.problemType)];
    for (auto& count : waiting)
        count.second = count.second > 2 ? (count.second - 1) / 2 * 2 : 0; // an even number, one or two stay
    std::vector<SErrorChange> kept;
    for (const SErrorChange& change : m_changes)
    {
        const ErrorId id(change.problemCode, change.problemType);
        std::size_t& left = waiting[id];
        if (left == 0)
            kept.push_back(change);
        else if (change.raised)
            ++m_skipped[id];
        left -= left > 0 ? 1 : 0;
    }
    m_changes.swap(kept);
    m_limit = std::max(kWaitingLimit, 2 * m_changes.size()); // so that this is worth its time
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
    return m_stage == epsWithdrawn ||
           (m_stage == epsReady && m_changes.empty() && m_skipped.empty() && !m_withdrawn);
}

bool CPublisher::Advance()
{
    if (m_withdrawn && m_stage < epsReady && Waiting() == 0)
        return Reach(epsWithdrawn, true); // a creating view leaves the table not ready
    if (m_stage == epsEmpty)
        return Reach(epsLoaded, m_view.LoadErrors(m_database));
    if (m_stage == epsLoaded)
        return Reach(epsRestored, RestoreRecords());
    if (m_stage == epsRestored)
        return Reach(epsReady, m_view.FaultkeeperReady(true));
    if (!m_skipped.empty())
        return PublishSkipped();
    return m_changes.empty() ? Reach(epsWithdrawn, m_view.FaultkeeperReady(false)) : PublishBatch();
}

bool CPublisher::RestoreRecords()
{
    if (m_former.empty())
        return true;
    const bool restored =
        m_formerStates ? m_view.RestoreErrors(m_former) : m_view.UpdateErrorDetails(m_former);
    if (restored)
        m_former.clear();
    return restored;
}

/// Raises that nobody was to see any more, in the counters. Of two records with one identifier the first one
/// counts.
bool CPublisher::PublishSkipped()
{
    std::vector<SErrorEntry> records;
    m_view.RetrieveAllErrors(records);
    if (records.empty())
        return false;
    std::vector<SErrorEntry> counted;
    std::map<ErrorId, int> left = m_skipped;
    for (SErrorEntry& record : records)
    {
        const auto skipped = left.find(ErrorId(record.problemCode, record.problemType));
        if (skipped == left.end())
            continue;
        record.counter1 = static_cast<std::uint16_t>(record.counter1 + skipped->second);
        record.counter2 = static_cast<std::uint16_t>(record.counter2 + skipped->second);
        counted.push_back(record);
        left.erase(skipped);
    }
    const bool published = m_view.UpdateErrorDetails(counted);
    if (published)
        m_skipped.clear();
    return published;
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
