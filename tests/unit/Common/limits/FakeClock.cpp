#include "unit/Common/limits/FakeClock.h"

#include <dlfcn.h>

#include <ctime>

namespace
{

struct SClock
{
    bool faked = false;
    std::int64_t seconds = 0;
    long nanoseconds = 0;
    long readings = 0;
};

SClock& Clock()
{
    static SClock clock;
    return clock;
}

// Where times have 64 bits though words have 32, the headers give these functions other names.
constexpr bool kOtherNames = sizeof(std::time_t) > sizeof(long);

typedef int TClockGettime(clockid_t, timespec*);

} // namespace

FakeClock::~FakeClock()
{
    Clock().faked = false;
}

void FakeClock::Set(std::int64_t seconds, long nanoseconds)
{
    if (!Clock().faked)
        Clock().readings = 0;
    Clock().faked = true;
    Clock().seconds = seconds;
    Clock().nanoseconds = nanoseconds;
}

std::int64_t FakeClock::Seconds()
{
    return Clock().seconds;
}

long FakeClock::Readings()
{
    return Clock().readings;
}

// Names and parameters are the system's. The executable's definitions win over the C library's.
extern "C"
{

    int clock_gettime(clockid_t clock, timespec* time) noexcept
    {
        static TClockGettime* const original = reinterpret_cast<TClockGettime*>(
            dlsym(RTLD_NEXT, kOtherNames ? "__clock_gettime64" : "clock_gettime"));
        if (!Clock().faked || clock != CLOCK_REALTIME)
            return original(clock, time);
        ++Clock().readings;
        time->tv_sec = static_cast<std::time_t>(Clock().seconds);
        time->tv_nsec = Clock().nanoseconds;
        return 0;
    }

    std::time_t time(std::time_t* out) noexcept
    {
        timespec now = {};
        clock_gettime(CLOCK_REALTIME, &now);
        if (out != nullptr)
            *out = now.tv_sec;
        return now.tv_sec;
    }

} // extern "C"
