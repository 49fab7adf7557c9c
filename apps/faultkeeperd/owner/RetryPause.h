#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_RETRYPAUSE_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_RETRYPAUSE_H

#include <chrono>

namespace Faultkeeper::Apps
{

/// When to try again what did not succeed: pauses that double from 1 ms up to 250 ms.
///
/// Sleeps never; the caller waits for other things meanwhile. Readers hold the table's lock for one copy, so
/// the first pauses are short; a holder that was stopped costs four tries a second.
class CRetryPause
{
public:
    using Clock = std::chrono::steady_clock; // the wall clock is set by satellite

    static constexpr std::chrono::milliseconds kShortest{1};
    static constexpr std::chrono::milliseconds kLongest{250};

    /// Nothing has failed: due at once.
    CRetryPause() : m_pause(0) {}

    /// A try has failed: begins the next, longer pause.
    void Failed(Clock::time_point now);
    /// A try has succeeded: the next failure begins with the shortest pause.
    void Succeeded() { m_pause = std::chrono::milliseconds(0); }

    /// May it be tried now?
    bool Due(Clock::time_point now) const;
    /// For poll(2): milliseconds until it may be tried, rounded up; 0 if it may be now.
    int MillisecondsLeft(Clock::time_point now) const;

private:
    std::chrono::milliseconds m_pause; // zero: no failure since the last success
    Clock::time_point m_due;
};

} // namespace Faultkeeper::Apps

#endif
