#include "Common/view/TableRecords.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Faultkeeper
{

int RecordCount(const SStatusTable& table)
{
    // Read once: the word may change between a comparison and its use if another process ignores the lock.
    const int count = *static_cast<const volatile std::int32_t*>(&table.header.count);
    return std::clamp(count, 0, kStatusTableCapacity);
}

int FindRecord(const SStatusTable& table, int code, int type)
{
    const int count = RecordCount(table);
    for (int i = 0; i < count; ++i)
    {
        if (table.records[i].problemCode == code &&
            table.records[i].problemType == static_cast<std::int16_t>(type))
            return i;
    }
    return -1;
}

Core::Time ChangeTime(const SErrorEntry& record)
{
    return record.raisedTime < record.clearedTime ? record.clearedTime : record.raisedTime;
}

void SetLastRaiseTime(SStatusHeader& header, const Core::Time& time)
{
    constexpr std::size_t kTypeWordBytes = 4;
    std::memcpy(reinterpret_cast<unsigned char*>(&header.lastRaiseTime) + kTypeWordBytes,
                reinterpret_cast<const unsigned char*>(&time) + kTypeWordBytes, sizeof time - kTypeWordBytes);
}

} // namespace Faultkeeper
