#ifndef FAULTKEEPER_COMMON_VIEW_TABLESIGNAL_H
#define FAULTKEEPER_COMMON_VIEW_TABLESIGNAL_H

#include <Faultkeeper/StatusTable.h>

#include <cstdint>

/// How displays learn of a change without asking again and again. Every change of the table adds one to a
/// word in it that means nothing else, the type word of the header's last raise time; who waits sleeps in the
/// system on that word. Displays that do not know of it go on polling.
namespace Faultkeeper
{
namespace TableSignal
{

/// How often the table has changed since it was filled with zeros, modulo 2^32.
std::uint32_t Changes(const SStatusTable& table);

/// Counts one change. Under the table's lock.
void Count(SStatusTable& table);

/// Wakes everybody who waits. Best after the lock has been given back, because they are going to take it.
void Wake(SStatusTable& table);

/// Sleeps until the table has been counted on from `changes` or the time is over, or for any other reason.
/// @param timeoutMilliseconds  negative: without end
/// @return false if the time is over or a signal was handled
bool Sleep(SStatusTable& table, std::uint32_t changes, int timeoutMilliseconds);

} // namespace TableSignal
} // namespace Faultkeeper

#endif
