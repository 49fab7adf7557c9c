#include <Core/Time.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <limits>
#include <mutex>

namespace Core
{

/// Records with times in them are read by processes built at other times.
struct TimeLayout
{
    static_assert(offsetof(Time, m_type) == 0 && offsetof(Time, m_nanoseconds) == 4);
};

namespace
{

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
constexpr std::int64_t kNanosecondsPerMicrosecond = 1000;
constexpr double kMicrosecondsPerSecond = 1e6;
constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kEarliest = std::numeric_limits<std::int64_t>::min();

std::mutex lastMutex;
std::int64_t lastNanoseconds = 0; // what Now must exceed: zero itself stands for "never"

std::int64_t Saturated(std::int64_t seconds)
{
    if (seconds > kLatest / kNanosecondsPerSecond)
        return kLatest;
    if (seconds < kEarliest / kNanosecondsPerSecond)
        return kEarliest;
    return seconds * kNanosecondsPerSecond;
}

std::int64_t ClockNanoseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now); // cannot fail: the clock exists and the address is good
    const std::int64_t whole = Saturated(now.tv_sec);
    const std::int64_t part = now.tv_nsec;
    return whole > kLatest - part ? kLatest : whole + part;
}

} // namespace

Time::Time(std::int64_t seconds)
{
    const std::int64_t nanoseconds = Saturated(seconds);
    std::memcpy(m_nanoseconds, &nanoseconds, sizeof(m_nanoseconds));
}

Time Time::FromNanoseconds(std::int64_t nanoseconds)
{
    Time time;
    std::memcpy(time.m_nanoseconds, &nanoseconds, sizeof(time.m_nanoseconds));
    return time;
}

Time Time::Now()
{
    const std::lock_guard<std::mutex> lock(lastMutex);
    const std::int64_t next = lastNanoseconds == kLatest ? kLatest : lastNanoseconds + 1;
    lastNanoseconds = std::max(ClockNanoseconds(), next);
    return FromNanoseconds(lastNanoseconds);
}

void Time::NotBefore(const Time& earliest)
{
    const std::lock_guard<std::mutex> lock(lastMutex);
    lastNanoseconds = std::max(lastNanoseconds, earliest.Nanoseconds());
}

double Time::AsDouble() const
{
    const std::int64_t wholeMicroseconds = Nanoseconds() / kNanosecondsPerMicrosecond;
    return static_cast<double>(wholeMicroseconds) / kMicrosecondsPerSecond;
}

} // namespace Core
