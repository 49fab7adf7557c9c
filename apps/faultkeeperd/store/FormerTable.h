#ifndef FAULTKEEPER_FAULTKEEPERD_STORE_FORMERTABLE_H
#define FAULTKEEPER_FAULTKEEPERD_STORE_FORMERTABLE_H

#include <Faultkeeper/ErrorEntry.h>
#include <Faultkeeper/StatusTable.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

struct SSegmentFacts;

/// The shared table of the working directory as an owner before this one has left it. To be read before a
/// creating view fills the table with zeros; nobody writes it then. Null if there is no table of ours, or if
/// it may not be read.
///
/// Tables are found by a key that is made of 16 bits of the directory's number, and a new directory can get
/// that of one that is gone: a table that is older than the directory, and was not confirmed in it, is not
/// read.
std::unique_ptr<SStatusTable> FormerTable();

/// Is there shared memory under the working directory's key that is no table, or a semaphore set that is no
/// lock of one? It is another program's, then: keys are made of 16 bits of a directory's number. A lock is
/// one semaphore.
bool ForeignSegment();
bool ForeignLock();

/// Is there shared memory under that key that this process may not write, or a semaphore set that it may not
/// use as a lock? It is another user's.
bool RefusedSegment();
bool RefusedLock();

/// Was that segment last confirmed before the directory's birth, in seconds since 1970, and not in this
/// directory? Then it is not the directory's.
bool MadeBefore(int segment, const SSegmentFacts& facts, std::int64_t birth);

/// From here on the table of the working directory counts as this directory's, however old it is and however
/// the clock is set: its number is left in a file. For its owner.
void ConfirmTable();

/// The latest time that a table of the working directory can have been written with. A clock that is set back
/// while the machine runs brings times into the future: twenty years allow for a receiver that has lost count
/// of its weeks, if the table was confirmed here; of another one more than a day is too much. Beyond what a
/// time can hold it is the latest there is.
Core::Time LatestPossible(const Core::Time& now = Core::Time::Now());

/// Those records of a table that make sense: of a known error, the first of each, with no bits set that mean
/// nothing, and with times that are not before 1970 nor after `latest`.
std::vector<SErrorEntry> UsableRecords(const SStatusTable& table, const CErrorDatabase& database,
                                       const Core::Time& latest);

} // namespace Faultkeeper::Apps

#endif
