#include "faultkeeperd/store/FormerTable.h"

#include "common/TableCalls.h"
#include "common/TableProbe.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <cstdint>
#include <memory>
#include <set>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::int64_t kDay = 86400000000000; // nanoseconds

bool TimeMakesSense(const Core::Time& time, const Core::Time& now)
{
    return time >= Core::Time() && time.Nanoseconds() <= now.Nanoseconds() + kDay;
}

bool OlderThanDirectory(int segment)
{
    SSegmentFacts facts;
    std::int64_t birth = 0;
    return ReadSegmentFacts(segment, facts) && DirectoryBirth(birth) && MadeBefore(facts, birth);
}

bool MakesSense(const SErrorEntry& record, const Core::Time& now, const CErrorDatabase& database)
{
    return database.RetrieveError(record.problemCode, record.problemType) != nullptr &&
           (record.flags & ~kRaisedFlag) == 0 && TimeMakesSense(record.raisedTime, now) &&
           TimeMakesSense(record.clearedTime, now);
}
} // namespace

bool MadeBefore(const SSegmentFacts& facts, std::int64_t birth)
{
    return facts.changed < birth;
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

void ConfirmTable()
{
    key_t key = -1;
    if (TableKey(key))
        ConfirmSegment(FindSegment(key));
}

std::vector<SErrorEntry> UsableRecords(const SStatusTable& table, const CErrorDatabase& database)
{
    const Core::Time now = Core::Time::Now();
    std::vector<SErrorEntry> usable;
    std::set<std::pair<int, int>> seen;
    for (int position = 0; position < RecordCount(table); ++position)
    {
        const SErrorEntry& record = table.records[position];
        const bool first = seen.emplace(record.problemCode, record.problemType).second;
        if (first && MakesSense(record, now, database))
            usable.push_back(record);
    }
    return usable;
}

} // namespace Faultkeeper::Apps
