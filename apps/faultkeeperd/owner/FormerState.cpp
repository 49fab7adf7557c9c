#include "faultkeeperd/owner/FormerState.h"

#include "common/ErrorNames.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/store/FormerTable.h"
#include "faultkeeperd/store/StateKeeper.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstdint>
#include <map>

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
    sum.entry.raisedTime = std::max(stored.entry.raisedTime, record.raisedTime);
    sum.entry.clearedTime = std::max(stored.entry.clearedTime, record.clearedTime);
    return sum;
}

/// An owner without this store has run since the machine was started: its table knows better.
void TakeTable(SFormerState& former, const std::vector<SErrorEntry>& records)
{
    std::map<ErrorId, SStoredError> errors;
    for (const SStoredError& error : former.errors)
        errors[ErrorId(error.entry.problemCode, error.entry.problemType)] = error;
    for (const SErrorEntry& record : records)
    {
        const ErrorId id(record.problemCode, record.problemType);
        errors[id] = Added(errors[id], record);
    }
    former.errors.clear();
    for (const auto& error : errors)
        former.errors.push_back(error.second);
    former.sameBoot = true;
    LogInfo("the state store does not know of this boot; starting from the table of a former owner");
}
/// What was published and not stored before the owner was killed has not happened. Displays have seen it,
/// though, and go by the times.
void FindContradictions(SFormerState& former, const std::vector<SErrorEntry>& records)
{
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
        if (stored.flags == record.flags || LastChange(record) < LastChange(stored))
            continue;
        former.contradicted.insert(id);
        if (found == known.end())
            unknown.push_back(nothing);
    }
    former.errors.insert(former.errors.end(), unknown.begin(), unknown.end());
}
} // namespace

SFormerState FindFormerState(CStateKeeper& keeper, const CErrorDatabase& database, const std::string& boot,
                             const std::string& configuration)
{
    const std::vector<SErrorEntry> records = FormerRecords(database);
    const SStoreContents contents = keeper.Open(boot, configuration);
    for (const std::string& dropped : contents.dropped)
        LogWarning("the state store held a damaged row, which is dropped: " + dropped);
    if (!contents.configuration.empty() && contents.configuration != configuration)
        LogInfo("the state store is of another configuration; what still exists is kept");
    SFormerState former;
    former.sameBoot = !boot.empty() && contents.boot == boot;
    TakeStore(former, contents, database);
    if (!former.sameBoot && !records.empty())
        TakeTable(former, records);
    else if (former.sameBoot)
        FindContradictions(former, records);
    former.latest = LatestOf(records);
    if (former.sameBoot)
    {
        for (const SStoredError& error : former.errors)
            former.latest = std::max(former.latest, LatestOf({error.entry}));
    }
    return former;
}

} // namespace Faultkeeper::Apps
