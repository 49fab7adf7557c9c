#pragma once

#include <chrono>

namespace Benchmarks
{

/// Measures what lies between its making and Seconds().
class CStopwatch
{
public:
    CStopwatch() : m_begin(Clock::now()) {}

    double Seconds() const { return std::chrono::duration<double>(Clock::now() - m_begin).count(); }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point m_begin;
};

} // namespace Benchmarks
