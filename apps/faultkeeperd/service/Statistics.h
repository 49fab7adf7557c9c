#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_STATISTICS_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_STATISTICS_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>

class BDictionaryC;

namespace Faultkeeper::Apps
{

/// What an owner tells of itself to whoever asks, by name. The answer on the wire is
/// {"statistics": {name: number or text, ...}}. Programs rely on the names: append, never rename.
struct SStatistics
{
    std::map<std::string, std::int64_t> numbers;
    std::map<std::string, std::string> texts;
};

/// The answer.
std::unique_ptr<BDictionaryC> StatisticsMessage(const SStatistics& statistics);

} // namespace Faultkeeper::Apps

#endif
