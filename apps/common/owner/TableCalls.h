#ifndef FAULTKEEPER_APPS_TABLECALLS_H
#define FAULTKEEPER_APPS_TABLECALLS_H

#include <Faultkeeper/StatusTable.h>

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// The only place in the programs that calls shm*, sem* and ftok: a look at table and lock from outside,
/// without making either of them, without printing, and without the library's five hasty attempts.
///
/// Failure: false or -1, with errno as the system left it.
namespace Faultkeeper::Apps
{

/// Result of one attempt to take the lock.
enum ELockAttempt : int
{
    elaTaken,
    elaBusy,
    elaFailed,
};

/// What the system knows of a segment.
struct SSegmentFacts
{
    uid_t user = 0;
    gid_t group = 0;
    unsigned mode = 0; ///< permission bits
    std::size_t bytes = 0;
    unsigned long attachments = 0; ///< by all processes
    std::int64_t changed = 0;      ///< when it was made or confirmed, in seconds since 1970
};

/// Key of table and lock of the working directory.
bool TableKey(key_t& key);

/// When the working directory was made, in seconds since 1970; false if the file system does not know.
bool DirectoryBirth(std::int64_t& seconds);

/// Segment and semaphore set under a key, without asking for any permission; -1 if there is none.
int FindSegment(key_t key);
int FindSemaphore(key_t key);

/// May this process use them as a view would? errno tells why not: EACCES, or EINVAL for a segment that is
/// too small or a set without semaphores.
bool SegmentUsable(key_t key);
bool SemaphoreUsable(key_t key);

bool ReadSegmentFacts(int segment, SSegmentFacts& facts);
/// Confirms a segment: nothing changes but SSegmentFacts::changed, which is now. For its user only.
bool ConfirmSegment(int segment);
/// The same user from the list that everybody may read.
bool SegmentUser(int segment, uid_t& user);

/// One attempt without waiting. The lock goes back by itself if the process ends.
ELockAttempt TryLock(int semaphore);
bool Unlock(int semaphore);
/// Value of the lock: 0 taken or without an owner, 1 free, above 1 a surplus. -1 if it cannot be read.
int LockValue(int semaphore);
/// The process that operated on the lock last, also by ending; 0 if none has, -1 if it cannot be
/// told.
pid_t LastLocker(int semaphore);

/// When somebody operated on the lock last, also by ending, in seconds since 1970; 0 if nobody has or it
/// cannot be told.
std::int64_t LockUsed(int semaphore);

/// When the lock was made, in seconds since 1970; 0 if it cannot be told.
std::int64_t LockMade(int semaphore);

/// How many semaphores the set has: 1 if it is a lock; 0 if it cannot be told.
unsigned long LockCount(int semaphore);

/// Takes the lock's value down to 0 for good, without waiting: to be done before an owner makes the lock
/// available. What a killed owner has left would come on top of that and let two processes in at once.
/// @return by how much
int TakeDownLock(int semaphore);

/// Copies the table while the lock is held by the caller.
bool CopyTable(int segment, SStatusTable& table);

bool RemoveSegment(int segment);
bool RemoveSemaphore(int semaphore);

/// Makes a semaphore set and a segment that nobody else can have made: both fail if there is one under the
/// key.
int ClaimSemaphore(key_t key);
int ClaimSegment(key_t key);

/// Does the process run? One that has ended and not been collected by its parent does not.
bool ProcessRuns(pid_t process);

/// Name of a user, or the number as text if there is no name.
std::string UserName(uid_t user);

} // namespace Faultkeeper::Apps

#endif
