#include <Faultkeeper/ErrorDatabaseView.h>

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDbViewChanged.h>

#include "Common/view/TableLock.h"
#include "Common/view/TableRecords.h"

#include <cstring>
#include <ctime>

namespace Faultkeeper
{

bool CErrorDatabaseView::CopyTable()
{
    const CTableLock lock(*this);
    if (lock.Held())
        std::memcpy(&m_mirror, m_table, sizeof m_mirror);
    return lock.Held();
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
    // The snapshot is that of the first ready copy, so this short cut ends with the table's first change.
    if (m_type != eViewReader || (!first && SnapshotHolds()))
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
    return m_failed || m_type != eViewReader ? -1 : FindRecord(m_mirror, code, type);
}

} // namespace Faultkeeper
