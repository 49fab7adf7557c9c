#include "faultkeeperd/service/Statistics.h"

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>

namespace Faultkeeper::Apps
{

std::unique_ptr<BDictionaryC> StatisticsMessage(const SStatistics& statistics)
{
    auto entries = std::make_unique<BDictionaryC>();
    for (const auto& number : statistics.numbers)
        entries->Insert(number.first, std::make_unique<BAtomC>(number.second));
    for (const auto& text : statistics.texts)
        entries->Insert(text.first, std::make_unique<BAtomC>(text.second));
    auto message = std::make_unique<BDictionaryC>();
    message->Insert("statistics", std::move(entries));
    return message;
}

} // namespace Faultkeeper::Apps
