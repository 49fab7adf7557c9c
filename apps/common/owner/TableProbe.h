#ifndef FAULTKEEPER_APPS_TABLEPROBE_H
#define FAULTKEEPER_APPS_TABLEPROBE_H

#include "common/owner/TableCalls.h"

#include <Faultkeeper/StatusTable.h>

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// How things stand with the shared table of the working directory, as far as a display is concerned.
enum ETableState : int
{
    etsAbsent,    ///< nothing there
    etsForeign,   ///< something there that is no table of ours
    etsRefused,   ///< another user's
    etsFailed,    ///< the system refused for another reason
    etsOwnerGone, ///< left over: its owner has ended
    etsBusy,      ///< a process keeps the lock and does not let go
    etsNotReady,  ///< an owner is there and has not declared the table ready
    etsReady,     ///< an owner is there and the table can be read
};

/// What a look at the table found.
struct STableFacts
{
    ETableState state = etsAbsent;
    key_t key = -1;
    int segment = -1;          ///< system's number of the segment, -1 if there is none
    int semaphore = -1;        ///< of the semaphore set, likewise
    SSegmentFacts details;     ///< zero as far as they may not be read
    bool userKnown = false;    ///< is details.user the segment's user?
    int error = 0;             ///< if failed, errno
    pid_t holder = -1;         ///< if busy, the process that operated on the lock last
    std::int64_t lastSeen = 0; ///< if the owner has ended, when that was, in seconds since 1970; 0 if unknown
    SStatusTable table;        ///< copy of the table; only if ready or not ready
};

/// Looks whether there is a table and an owner, and copies the table under its lock. Makes nothing, prints
/// nothing, and leaves everything as it was.
///
/// A lock that is busy is tried again for a few hundred milliseconds. That an owner has ended shows in three
/// ways. One that claims the directory, as faultkeeperd does, is gone when its claim is free. The system
/// takes the lock away from everybody when the process that made it available ends, so a lock that cannot be
/// had, and was last touched by a process that has ended, has no owner. Nor has a segment that nobody is
/// attached to. These two are looked at several times, since an owner that is just starting passes through
/// the same states; a lock that nobody has ever touched is one that is not ready.
///
/// A lock that can be had proves no owner: whoever held it when the owner was killed gives it back as if
/// there were one. Only the claim tells then; an owner that makes none goes on counting as present until
/// nobody is attached any more.
/// @param ownAttachments  segments that this process itself has attached, once for each time: they tell of no
/// owner
STableFacts ProbeTable(const std::vector<int>& ownAttachments = {});

/// Is there an owner, as far as can be told? A lock that somebody keeps counts as one.
bool OwnerPresent(ETableState state);

/// The state in one word for programs: "absent", "foreign", "refused", "failed", "ownerGone", "busy",
/// "notReady", "ready".
const char* StateName(ETableState state);

/// Number of records in use, within what the table can hold.
int RecordCount(const SStatusTable& table);

/// The state for people: "there is no table in /run/faultkeeper".
/// @param directory  the run directory
std::string Describe(const STableFacts& facts, const std::string& directory);

/// Removes segment and semaphore set, as far as they are there.
/// @param problem  replaced if the result is false
bool RemoveTable(const STableFacts& facts, std::string& problem);

} // namespace Faultkeeper::Apps

#endif
