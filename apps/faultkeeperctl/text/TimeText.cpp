#include "faultkeeperctl/text/TimeText.h"

#include <Core/Time.h>

#include <cmath>
#include <cstddef>
#include <ctime>

namespace Faultkeeper::Apps
{

std::string TimeText(std::int64_t secondsSince1970)
{
    const std::time_t seconds = static_cast<std::time_t>(secondsSince1970);
    struct tm local = {};
    char text[64];
    if (localtime_r(&seconds, &local) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &local) == 0)
        return std::to_string(secondsSince1970);
    std::string result = text;
    return result.insert(result.size() - 2, ":"); // %z writes +0100
}

std::string ExactTimeText(const Core::Time& time, int digits)
{
    constexpr std::int64_t kSecond = 1000000000;
    constexpr std::size_t kZoneLength = 6;
    const std::int64_t rest = (time.Nanoseconds() % kSecond + kSecond) % kSecond;
    std::string fraction = std::to_string(kSecond + rest).substr(0, static_cast<std::size_t>(digits) + 1);
    fraction.front() = '.';
    std::string text = TimeText((time.Nanoseconds() - rest) / kSecond);
    return text.size() > kZoneLength ? text.insert(text.size() - kZoneLength, fraction) : text;
}

std::string TimeOrNever(std::int64_t secondsSince1970)
{
    return secondsSince1970 == 0 ? "never" : TimeText(secondsSince1970);
}

std::int64_t WholeSeconds(const Core::Time& time)
{
    return static_cast<std::int64_t>(std::floor(time.AsDouble()));
}

} // namespace Faultkeeper::Apps
