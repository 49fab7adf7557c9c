#ifndef CONSOLE_CORE_TIME_H
#define CONSOLE_CORE_TIME_H

#include <Core/Export.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>

namespace Core
{

/// The console's own time: a point of the system's clock in the twelve bytes that processes share.
class CORE_EXPORT Time
{
public:
    typedef std::chrono::nanoseconds Since1970;

    Time() = default;
    explicit Time(std::int64_t seconds);

    static Time FromNanoseconds(std::int64_t nanoseconds) { return Time(Since1970(nanoseconds)); }
    static Time Now();
    static void NotBefore(const Time& earliest);

    std::int64_t Nanoseconds() const { return Elapsed().count(); }
    double AsDouble() const;

    friend bool operator==(const Time& left, const Time& right) { return left.Elapsed() == right.Elapsed(); }
    friend bool operator!=(const Time& left, const Time& right) { return left.Elapsed() != right.Elapsed(); }
    friend bool operator<(const Time& left, const Time& right) { return left.Elapsed() < right.Elapsed(); }
    friend bool operator>(const Time& left, const Time& right) { return left.Elapsed() > right.Elapsed(); }
    friend bool operator<=(const Time& left, const Time& right) { return left.Elapsed() <= right.Elapsed(); }
    friend bool operator>=(const Time& left, const Time& right) { return left.Elapsed() >= right.Elapsed(); }

private:
    explicit Time(Since1970 elapsed)
    {
        const std::int64_t count = elapsed.count();
        std::memcpy(m_words.data() + 1, &count, sizeof count);
    }

    Since1970 Elapsed() const
    {
        std::int64_t count = 0;
        std::memcpy(&count, m_words.data() + 1, sizeof count);
        return Since1970(count);
    }

    std::array<std::uint32_t, 3> m_words =
        {}; // what kind of time it is, always 0; then the count, as it lies in memory
};

static_assert(sizeof(Time) == 12 && alignof(Time) == 4, "records of the shared table hold times");

} // namespace Core

#endif
