#include "faultkeeperd/store/FormerTable.h"

#include "common/owner/TableCalls.h"
#include "common/owner/TableProbe.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <set>
#include <system_error>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::int64_t kDay = 86400000000000; // nanoseconds
constexpr std::int64_t kTwentyYears = 7305 * kDay;
static_assert(kTwentyYears > 7 * kDay * 1024, "after so many weeks satellites count anew");

bool TimeMakesSense(const Core::Time& time, const Core::Time& latest)
{
    return time >= Core::Time() && time <= latest;
}

// The number of the segment that was confirmed last, in the working directory: a new directory has none.
constexpr const char* kConfirmedPath = "faultkeeper.segment";

/// Was it confirmed by an owner in this very directory? That holds however the clock was set in between.
bool Confirmed(int segment)
{
    std::error_code ignored; // what cannot be read confirms nothing
    if (!std::filesystem::is_regular_file(kConfirmedPath, ignored))
        return false;
    std::ifstream file(kConfirmedPath);
    int confirmed = -1;
    return file >> confirmed && confirmed == segment;
}

bool OlderThanDirectory(int segment)
{
    SSegmentFacts facts;
    std::int64_t birth = 0;
    return ReadSegmentFacts(segment, facts) && DirectoryBirth(birth) && MadeBefore(segment, facts, birth);
}

bool MakesSense(const SErrorEntry& record, const Core::Time& latest, const CErrorDatabase& database)
{
    return database.RetrieveError(record.problemCode, record.problemType) != nullptr &&
           (record.flags & ~kRaisedFlag) == 0 && TimeMakesSense(record.raisedTime, latest) &&
           TimeMakesSense(record.clearedTime, latest);
}
} // namespace

bool MadeBefore(int segment, const SSegmentFacts& facts, std::int64_t birth)
{
    return facts.changed < birth && !Confirmed(segment);
}

std::unique_ptr<SStatusTable> FormerTable()
{
    key_t key = -1;
    if (!TableKey(key) || !SegmentUsable(key) || ForeignSegment() || OlderThanDirectory(FindSegment(key)))
        return nullptr;
    auto table = std::make_unique<SStatusTable>();
    return CopyTable(FindSegment(key), *table) ? std::move(table) : nullptr;
}

bool ForeignSegment()
{
    key_t key = -1;
    SSegmentFacts facts;
    return TableKey(key) && ReadSegmentFacts(FindSegment(key), facts) && facts.bytes != kStatusTableBytes;
}

bool RefusedSegment()
{
    key_t key = -1;
    return TableKey(key) && FindSegment(key) != -1 && !SegmentUsable(key);
}

bool RefusedLock()
{
    key_t key = -1;
    return TableKey(key) && FindSemaphore(key) != -1 && !SemaphoreUsable(key);
}

void ConfirmTable()
{
    key_t key = -1;
    if (!TableKey(key))
        return;
    const int segment = FindSegment(key);
    ConfirmSegment(segment);
    if (segment == -1 || Confirmed(segment))
        return;
    std::error_code ignored; // a directory that takes no file goes by the clock
    if (!std::filesystem::is_other(kConfirmedPath, ignored))
        std::ofstream(kConfirmedPath) << segment << "\n";
}

bool ForeignLock()
{
    key_t key = -1;
    const int semaphore = TableKey(key) ? FindSemaphore(key) : -1;
    return semaphore != -1 && LockCount(semaphore) != 1;
}

Core::Time LatestPossible(const Core::Time& now)
{
    key_t key = -1;
    const std::int64_t ahead = TableKey(key) && Confirmed(FindSegment(key)) ? kTwentyYears : kDay;
    constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();
    return Core::Time::FromNanoseconds(std::min(now.Nanoseconds(), kLatest - ahead) + ahead);
}

std::vector<SErrorEntry> UsableRecords(const SStatusTable& table, const CErrorDatabase& database,
                                       const Core::Time& latest)
{
    std::vector<SErrorEntry> usable;
    std::set<std::pair<int, int>> seen;
    for (int position = 0; position < RecordCount(table); ++position)
    {
        const SErrorEntry& record = table.records[position];
        const bool first = seen.emplace(record.problemCode, record.problemType).second;
        if (first && MakesSense(record, latest, database))
            usable.push_back(record);
    }
    return usable;
}

} // namespace Faultkeeper::Apps
