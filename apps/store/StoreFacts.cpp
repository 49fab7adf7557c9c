#include "store/StoreFacts.h"

#include "store/StoreRows.h"

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kFacts[] = {"", "boot id", "configuration", "time of trying"};
} // namespace

std::string NameOfFact(std::int64_t id)
{
    const bool known = id >= esfBoot && id <= CopyOf(esfLast);
    return known ? kFacts[(id - 1) % esfLast + 1] : "fact numbered " + std::to_string(id);
}

std::string SStoreFacts::Value(EStoreFact fact) const
{
    const auto found = values.find(fact);
    const auto copy = found != values.end() ? found : values.find(CopyOf(fact));
    return copy != values.end() ? copy->second : std::string();
}

SStoreFacts ReadStoreFacts(CSqlite& database)
{
    SStoreFacts facts;
    std::int64_t id = 0;
    std::string value;
    CSqliteStatement rows(database, "SELECT * FROM facts");
    while (rows.Next())
    {
        if (GetFactRow(rows, id, value))
            facts.values.emplace(id, value);
        else
            facts.bad.push_back(id);
    }
    return facts;
}

} // namespace Faultkeeper::Apps
