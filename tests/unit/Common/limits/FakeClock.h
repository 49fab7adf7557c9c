#pragma once

#include <cstdint>

/// Stands between the program and the system's clock: a test program that compiles FakeClock.cpp in gets the
/// time of day that it asks for. Other clocks go on as they are. Threads: one.
class FakeClock
{
public:
    /// The clock stands still from here on.
    explicit FakeClock(std::int64_t seconds) { Set(seconds); }
    /// The system's clock is back.
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    /// @param seconds  since 1970
    static void Set(std::int64_t seconds, long nanoseconds = 0);

    /// The clock's seconds since 1970.
    static std::int64_t Seconds();

    /// How often the time of day was asked for since the clock stands.
    static long Readings();
};
