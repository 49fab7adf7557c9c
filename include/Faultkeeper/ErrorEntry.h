#ifndef FAULTKEEPER_ERRORENTRY_H
#define FAULTKEEPER_ERRORENTRY_H

#include <Core/Time.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Faultkeeper
{

/// Bit of SErrorEntry::flags that is set while the error is raised.
constexpr std::uint16_t kRaisedFlag = 1;

/// One error's status in the shared table. Processes built at different times read each other's records, so
/// size and offsets are fixed; the assertions below hold them in place. Integers are in the machine's own
/// byte order: the table never leaves the machine.
struct SErrorEntry
{
    std::int32_t problemCode = 0; ///< module | sub-module | problem
    std::int16_t problemType = 0; ///< failure mode, 0..21
    std::uint16_t flags = 0;      ///< kRaisedFlag; the other bits are zero
    std::uint16_t counter1 = 0;   ///< raises so far, wraps at 65536
    std::uint16_t counter2 = 0;   ///< counts along with counter1; history lists skip records with 0 here
    Core::Time raisedTime;        ///< last raise; all zero bytes if there was none
    Core::Time clearedTime;       ///< last clear; all zero bytes if there was none
};

static_assert(sizeof(Core::Time) == 12, "a time takes 12 bytes of a record");
static_assert(sizeof(SErrorEntry) == 36, "a record takes 36 bytes");
static_assert(offsetof(SErrorEntry, problemCode) == 0, "shared layout");
static_assert(offsetof(SErrorEntry, problemType) == 4, "shared layout");
static_assert(offsetof(SErrorEntry, flags) == 6, "shared layout");
static_assert(offsetof(SErrorEntry, counter1) == 8, "shared layout");
static_assert(offsetof(SErrorEntry, counter2) == 10, "shared layout");
static_assert(offsetof(SErrorEntry, raisedTime) == 12, "shared layout");
static_assert(offsetof(SErrorEntry, clearedTime) == 24, "shared layout");
static_assert(std::is_trivially_copyable<SErrorEntry>::value, "copied with memcpy between processes");

} // namespace Faultkeeper

#endif
