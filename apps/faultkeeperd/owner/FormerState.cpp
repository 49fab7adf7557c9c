#include "faultkeeperd/owner/FormerState.h"

#include "common/owner/TableProbe.h"
#include "common/text/ErrorNames.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/owner/Orphans.h"
#include "faultkeeperd/store/FormerTable.h"
#include "faultkeeperd/store/StateKeeper.h"
#include "store/BootClock.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
Core::Time LastChange(const SErrorEntry& record)
{
    return std::max(record.raisedTime, record.clearedTime);
}

Core::Time LatestOf(const std::vector<SErrorEntry>& records)
{
    Core::Time latest;
    for (const SErrorEntry& record : records)
        latest = std::max(latest, LastChange(record));
    return latest;
}

bool Known(const SStoredError& error, const CErrorDatabase& database)
{
    return database.RetrieveError(error.entry.problemCode, error.entry.problemType) != nullptr;
}

void TakeStore(SFormerState& former, const SStoreContents& contents, const CErrorDatabase& database)
{
    for (const SStoredError& error : contents.errors)
    {
        if (!Known(error, database))
            continue;
        former.errors.push_back(error);
        if (!former.sameBoot)
            former.errors.back().entry.flags = 0;
    }
    if (former.sameBoot)
        former.sessions = contents.sessions;
}

/// The owner whose table it is began to count with this boot, and the store had stopped before.
SStoredError Added(const SStoredError& stored, const SErrorEntry& record)
{
    SStoredError sum = {record, stored.raises + record.counter1};
    sum.entry.counter1 = static_cast<std::uint16_t>(stored.entry.counter1 + record.counter1);
    sum.entry.counter2 = static_cast<std::uint16_t>(stored.entry.counter2 + record.counter2);
    if (record.raisedTime == Core::Time())
        sum.entry.raisedTime = stored.entry.raisedTime;
    if (record.clearedTime == Core::Time())
        sum.entry.clearedTime = stored.entry.clearedTime;
    return sum;
}

/// The owner whose table it is had put what is stored into it, and the table has gone on from there.
SStoredError Continued(const SStoredError& stored, const SErrorEntry& record)
{
    const int more = static_cast<std::uint16_t>(record.counter1 - stored.entry.counter1);
    return {record, stored.raises + static_cast<std::uint64_t>(more)};
}

/// An owner that starts zeroes the table before it has put anything back.
bool Blank(const SErrorEntry& record)
{
    return record.flags == 0 && record.counter1 == 0 && record.counter2 == 0 &&
           LastChange(record) == Core::Time();
}

/// The records of a table that tell something.
std::vector<SErrorEntry> RecordsOf(const SStatusTable* table, const CErrorDatabase& database)
{
    std::vector<SErrorEntry> records;
    if (table != nullptr)
        records = UsableRecords(*table, database, LatestPossible());
    records.erase(std::remove_if(records.begin(), records.end(), Blank), records.end());
    return records;
}

/// Has a display seen these times, or are they at least not later than any that it can see? A time of an
/// earlier boot can lie in the future: the clock was wrong, then or now. The table has not shown it.
bool Shown(const SErrorEntry& entry, const SStatusTable* table, const Core::Time& now)
{
    if (LastChange(entry) <= now)
        return true;
    const int count = table == nullptr ? 0 : RecordCount(*table);
    return count > 0 && std::any_of(table->records, table->records + count,
                                    [&entry](const SErrorEntry& record)
                                    {
                                        return record.problemCode == entry.problemCode &&
                                               record.problemType == entry.problemType &&
                                               LastChange(record) == LastChange(entry);
                                    });
}

/// What makes a table's records comparable with what is stored.
struct SComparison
{
    const SStatusTable* table; // null if there is none
    ETableRelation relation;
    bool sameBoot; // as the store
    Core::Time now = Core::Time::Now();
};

/// How much further than the store the table has come with one error, whose raises and clears take turns.
int Progress(const SErrorEntry& stored, const SErrorEntry& record)
{
    const auto raises = static_cast<std::int16_t>(record.counter1 - stored.counter1);
    return 2 * raises + (stored.flags != 0 ? 1 : 0) - (record.flags != 0 ? 1 : 0);
}

