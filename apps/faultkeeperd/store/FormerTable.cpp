#include "faultkeeperd/store/FormerTable.h"

#include "common/TableCalls.h"
#include "common/TableProbe.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <memory>
#include <set>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
bool TimeMakesSense(const Core::Time& time, const Core::Time& now)
{
    return time >= Core::Time() && time <= now;
}

bool MakesSense(const SErrorEntry& record, const Core::Time& now, const CErrorDatabase& database)
{
    return database.RetrieveError(record.problemCode, record.problemType) != nullptr &&
           (record.flags & ~kRaisedFlag) == 0 && TimeMakesSense(record.raisedTime, now) &&
           TimeMakesSense(record.clearedTime, now);
}
} // namespace

std::vector<SErrorEntry> FormerRecords(const CErrorDatabase& database)
{
    key_t key = -1;
    if (!TableKey(key) || !SegmentUsable(key))
        return {};
    const auto table = std::make_unique<SStatusTable>();
    return CopyTable(FindSegment(key), *table) ? UsableRecords(*table, database) : std::vector<SErrorEntry>();
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
