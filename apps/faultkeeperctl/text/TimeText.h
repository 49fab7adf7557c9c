#ifndef FAULTKEEPERCTL_TIMETEXT_H
#define FAULTKEEPERCTL_TIMETEXT_H

#include <cstdint>
#include <string>

namespace Core
{
class Time;
}

namespace Faultkeeper::Apps
{

/// Local time with its distance from UTC: "2026-03-01T17:05:09+01:00".
std::string TimeText(std::int64_t secondsSince1970);

/// The same with a fraction: "2026-03-01T17:05:09.250+01:00".
/// @param digits  of the fraction, 1 to 9; the rest is cut off
std::string ExactTimeText(const Core::Time& time, int digits);

/// The same as TimeText, or "never" for 0, which stands for a time that was not recorded.
std::string TimeOrNever(std::int64_t secondsSince1970);

/// Whole seconds, rounded down.
std::int64_t WholeSeconds(const Core::Time& time);

} // namespace Faultkeeper::Apps

#endif
