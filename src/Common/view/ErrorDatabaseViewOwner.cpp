#include <Faultkeeper/ErrorDatabaseView.h>

#include <Faultkeeper/ErrorDatabase.h>

#include "Common/view/TableLock.h"
#include "Common/view/TableRecords.h"

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
    header.lastRaiseTime = reading;
}

/// Clears a record that is raised.
void ClearRecord(SStatusHeader& header, SErrorEntry& record, const Core::Time& reading)
{
    record.clearedTime = reading;
    record.flags = static_cast<std::uint16_t>(record.flags & ~kRaisedFlag);
    header.lastClearTime = reading;
}

/// The record with this identifier if its raised bit is as given, otherwise null.
SErrorEntry* FindInState(SStatusTable& table, int code, int type, bool raised)
{
    const int position = FindRecord(table, code, type);
    return position < 0 || Raised(table.records[position]) != raised ? nullptr : &table.records[position];
}

void RestoreDetails(SErrorEntry& record, const SErrorEntry& remembered, const Core::Time& now)
{
    record.counter1 = remembered.counter1;
    record.counter2 = remembered.counter2;
    const bool future = remembered.raisedTime > now || remembered.clearedTime > now;
    record.raisedTime = future ? Core::Time(0) : remembered.raisedTime;
    record.clearedTime = future ? Core::Time(0) : remembered.clearedTime;
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

bool CErrorDatabaseView::FaultkeeperReady(bool ready)
{
    if (RefusesOwner())
        return false;
    const CTableLock lock(*this);
    if (!lock.Held())
        return false;
    m_readySeen = ready;
    m_table->header.ready = ready ? 1 : 0;
    return true;
}

bool CErrorDatabaseView::LoadErrors(const CErrorDatabase& db)
{
    if (RefusesOwner())
        return false;
    const std::vector<CError>& errors = db.GetErrorList();
    {
        const CTableLock lock(*this);
        if (!lock.Held())
            return false;
        const std::size_t count = std::min(errors.size(), static_cast<std::size_t>(kStatusTableCapacity));
        m_table->header.count = static_cast<std::int32_t>(count);
        for (std::size_t i = 0; i < count; ++i)
        {
            m_table->records[i].problemCode = errors[i].ProblemCode();
            m_table->records[i].problemType = static_cast<std::int16_t>(errors[i].ProblemType());
        }
    }
    TellLeftOut(errors.size());
    return true;
}

bool CErrorDatabaseView::RaiseError(int code, int type)
{
    if (RefusesChanges())
        return false;
    const CTableLock lock(*this);
    if (!lock.Held())
        return false;
    const Core::Time reading = Core::Time::Now();
    if (SErrorEntry* const record = FindInState(*m_table, code, type, false))
        RaiseRecord(m_table->header, *record, Core::Time::Now(), reading);
    return true;
}

bool CErrorDatabaseView::ClearError(int code, int type)
{
    if (RefusesChanges())
        return false;
    const CTableLock lock(*this);
    if (!lock.Held())
        return false;
    const Core::Time reading = Core::Time::Now();
    if (SErrorEntry* const record = FindInState(*m_table, code, type, true))
        ClearRecord(m_table->header, *record, reading);
    return true;
}

bool CErrorDatabaseView::RaiseErrors(const std::vector<std::pair<int, int>>& ids)
{
    if (RefusesChanges())
        return false;
    const CTableLock lock(*this);
    if (!lock.Held())
        return false;
    const Core::Time reading = Core::Time::Now();
    for (const auto& id : ids)
    {
        if (SErrorEntry* const record = FindInState(*m_table, id.first, id.second, false))
            RaiseRecord(m_table->header, *record, reading, reading);
    }
    return true;
}

bool CErrorDatabaseView::ClearErrors(const std::vector<std::pair<int, int>>& ids)
{
    if (RefusesChanges())
        return false;
    const CTableLock lock(*this);
    if (!lock.Held())
        return false;
    const Core::Time reading = Core::Time::Now();
    for (const auto& id : ids)
    {
        if (SErrorEntry* const record = FindInState(*m_table, id.first, id.second, true))
            ClearRecord(m_table->header, *record, reading);
    }
    return true;
}

bool CErrorDatabaseView::UpdateErrorDetails(const std::vector<SErrorEntry>& entries)
{
    if (RefusesOwner())
        return false;
    const CTableLock lock(*this);
    if (!lock.Held())
        return false;
    const Core::Time now = Core::Time::Now();
    for (const SErrorEntry& entry : entries)
    {
        const int position = FindRecord(*m_table, entry.problemCode, entry.problemType);
        if (position >= 0)
            RestoreDetails(m_table->records[position], entry, now);
    }
    return true;
}

} // namespace Faultkeeper
