#include <Faultkeeper/ErrorDatabaseView.h>

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbViewChanged.h>

#include "Common/view/RecordIndex.h"
#include "Common/view/TableLock.h"
#include "Common/view/TableRecords.h"
#include "Common/view/TableSignal.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace Faultkeeper
{

bool CErrorDatabaseView::CopyTable()
{
    {
        const CTableLock lock(*this);
        if (!lock.Held())
            return false;
        if (std::memcmp(&m_mirror, m_table, sizeof m_mirror) == 0)
            return true;
        std::memcpy(&m_mirror, m_table, sizeof m_mirror);
    }
    m_index->Know(m_mirror);
    m_settled = false;
    return true;
}

int CErrorDatabaseView::Synchronise(CErrorDatabase& db)
{
    if (m_failed || !CopyTable())
        return 0;
    m_lastSynchronised = Core::Time(std::time(nullptr));
    const bool ready = m_mirror.header.ready == 1;
    const int result = ready ? FollowReadyTable(db) : 0;
    m_readySeen = ready;
    return result;
}

int CErrorDatabaseView::FollowReadyTable(CErrorDatabase& db)
{
    const bool first = !m_readySeen;
    if (first)
        TakeSnapshot();
    // The snapshot is that of the first ready copy, so the second short cut ends with the table's first
    // change.
    if (m_type != eViewReader || (!first && (m_settled || SnapshotHolds())))
        return 0;
    const int result = UpdateErrorStatus(db, first);
    if (result != 0)
        db.SynchronisationComplete();
    return result;
}

bool CErrorDatabaseView::SnapshotHolds() const
{
    return m_mirror.header.lastRaiseTime == m_snapshot.lastRaiseTime &&
           m_mirror.header.lastClearTime == m_snapshot.lastClearTime;
}

void CErrorDatabaseView::Initialise()
{
    if (!m_failed && m_type == eViewReader)
        TakeSnapshot();
}

void CErrorDatabaseView::TakeSnapshot()
{
    m_lastSeen.resize(kStatusTableCapacity);
    const int count = RecordCount(m_mirror);
    for (int i = 0; i < count; ++i)
        m_lastSeen[static_cast<std::size_t>(i)] = ChangeTime(m_mirror.records[i]);
    m_snapshot = m_mirror.header;
}

int CErrorDatabaseView::UpdateErrorStatus(CErrorDatabase& db, bool all)
{
    if (m_failed || m_type != eViewReader)
        return 0;
    m_lastSeen.resize(kStatusTableCapacity);
    int result = 0;
    const int count = RecordCount(m_mirror);
    for (int i = 0; i < count; ++i)
    {
        const SErrorEntry& record = m_mirror.records[i];
        Core::Time& lastSeen = m_lastSeen[static_cast<std::size_t>(i)];
        if (!all && !(ChangeTime(record) > lastSeen))
            continue;
        const int handled = Replay(db, record, all);
        result = handled == 1 || result == 0 ? handled : result;
        lastSeen = ChangeTime(record);
    }
    m_settled = true;
    return result;
}

/// Hands one record to the database and the listener.
/// @param all  pass over what is not raised
/// @return 1 for a raised record, 2 for a cleared one, 0 for one that was passed over
int CErrorDatabaseView::Replay(CErrorDatabase& db, const SErrorEntry& record, bool all)
{
    const bool raised = Raised(record);
    if (!raised && all)
        return 0;
    if (raised)
        db.RaiseError(record.problemCode, record.problemType, true);
    else
        db.ClearError(record.problemCode, record.problemType, true);
    if (m_listener != nullptr)
        m_listener->ErrorEntryChanged(record);
    return raised ? 1 : 2;
}

void CErrorDatabaseView::RetrieveErrorDetails(int code, int type, SErrorEntry& out) const
{
    const int position = RetrieveErrorIndex(code, type);
    if (position >= 0)
        out = m_mirror.records[position];
}

int CErrorDatabaseView::RetrieveErrorIndex(int code, int type) const
{
    return m_failed || m_type != eViewReader ? -1 : m_index->Find(m_mirror, code, type);
}

bool CErrorDatabaseView::WaitForChange(int timeoutMilliseconds)
{
    using std::chrono::milliseconds;
    using Clock = std::chrono::steady_clock;
    if (m_failed || m_type != eViewReader)
        return false;
    const Clock::time_point end = Clock::now() + milliseconds(timeoutMilliseconds);
    const std::uint32_t known = TableSignal::Changes(m_mirror);
    bool sleeping = true;
    while (sleeping && !Published())
    {
        const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
        const int timeout = timeoutMilliseconds < 0 ? -1 : static_cast<int>(std::max<std::int64_t>(left, 0));
        sleeping = timeout != 0 && TableSignal::Sleep(*m_table, known, timeout);
    }
    return Published();
}

/// Is the table's header another one than that of the mirror? Not only the count of changes is compared: a
/// new owner counts from zero and might have come as far as the one before.
bool CErrorDatabaseView::Published() const
{
    std::uint32_t table[sizeof(SStatusHeader) / sizeof(std::uint32_t)];
    std::uint32_t mirror[sizeof(SStatusHeader) / sizeof(std::uint32_t)];
    for (std::size_t word = 0; word < sizeof table / sizeof *table; ++word)
        table[word] = reinterpret_cast<const volatile std::uint32_t*>(&m_table->header)[word];
    std::memcpy(mirror, &m_mirror.header, sizeof mirror);
    return std::memcmp(table, mirror, sizeof table) != 0;
}

} // namespace Faultkeeper
