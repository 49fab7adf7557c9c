#include "unit/Common/models/ViewsModel.h"
#include "unit/Common/view/NumberedErrors.h"

#include <cstring>

namespace Models
{

using Faultkeeper::SErrorEntry;

std::vector<TErrorId> IdsOf(const std::vector<SItem>& items)
{
    std::vector<TErrorId> ids;
    for (const SItem& item : items)
        ids.push_back(NumberedErrors::Id(item.error));
    return ids;
}

std::vector<SErrorEntry> EntriesOf(const std::vector<SItem>& items, std::int64_t seconds)
{
    constexpr std::int64_t kHour = 3600;
    std::vector<SErrorEntry> entries;
    for (const SItem& item : items)
    {
        SErrorEntry entry;
        entry.problemCode = NumberedErrors::Id(item.error).first;
        entry.problemType = static_cast<std::int16_t>(NumberedErrors::Id(item.error).second);
        entry.flags = item.raised ? 1 : 0;
        entry.counter1 = item.counter1;
        entry.counter2 = item.counter2;
        entry.raisedTime = Core::Time(seconds + kHour * item.raisedHours);
        entry.clearedTime = Core::Time(seconds + kHour * item.clearedHours);
        entries.push_back(entry);
    }
    return entries;
}

SErrorEntry UntouchedEntry()
{
    SErrorEntry entry;
    entry.problemCode = kUntouched;
    return entry;
}

std::string Answer(bool done)
{
    return done ? "yes\n" : "no\n";
}

std::string Answer(int position)
{
    return std::to_string(position) + "\n";
}

std::string Answer(int result, int code, int type)
{
    return std::to_string(result) + " " + std::to_string(code) + ":" + std::to_string(type) + "\n";
}

namespace
{
std::string Shown(const Core::Time& time)
{
    std::uint32_t typeWord = 0;
    std::memcpy(&typeWord, &time, sizeof typeWord);
    return (typeWord != 0 ? std::to_string(typeWord) + "/" : "") + std::to_string(time.Nanoseconds());
}
} // namespace

std::string Answer(const SErrorEntry& record)
{
    return std::to_string(record.problemCode) + ":" + std::to_string(record.problemType) + " flags " +
           std::to_string(record.flags) + ", counters " + std::to_string(record.counter1) + "/" +
           std::to_string(record.counter2) + ", raised " + Shown(record.raisedTime) + ", cleared " +
           Shown(record.clearedTime) + "\n";
}

std::string Answer(const std::vector<SErrorEntry>& records)
{
    std::string text;
    for (const SErrorEntry& record : records)
        text += Answer(record);
    return text;
}

std::string Answer(int result, const std::string& calls, const std::set<TErrorId>& active, std::size_t tops)
{
    std::string text = std::to_string(result) + ", told " + calls + ", active ";
    for (const TErrorId& id : active)
        text += std::to_string(id.first) + ":" + std::to_string(id.second) + " ";
    return text + ", listed " + std::to_string(tops) + "\n";
}

} // namespace Models
