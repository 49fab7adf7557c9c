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
constexpr std::size_t kLookupsByWalk = 4;

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

/// @return whether anything was changed
template <typename Find> bool Apply(SStatusHeader& header, const Find& find, const SErrorChange& change)
{
    const Core::Time reading = Core::Time::Now();
    SErrorEntry* const record = find(change.problemCode, change.problemType);
    if (record == nullptr || Raised(*record) == change.raised)
        return false;
    if (change.raised)
        RaiseRecord(header, *record, Core::Time::Now(), reading);
    else
        ClearRecord(header, *record, reading);
    return true;
}

/// @param restore  called with a record and the entry with its identifier
/// @return whether it was called
template <typename Find, typename Restore>
bool ForEachFound(const std::vector<SErrorEntry>& entries, const Find& find, const Restore& restore)
{
    bool any = false;
    for (const SErrorEntry& entry : entries)
    {
        SErrorEntry* const record = find(entry.problemCode, entry.problemType);
        if (record == nullptr)
            continue;
        restore(*record, entry);
        any = true;
    }
    return any;
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

/// How to find so many records: by a walk for a few, with more by the index, which costs a walk or two to
/// bring up to date. Somebody else may have written identifiers since the last time.
/// @return the index as the table is now; null for walks
const CRecordIndex* IndexFor(std::size_t lookups, CRecordIndex& index, const SStatusTable& table)
{
    if (lookups <= kLookupsByWalk)
        return nullptr;
    index.Know(table);
    return &index;
}

SErrorEntry* Find(SStatusTable& table, const CRecordIndex* index, int code, int type)
{
    const int position = index != nullptr ? index->Find(table, code, type) : FindRecord(table, code, type);
    return position < 0 ? nullptr : &table.records[position];
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
        changed = change(*m_table);
        if (changed)
            TableSignal::Count(*m_table);
    }
    if (changed)
        TableSignal::Wake(*m_table);
    return true;
}

/// Likewise, with the means to find records.
/// @param lookups  how many records are looked for
/// @param change   called with a function that finds the table's record with an identifier, or null
template <typename Change> bool CErrorDatabaseView::ChangeRecords(std::size_t lookups, const Change& change)
{
    return ChangeTable(
        [this, lookups, &change](SStatusTable& table)
        {
            const CRecordIndex* const index = IndexFor(lookups, *m_index, table);
            return change([index, &table](int code, int type) { return Find(table, index, code, type); });
        });
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
        [&errors, count](SStatusTable& table)
        {
            table.header.count = static_cast<std::int32_t>(count);
            for (std::size_t i = 0; i < count; ++i)
            {
                table.records[i].problemCode = errors[i].ProblemCode();
                table.records[i].problemType = static_cast<std::int16_t>(errors[i].ProblemType());
            }
            return true;
        });
    if (loaded)
        TellLeftOut(errors.size());
    return loaded;
}

bool CErrorDatabaseView::RaiseError(int code, int type)
{
    return ChangeRecord(code, type, true);
}

bool CErrorDatabaseView::ClearError(int code, int type)
{
    return ChangeRecord(code, type, false);
}

bool CErrorDatabaseView::ChangeRecord(int code, int type, bool raised)
{
    return !RefusesChanges() && ChangeRecords(1,
                                              [this, code, type, raised](const auto& find) {
                                                  return Apply(m_table->header, find, {code, type, raised});
                                              });
}

bool CErrorDatabaseView::RaiseErrors(const std::vector<std::pair<int, int>>& ids)
{
    return ChangeEach(ids, true);
}

bool CErrorDatabaseView::ClearErrors(const std::vector<std::pair<int, int>>& ids)
{
    return ChangeEach(ids, false);
}

/// One reading of the clock serves for all.
bool CErrorDatabaseView::ChangeEach(const std::vector<std::pair<int, int>>& ids, bool raised)
{
    return !RefusesChanges() &&
           ChangeRecords(ids.size(),
                         [this, &ids, raised](const auto& find)
                         {
                             const Core::Time reading = Core::Time::Now();
                             bool changed = false;
                             for (const auto& id : ids)
                             {
                                 SErrorEntry* const record = find(id.first, id.second);
                                 if (record == nullptr || Raised(*record) == raised)
                                     continue;
                                 if (raised)
                                     RaiseRecord(m_table->header, *record, reading, reading);
                                 else
                                     ClearRecord(m_table->header, *record, reading);
                                 changed = true;
                             }
                             return changed;
                         });
}

bool CErrorDatabaseView::ApplyChanges(const std::vector<SErrorChange>& changes)
{
    return !RefusesChanges() && ChangeRecords(changes.size(),
                                              [this, &changes](const auto& find)
                                              {
                                                  bool changed = false;
                                                  for (const SErrorChange& change : changes)
                                                      changed =
                                                          Apply(m_table->header, find, change) || changed;
                                                  return changed;
                                              });
}

bool CErrorDatabaseView::UpdateErrorDetails(const std::vector<SErrorEntry>& entries)
{
    return !RefusesOwner() &&
           ChangeRecords(entries.size(),
                         [&entries](const auto& find)
                         {
                             const Core::Time now = Core::Time::Now();
                             return ForEachFound(entries, find,
                                                 [&now](SErrorEntry& record, const SErrorEntry& entry)
                                                 { RestoreDetails(record, entry, now); });
                         });
}

bool CErrorDatabaseView::RestoreErrors(const std::vector<SErrorEntry>& entries)
{
    return !RefusesOwner() && !m_readySeen &&
           ChangeRecords(entries.size(),
                         [this, &entries](const auto& find)
                         {
                             return ForEachFound(entries, find,
                                                 [this](SErrorEntry& record, const SErrorEntry& entry)
                                                 { RestoreState(m_table->header, record, entry); });
                         });
}

} // namespace Faultkeeper
