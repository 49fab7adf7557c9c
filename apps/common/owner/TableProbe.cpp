#include "common/owner/TableProbe.h"

#include "common/owner/OwnerClaim.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kLockAttempts = 250;
constexpr std::chrono::milliseconds kLockPause(2);
constexpr int kLooks = 5;

// An owner that is starting, or a display that has just ended, can look like no owner for a moment.
template <typename Condition> bool Lasts(const Condition& condition)
{
    for (int look = 1; condition(); ++look)
    {
        if (look == kLooks)
            return true;
        std::this_thread::sleep_for(kLockPause);
    }
    return false;
}

// Value and process can't be read at once: only if both are still the same do they belong together.
bool LockLooksLeftOver(int semaphore)
{
    if (LockValue(semaphore) != 0)
        return false;
    const pid_t last = LastLocker(semaphore);
    return last > 0 && !ProcessRuns(last) && LockValue(semaphore) == 0 && LastLocker(semaphore) == last;
}

bool OwnerHasEnded(int semaphore)
{
    return Lasts([semaphore] { return LockLooksLeftOver(semaphore); });
}

ETableState StateOfFailure(STableFacts& facts)
{
    facts.error = errno;
    switch (facts.error)
    {
    case ENOENT:
        return etsAbsent;
    case EACCES:
    case EPERM:
        return etsRefused;
    case EINVAL:
        return etsForeign;
    default:
        return etsFailed;
    }
}

// Tries for the lock; etsReady stands for "taken".
ETableState TakeLock(STableFacts& facts)
{
    for (int attempt = 0; attempt < kLockAttempts; ++attempt)
    {
        const ELockAttempt result = TryLock(facts.semaphore);
        if (result == elaTaken)
            return etsReady;
        if (result == elaFailed)
            return StateOfFailure(facts);
        if (OwnerHasEnded(facts.semaphore))
            return etsOwnerGone;
        std::this_thread::sleep_for(kLockPause);
    }
    facts.holder = LastLocker(facts.semaphore);
    return facts.holder == 0 ? etsNotReady : etsBusy;
}

ETableState CopyUnderLock(STableFacts& facts)
{
    const ETableState taken = TakeLock(facts);
    if (taken != etsReady)
        return taken;
    const bool copied = CopyTable(facts.segment, facts.table);
    const ETableState failure = copied ? etsReady : StateOfFailure(facts);
    Unlock(facts.semaphore);
    if (!copied)
        return failure;
    return facts.table.header.ready == 1 ? etsReady : etsNotReady;
}

// Attached to by nobody but this process, or without a lock. Reads both anew.
bool NobodyUses(STableFacts& facts, unsigned long ownAttachments)
{
    facts.semaphore = FindSemaphore(facts.key);
    return facts.semaphore == -1 ||
           (ReadSegmentFacts(facts.segment, facts.details) && facts.details.attachments <= ownAttachments);
}

ETableState Examine(STableFacts& facts, const std::vector<int>& ownAttachments)
{
    facts.userKnown =
        ReadSegmentFacts(facts.segment, facts.details) || SegmentUser(facts.segment, facts.details.user);
    if (!SegmentUsable(facts.key))
        return StateOfFailure(facts);
    if (facts.details.bytes != kStatusTableBytes)
        return etsForeign;
    const auto own = std::count(ownAttachments.begin(), ownAttachments.end(), facts.segment);
    if (Lasts([&] { return NobodyUses(facts, static_cast<unsigned long>(own)); }))
        return etsOwnerGone;
    if (!SemaphoreUsable(facts.key))
        return StateOfFailure(facts);
    if (OwnerClaimLeft(facts.semaphore))
        return etsOwnerGone;
    return CopyUnderLock(facts);
}
} // namespace

STableFacts ProbeTable(const std::vector<int>& ownAttachments)
{
    STableFacts facts;
    if (!TableKey(facts.key))
        return facts;
    facts.segment = FindSegment(facts.key);
    if (facts.segment == -1)
        facts.state = StateOfFailure(facts);
    facts.semaphore = FindSemaphore(facts.key);
    if (facts.segment != -1)
        facts.state = Examine(facts, ownAttachments);
    if (facts.state == etsOwnerGone)
        facts.lastSeen = LockUsed(facts.semaphore); // ending, the owner gave the lock up
    return facts;
}

bool OwnerPresent(ETableState state)
{
    return state == etsBusy || state == etsNotReady || state == etsReady;
}

const char* StateName(ETableState state)
{
    switch (state)
    {
    case etsAbsent:
        return "absent";
    case etsForeign:
        return "foreign";
    case etsRefused:
        return "refused";
    case etsFailed:
        return "failed";
    case etsOwnerGone:
        return "ownerGone";
    case etsBusy:
        return "busy";
    case etsNotReady:
        return "notReady";
    case etsReady:
        break;
    }
    return "ready";
}

int RecordCount(const SStatusTable& table)
{
    return std::clamp<int>(table.header.count, 0, kStatusTableCapacity);
}

std::string Describe(const STableFacts& facts, const std::string& directory)
{
    const std::string table = "the table in " + directory;
    switch (facts.state)
    {
    case etsAbsent:
        return "no owner: there is no table in " + directory;
    case etsForeign:
        return "the shared memory under the key of " + directory + " is not a table of faults";
    case etsRefused:
        return facts.userKnown
                   ? table + " belongs to user " + UserName(facts.details.user) + ", and may not be read"
                   : table + " may not be read";
    case etsFailed:
        return "looking at " + table + " failed: " + std::strerror(facts.error);
    case etsOwnerGone:
        return "no owner: " + table + " is left over from an owner that has ended";
    case etsBusy:
        return table + " is locked by process " + std::to_string(facts.holder) + ", which does not let go";
    case etsNotReady:
        return table + " is not ready: its owner is starting or stopping";
    case etsReady:
        break;
    }
    return table + " is ready";
}

bool RemoveTable(const STableFacts& facts, std::string& problem)
{
    const bool segmentLeft = facts.segment != -1 && !RemoveSegment(facts.segment);
    const int segmentError = errno;
    const bool semaphoreLeft = facts.semaphore != -1 && !RemoveSemaphore(facts.semaphore);
    const int error = segmentLeft ? segmentError : errno;
    if (segmentLeft || semaphoreLeft)
        problem =
            std::string("cannot remove the ") + (segmentLeft ? "segment: " : "lock: ") + std::strerror(error);
    return !segmentLeft && !semaphoreLeft;
}

} // namespace Faultkeeper::Apps