/// Has the store more of an error than the table? What is reported while the lock is busy is stored at once,
/// and goes into the table later, with a later time. How many raises they are apart can be told only where
/// the store was kept up.
bool StoreKnowsBetter(const SStoredError& stored, const SErrorEntry& record, const SComparison& comparison)
{
    if (!comparison.sameBoot)
        return false;
    const int progress = Progress(stored.entry, record);
    if (comparison.relation == etrStored && progress != 0)
        return progress < 0;
    return Shown(stored.entry, comparison.table, comparison.now) &&
           LastChange(stored.entry) > LastChange(record);
}

/// Has the error been raised or cleared since it was stored, whatever the journal says of it?
bool MovedOn(const SErrorEntry& stored, const SErrorEntry& record, bool continued)
{
    return !continued || Progress(stored, record) != 0 || LastChange(record) > LastChange(stored);
}

/// What the journal lacks, so that whoever goes through it comes to the state in the table.
void AddMissed(std::vector<STransition>& missed, const SErrorEntry& stored, const SErrorEntry& record)
{
    STransition transition;
    transition.time = Core::Time::Now();
    transition.sinceBoot = NanosecondsSinceBoot();
    transition.problemCode = record.problemCode;
    transition.problemType = record.problemType;
    transition.reason = eorTable;
    if (stored.flags != 0)
        missed.push_back(transition);
    transition.raised = true;
    if (record.flags != 0)
        missed.push_back(transition);
}

/// Does the table count on from what is stored? Where nobody has said: counters only grow, so one that is
/// lower than it was stored has begun anew.
bool Continues(const SComparison& comparison, const std::vector<SErrorEntry>& records,
               const std::map<ErrorId, SStoredError>& errors)
{
    const ETableRelation relation = comparison.relation;
    if (relation != etrUnknown && relation != etrElsewhere)
        return relation != etrApart;
    return std::none_of(records.begin(), records.end(),
                        [&](const SErrorEntry& record)
                        {
                            const auto found = errors.find(ErrorId(record.problemCode, record.problemType));
                            return found != errors.end() && record.counter1 < found->second.entry.counter1 &&
                                   !StoreKnowsBetter(found->second, record, comparison);
                        });
}

void TellTable(const SComparison& comparison, bool newer)
{
    if (!comparison.sameBoot)
        LogInfo("the state store does not know of this boot; starting from the table of a former owner");
    else if (newer || comparison.relation != etrStored)
        LogInfo("the state store is behind; starting from the table of a former owner");
}

/// Since the store was written last an owner may have run that did not write it: its table knows better, but
/// for what was stored while the lock was busy.
/// @return what the journal lacks
std::vector<STransition> TakeTable(SFormerState& former, const std::vector<SErrorEntry>& records,
                                   const SComparison& comparison)
{
    std::map<ErrorId, SStoredError> errors;
    for (const SStoredError& error : former.errors)
        errors[ErrorId(error.entry.problemCode, error.entry.problemType)] = error;
    const bool continued = Continues(comparison, records, errors);
    bool newer = false;
    std::vector<STransition> missed;
    for (const SErrorEntry& record : records)
    {
        const auto [place, missing] = errors.try_emplace(ErrorId(record.problemCode, record.problemType));
        SStoredError& error = place->second;
        if (!missing && continued && StoreKnowsBetter(error, record, comparison))
            continue;
        newer = newer || Progress(error.entry, record) != 0;
        if (MovedOn(error.entry, record, continued))
            former.orphans.erase(place->first);
        if (!continued || Progress(error.entry, record) != 0)
            AddMissed(missed, error.entry, record);
        error = continued ? Continued(error, record) : Added(error, record);
    }
    TellTable(comparison, newer);
    former.errors.clear();
    for (const auto& error : errors)
        former.errors.push_back(error.second);
    former.sameBoot = true;
    return missed;
}

bool Has(const SFormerState& former, const ErrorId& id)
{
    return std::any_of(former.errors.begin(), former.errors.end(),
                       [&id](const SStoredError& error)
                       { return ErrorId(error.entry.problemCode, error.entry.problemType) == id; });
}

