#include <Faultkeeper/ErrorDatabaseView.h>

#include <Faultkeeper/ErrorDatabase.h>

#include "Common/view/RecordIndex.h"
#include "Common/view/TableLock.h"
#include "Common/view/TableRecords.h"
#include "Common/view/TableSignal.h"

#include <algorithm>
#include <cstdio>

namespace Faultkeeper
{

namespace
{
/// Raises a record that is not raised.
void RaiseRecord(SStatusHeader& header, SErrorEntry& record, const Core::Time& raised,
                 const Core::Time& reading)
{
    ++record.counter1;
    ++record.counter2;
    record.raisedTime = raised;
    record.flags = static_cast<std::uint16_t>(record.flags | kRaisedFlag);
    SetLastRaiseTime(header, reading);
}

/// Clears a record that is raised.
void ClearRecord(SStatusHeader& header, SErrorEntry& record, const Core::Time& reading)
{
    record.clearedTime = reading;
    record.flags = static_cast<std::uint16_t>(record.flags & ~kRaisedFlag);
    header.lastClearTime = reading;
}

void RestoreDetails(SErrorEntry& record, const SErrorEntry& remembered, const Core::Time& now)
{
    record.counter1 = remembered.counter1;
    record.counter2 = remembered.counter2;
    const bool future = remembered.raisedTime > now || remembered.clearedTime > now;
    record.raisedTime = future ? Core::Time(0) : remembered.raisedTime;
    record.clearedTime = future ? Core::Time(0) : remembered.clearedTime;
}

/// Takes the whole former state of the record.
void RestoreState(SStatusHeader& header, SErrorEntry& record, const SErrorEntry& remembered)
{
    record.flags =
        static_cast<std::uint16_t>((record.flags & ~kRaisedFlag) | (remembered.flags & kRaisedFlag));
    record.counter1 = remembered.counter1;
    record.counter2 = remembered.counter2;
    record.raisedTime = remembered.raisedTime;
    record.clearedTime = remembered.clearedTime;
    SetLastRaiseTime(header, std::max(header.lastRaiseTime, record.raisedTime));
    header.lastClearTime = std::max(header.lastClearTime, record.clearedTime);
}

void TellLeftOut(std::size_t errors)
{
    if (errors > static_cast<std::size_t>(kStatusTableCapacity))
        std::fprintf(stderr, "the status table holds %d errors, %zu were left out\n", kStatusTableCapacity,
                     errors - static_cast<std::size_t>(kStatusTableCapacity));
}
} // namespace

bool CErrorDatabaseView::RefusesOwner() const
{
    return m_failed || m_type == eViewReader;
}

bool CErrorDatabaseView::RefusesChanges() const
{
    return RefusesOwner() || !m_readySeen;
}

/// Does something with the table under its lock, and tells who waits.
/// @param change  called with the table; true if it has changed anything
/// @return false if the lock was busy
template <typename Change> bool CErrorDatabaseView::ChangeTable(const Change& change)
{
    bool changed = false;
    {
        const CTableLock lock(*this);
        if (!lock.Held())
            return false;
        if (TableSignal::Changes(*m_table) != m_changes)
            m_index->MayDiffer(); // another process has had the table
        changed = change(*m_table);
        if (changed)
            TableSignal::Count(*m_table);
        m_changes = TableSignal::Changes(*m_table);
    }
    if (changed)
        TableSignal::Wake(*m_table);
    return true;
}

bool CErrorDatabaseView::FaultkeeperReady(bool ready)
{
    return !RefusesOwner() && ChangeTable(
                                  [this, ready](SStatusTable& table)
                                  {
                                      m_readySeen = ready;
                                      table.header.ready = ready ? 1 : 0;
                                      return true;
                                  });
}

bool CErrorDatabaseView::LoadErrors(const CErrorDatabase& db)
{
    if (RefusesOwner())
        return false;
    const std::vector<CError>& errors = db.GetErrorList();
    const std::size_t count = std::min(errors.size(), static_cast<std::size_t>(kStatusTableCapacity));
    const bool loaded = ChangeTable(
        [this, &errors, count](SStatusTable& table)
        {
            table.header.count = static_cast<std::int32_t>(count);
            for (std::size_t i = 0; i < count; ++i)
            {
                table.records[i].problemCode = errors[i].ProblemCode();
                table.records[i].problemType = static_cast<std::int16_t>(errors[i].ProblemType());
            }
            m_index->MayDiffer();
            return true;
        });
    if (loaded)
        TellLeftOut(errors.size());
    return loaded;
}

/// The table's record with this identifier, or null. Under the lock.
SErrorEntry* CErrorDatabaseView::FindOwned(int code, int type)
{
    const int indexed = m_index->Find(*m_table, code, type);
    // Somebody may have written identifiers without counting a change: a walk finds what is there.
    const int position = indexed >= 0 ? indexed : FindRecord(*m_table, code, type);
    return position < 0 ? nullptr : &m_table->records[position];
}

/// @return whether anything was changed; likewise below
bool CErrorDatabaseView::Raise(int code, int type)
{
    const Core::Time reading = Core::Time::Now();
    SErrorEntry* const record = FindOwned(code, type);
    if (record == nullptr || Raised(*record))
        return false;
    RaiseRecord(m_table->header, *record, Core::Time::Now(), reading);
    return true;
}

bool CErrorDatabaseView::Clear(int code, int type)
{
    const Core::Time reading = Core::Time::Now();
    SErrorEntry* const record = FindOwned(code, type);
    if (record == nullptr || !Raised(*record))
        return false;
    ClearRecord(m_table->header, *record, reading);
    return true;
}

bool CErrorDatabaseView::RaiseError(int code, int type)
{
    return !RefusesChanges() && ChangeTable([this, code, type](SStatusTable&) { return Raise(code, type); });
}

bool CErrorDatabaseView::ClearError(int code, int type)
{
    return !RefusesChanges() && ChangeTable([this, code, type](SStatusTable&) { return Clear(code, type); });
}

bool CErrorDatabaseView::RaiseErrors(const std::vector<std::pair<int, int>>& ids)
{
    return !RefusesChanges() && ChangeTable([this, &ids](SStatusTable&) { return ChangeEach(ids, true); });
}

bool CErrorDatabaseView::ClearErrors(const std::vector<std::pair<int, int>>& ids)
{
    return !RefusesChanges() && ChangeTable([this, &ids](SStatusTable&) { return ChangeEach(ids, false); });
}

/// One reading of the clock serves for all.
/// @return whether anything changed
bool CErrorDatabaseView::ChangeEach(const std::vector<std::pair<int, int>>& ids, bool raised)
{
    const Core::Time reading = Core::Time::Now();
    bool changed = false;
    for (const auto& id : ids)
    {
        SErrorEntry* const record = FindOwned(id.first, id.second);
        if (record == nullptr || Raised(*record) == raised)
            continue;
        if (raised)
            RaiseRecord(m_table->header, *record, reading, reading);
        else
            ClearRecord(m_table->header, *record, reading);
        changed = true;
    }
    return changed;
}

bool CErrorDatabaseView::ApplyChanges(const std::vector<SErrorChange>& changes)
{
    return !RefusesChanges() &&
           ChangeTable(
               [this, &changes](SStatusTable&)
               {
                   bool changed = false;
                   for (const SErrorChange& change : changes)
                       changed = (change.raised ? Raise(change.problemCode, change.problemType)
                                                : Clear(change.problemCode, change.problemType)) ||
                                 changed;
                   return changed;
               });
}

bool CErrorDatabaseView::UpdateErrorDetails(const std::vector<SErrorEntry>& entries)
{
    return !RefusesOwner() && ChangeTable(
                                  [this, &entries](SStatusTable&)
                                  {
                                      const Core::Time now = Core::Time::Now();
                                      bool changed = false;
                                      for (const SErrorEntry& entry : entries)
                                      {
                                          SErrorEntry* const record =
                                              FindOwned(entry.problemCode, entry.problemType);
                                          if (record == nullptr)
                                              continue;
                                          RestoreDetails(*record, entry, now);
                                          changed = true;
                                      }
                                      return changed;
                                  });
}

bool CErrorDatabaseView::RestoreErrors(const std::vector<SErrorEntry>& entries)
{
    return !RefusesOwner() && !m_readySeen &&
           ChangeTable(
               [this, &entries](SStatusTable& table)
               {
                   bool changed = false;
                   for (const SErrorEntry& entry : entries)
                   {
                       SErrorEntry* const record = FindOwned(entry.problemCode, entry.problemType);
                       if (record == nullptr)
                           continue;
                       RestoreState(table.header, *record, entry);
                       changed = true;
                   }
                   return changed;
               });
}

} // namespace Faultkeeper
