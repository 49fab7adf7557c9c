#include <Core/Time.h>

#include <algorithm>
#include <limits>
#include <mutex>

namespace Core
{

namespace
{
constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kEarliest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kNanoseconds = 1000000000; // in a second

/// Hands out numbers that only go up.
class Sequence
{
public:
    std::int64_t NextFrom(std::int64_t wanted)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_last = wanted > m_last ? wanted : m_last == kLatest ? kLatest : m_last + 1;
        return m_last;
    }

    void StayAbove(std::int64_t floor)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_last = std::max(m_last, floor);
    }

private:
    std::mutex m_mutex;
    std::int64_t m_last = 0; // the zero time stands for "never", so the first one is later
};

Sequence& Times()
{
    static Sequence times;
    return times;
}
} // namespace

Time::Time(std::int64_t seconds)
    : Time(Since1970(seconds > kLatest / kNanoseconds     ? kLatest
                     : seconds < kEarliest / kNanoseconds ? kEarliest
                                                          : seconds * kNanoseconds))
{
}

Time Time::Now()
{
    const auto clock = std::chrono::system_clock::now().time_since_epoch();
    return FromNanoseconds(Times().NextFrom(std::chrono::duration_cast<Since1970>(clock).count()));
}

void Time::NotBefore(const Time& earliest)
{
    Times().StayAbove(earliest.Nanoseconds());
}

double Time::AsDouble() const
{
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(Elapsed());
    return static_cast<double>(microseconds.count()) / 1e6;
}

} // namespace Core
