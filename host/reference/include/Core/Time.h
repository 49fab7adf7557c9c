#ifndef CORE_TIME_H
#define CORE_TIME_H

#include <Core/Export.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Core
{

/// A moment, good to the nanosecond, from the year 1677 to 2262.
///
/// Processes share it by value in memory, so its twelve bytes are fixed: bytes 0..3 hold a type word, which
/// is 0 here and takes no part in any comparison, bytes 4..11 hold the nanoseconds since 1970 (UTC) as one
/// signed 64-bit number in the machine's byte order. The number is kept as bytes because it lies on a 4-byte
/// boundary.
///
/// Value type: copying it with memcpy is a copy.
/// Threads: Now and NotBefore may be called from any thread.
class CORE_EXPORT Time
{
public:
    /// 1970 began. All twelve bytes are zero.
    Time() = default;

    /// @param seconds  since 1970; what lies outside the range of the class becomes its first or last moment
    explicit Time(std::int64_t seconds);

    /// @param nanoseconds  since 1970
    static Time FromNanoseconds(std::int64_t nanoseconds);

    /// The clock's time, except that it is always later than anything that Now has returned or NotBefore has
    /// been given in this process before, and than 1970: a clock that stands still or is set back costs one
    /// nanosecond a call. Only the last moment of the class, than which none is later, is returned again.
    static Time Now();

    /// From here on Now returns later times than `earliest`; the last moment of the class if that is it. An
    /// `earliest` in the past changes nothing.
    static void NotBefore(const Time& earliest);

    /// Nanoseconds since 1970.
    std::int64_t Nanoseconds() const
    {
        std::int64_t nanoseconds = 0;
        std::memcpy(&nanoseconds, m_nanoseconds, sizeof(nanoseconds));
        return nanoseconds;
    }

    /// Seconds since 1970, cut towards zero to whole microseconds.
    double AsDouble() const;

    /// The same moment? Type words may differ.
    bool operator==(const Time& other) const { return Nanoseconds() == other.Nanoseconds(); }
    /// Different moments?
    bool operator!=(const Time& other) const { return Nanoseconds() != other.Nanoseconds(); }
    /// Earlier than `other`?
    bool operator<(const Time& other) const { return Nanoseconds() < other.Nanoseconds(); }
    /// Later than `other`?
    bool operator>(const Time& other) const { return Nanoseconds() > other.Nanoseconds(); }
    /// Earlier than `other`, or the same moment?
    bool operator<=(const Time& other) const { return Nanoseconds() <= other.Nanoseconds(); }
    /// Later than `other`, or the same moment?
    bool operator>=(const Time& other) const { return Nanoseconds() >= other.Nanoseconds(); }

private:
    friend struct TimeLayout; // pins the offsets, see Time.cpp

    [[maybe_unused]] std::uint32_t m_type = 0;
    unsigned char m_nanoseconds[sizeof(std::int64_t)] = {};
};

static_assert(sizeof(Time) == 12 && alignof(Time) == 4, "part of records shared between processes");
static_assert(std::is_trivially_copyable<Time>::value, "copied with memcpy between processes");
static_assert(std::is_standard_layout<Time>::value, "records that hold it are measured with offsetof");

} // namespace Core

#endif
