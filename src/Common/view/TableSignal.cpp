#include "Common/view/TableSignal.h"

#include <cerrno>
#include <limits>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Faultkeeper
{
namespace TableSignal
{

namespace
{
constexpr int kEverybody = std::numeric_limits<int>::max();
constexpr int kMillisecondsPerSecond = 1000;
constexpr long kNanosecondsPerMillisecond = 1000000;

/// As the call takes it: `long` is 32 bits wide on 32-bit machines whatever a time_t is.
struct SCallTime
{
    long seconds;
    long nanoseconds;
};

static_assert(offsetof(SStatusHeader, lastRaiseTime) % alignof(std::uint32_t) == 0,
              "one word, at one address");

std::uint32_t* Word(SStatusTable& table)
{
    return reinterpret_cast<std::uint32_t*>(&table.header.lastRaiseTime); // its first member
}
} // namespace

std::uint32_t Changes(const SStatusTable& table)
{
    return __atomic_load_n(reinterpret_cast<const std::uint32_t*>(&table.header.lastRaiseTime),
                           __ATOMIC_ACQUIRE);
}

void Count(SStatusTable& table)
{
    __atomic_fetch_add(Word(table), 1U, __ATOMIC_RELEASE);
}

void Wake(SStatusTable& table)
{
    syscall(SYS_futex, Word(table), FUTEX_WAKE, kEverybody, nullptr, nullptr, 0);
}

bool Sleep(SStatusTable& table, std::uint32_t changes, int timeoutMilliseconds)
{
    const SCallTime timeout = {timeoutMilliseconds / kMillisecondsPerSecond,
                               timeoutMilliseconds % kMillisecondsPerSecond * kNanosecondsPerMillisecond};
    const long result = syscall(SYS_futex, Word(table), FUTEX_WAIT, changes,
                                timeoutMilliseconds < 0 ? nullptr : &timeout, nullptr, 0);
    return result == 0 || errno == EAGAIN;
}

} // namespace TableSignal
} // namespace Faultkeeper
