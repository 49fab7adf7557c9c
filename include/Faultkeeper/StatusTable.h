#ifndef FAULTKEEPER_STATUSTABLE_H
#define FAULTKEEPER_STATUSTABLE_H

#include <Faultkeeper/ErrorEntry.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Faultkeeper
{

/// Project number that turns the working directory into the key of table and lock: ftok(".", 68).
constexpr int kStatusTableProject = 68;
/// Most errors that the table can hold.
constexpr int kStatusTableCapacity = 400;
/// Size of the shared segment.
constexpr std::size_t kStatusTableBytes = 14432;

/// What the owner says of the table as a whole.
///
/// The first four bytes of the last raise time, which mean nothing to a reader of times, go up by one with
/// every change of the table: readers that sleep (CErrorDatabaseView::WaitForChange) sleep on them.
struct SStatusHeader
{
    std::uint32_t ready = 0;  ///< 1 while the owner has declared the table ready, otherwise 0
    std::int32_t count = 0;   ///< records in use, 0..400
    Core::Time lastRaiseTime; ///< most recent raise of any error; its type word counts the table's changes
    Core::Time lastClearTime; ///< most recent clear of any error
};

/// The shared segment, byte for byte. Only the first `header.count` records mean anything.
struct SStatusTable
{
    SStatusHeader header;                      ///< bytes 0..31
    SErrorEntry records[kStatusTableCapacity]; ///< in the order of the owning database's error list
};

static_assert(sizeof(SStatusHeader) == 32, "shared layout");
static_assert(offsetof(SStatusHeader, ready) == 0, "shared layout");
static_assert(offsetof(SStatusHeader, count) == 4, "shared layout");
static_assert(offsetof(SStatusHeader, lastRaiseTime) == 8, "shared layout");
static_assert(offsetof(SStatusHeader, lastClearTime) == 20, "shared layout");
static_assert(offsetof(SStatusTable, records) == 32, "shared layout");
static_assert(sizeof(SStatusTable) == kStatusTableBytes, "the last record ends with the segment");
static_assert(std::is_trivially_copyable<SStatusTable>::value, "copied with memcpy between processes");

} // namespace Faultkeeper

#endif
