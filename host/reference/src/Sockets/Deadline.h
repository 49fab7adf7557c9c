#ifndef SOCKETS_DEADLINE_H
#define SOCKETS_DEADLINE_H

#include <chrono>

/// The end of a wait, by a clock that nobody sets.
class Deadline
{
public:
    /// @param timeoutMilliseconds  from now; negative: never
    explicit Deadline(int timeoutMilliseconds)
        : m_never(timeoutMilliseconds < 0),
          m_end(Clock::now() + std::chrono::milliseconds(timeoutMilliseconds))
    {
    }

    /// As poll(2) takes it: 0 when the time is over, -1 without limit.
    int MillisecondsLeft() const
    {
        if (m_never)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()).count();
        return left > 0 ? static_cast<int>(left) : 0;
    }

    bool Passed() const { return MillisecondsLeft() == 0; }

private:
    using Clock = std::chrono::steady_clock;

    bool m_never;
    Clock::time_point m_end;
};

#endif
