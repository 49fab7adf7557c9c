#ifndef FAULTKEEPERCTL_TYPEDTIME_H
#define FAULTKEEPERCTL_TYPEDTIME_H

#include <cstdint>
#include <string>

namespace Faultkeeper::Apps
{

/// A time as typed, which lasts as long as its last digit: "2026-03-01T17:05" is a whole minute. In
/// nanoseconds since 1970.
struct STypedTime
{
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// Reads a time: as this program prints it, "2026-03-01T17:05:09.25+01:00", or less of it (without the zone
/// it is local time), or how long ago it was: "90s", "10m", "2h", "1d", "1h30m", or "now".
/// @param now      nanoseconds since 1970
/// @param time     untouched if the result is false
/// @param problem  replaced if the result is false
bool ParseTime(const std::string& typed, std::int64_t now, STypedTime& time, std::string& problem);

/// The same.
/// @throws CFailure (epsUsage) if it cannot be read
STypedTime TimeTyped(const std::string& typed, std::int64_t now);

/// @throws CFailure (epsUsage) if the time is later than the latest one that has come
void RequirePast(const STypedTime& time, std::int64_t latest);

} // namespace Faultkeeper::Apps

#endif