/// The table has what the store has lost with a damaged row.
/// @return what that is
std::vector<SStoredError> TakeDropped(SFormerState& former, const std::vector<SErrorEntry>& records,
                                      const std::vector<ErrorId>& dropped)
{
    std::vector<SStoredError> taken;
    for (const SErrorEntry& record : records)
    {
        const ErrorId id(record.problemCode, record.problemType);
        const bool lost = std::find(dropped.begin(), dropped.end(), id) != dropped.end();
        if (!lost || Has(former, id))
            continue;
        taken.push_back({record, record.counter1});
        LogInfo("error " + ErrorName(id.first, id.second) + " is taken from the table of a former owner");
    }
    former.errors.insert(former.errors.end(), taken.begin(), taken.end());
    return taken;
}

/// What was published and not stored before the owner was killed has not happened. Displays have seen it,
/// though, and go by the times.
void FindContradictions(SFormerState& former, const std::vector<SErrorEntry>& records,
                        const SStatusTable* table)
{
    const Core::Time now = Core::Time::Now();
    std::map<ErrorId, const SErrorEntry*> known;
    for (const SStoredError& error : former.errors)
        known[ErrorId(error.entry.problemCode, error.entry.problemType)] = &error.entry;
    std::vector<SStoredError> unknown;
    for (const SErrorEntry& record : records)
    {
        const ErrorId id(record.problemCode, record.problemType);
        SStoredError nothing;
        nothing.entry.problemCode = record.problemCode;
        nothing.entry.problemType = record.problemType;
        const auto found = known.find(id);
        const SErrorEntry& stored = found != known.end() ? *found->second : nothing.entry;
        const Core::Time shown = Shown(stored, table, now) ? LastChange(stored) : Core::Time();
        if (stored.flags == record.flags || LastChange(record) < shown)
            continue;
        former.contradicted.insert(id);
        if (found == known.end())
            unknown.push_back(nothing);
    }
    former.errors.insert(former.errors.end(), unknown.begin(), unknown.end());
}

/// Within the range that makes sense, whatever is in the table has been seen.
Core::Time LatestShown(const SFormerState& former, const std::vector<SErrorEntry>& records,
                       const SStatusTable* table)
{
    const Core::Time now = Core::Time::Now();
    Core::Time latest = LatestOf(records);
    for (const SStoredError& error : former.errors)
    {
        if (former.sameBoot && Shown(error.entry, table, now))
            latest = std::max(latest, LastChange(error.entry));
    }
    return latest;
}

/// A journal that is not read to its end tells nothing: what comes later in it may be the contrary. The
/// keeper gives that of a store that works, and lets go of one that fails meanwhile.
void JudgeConfiguration(SFormerState& former, CStateKeeper& keeper, const CErrorDatabase& database,
                        const std::vector<SStoredError>& stored)
{
    former.orphans = FindOrphans(keeper, database, stored);
    former.judged = keeper.Storing();
    if (!former.judged)
        former.orphans.clear();
}
} // namespace

SFormerState FindFormerState(CStateKeeper& keeper, const CErrorDatabase& database, const std::string& boot,
                             const std::string& configuration)
{
    const std::unique_ptr<SStatusTable> table = FormerTable();
    const std::vector<SErrorEntry> records = RecordsOf(table.get(), database);
    const SStoreContents contents = keeper.Open(boot, configuration);
    SFormerState former;
    if (!contents.configuration.empty() && contents.configuration != configuration)
    {
        LogInfo("the state store is of another configuration; what still exists is kept");
        if (contents.OfBoot(boot))
            JudgeConfiguration(former, keeper, database, contents.errors);
    }
    const ETableRelation relation = keeper.FormerTable();
    former.sameBoot = contents.OfBoot(boot);
    TakeStore(former, contents, database);
    // Where nothing can be written, the note could not be kept up either, and the table can be ahead.
    const bool stored =
        former.sameBoot && keeper.Storing() && (relation == etrUnknown || relation == etrStored);
    std::vector<SStoredError> fromTable;
    std::vector<STransition> missed;
    if (!stored && !records.empty())
    {
        missed = TakeTable(former, records, {table.get(), relation, former.sameBoot});
        fromTable = former.errors;
    }
    else if (former.sameBoot)
        fromTable = TakeDropped(former, records, contents.droppedErrors);
    if (former.sameBoot)
        FindContradictions(former, records, table.get());
    former.latest = LatestShown(former, records, table.get());
    keeper.Begin(fromTable, missed);
    return former;
}

} // namespace Faultkeeper::Apps
