#include "common/owner/TableCalls.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kTableMode = 0644; // as views ask for
constexpr int kSemaphoreMode = 0666;
constexpr int kPrivateMode = 0600;
constexpr std::uint32_t kTickNanoseconds = 20000000; // of a clock by which a system dates things, at most

/// Emulators of 32-bit machines have been seen to write the seconds where the upper half of a time belongs,
/// which is 0 until the year 2106.
std::int64_t Seconds(std::int64_t time)
{
    constexpr int kHalf = 32;
    return (time >> kHalf) > 0 ? time >> kHalf : time;
}

bool Operate(int semaphore, short change, short flags)
{
    struct sembuf operation = {};
    operation.sem_op = change;
    operation.sem_flg = flags;
    return semop(semaphore, &operation, 1) == 0;
}

/// All zero if it may not be read.
struct semid_ds Description(int semaphore)
{
    struct semid_ds description = {};
    union
    {
        int val;
        struct semid_ds* buf;
    } argument = {}; // passed as the union that the call takes: some machines pass those by address
    argument.buf = &description;
    return semctl(semaphore, 0, IPC_STAT, argument) == 0 ? description : semid_ds();
}

// The letter behind the name in parentheses, which may itself hold parentheses; 0 if the process is not
// listed.
char ProcessState(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(") ");
    return name == std::string::npos || name + 2 >= text.size() ? '\0' : text[name + 2];
}
} // namespace

bool TableKey(key_t& key)
{
    key = ftok(".", kStatusTableProject);
    return key != -1;
}

bool DirectoryBirth(std::int64_t& seconds)
{
    struct statx facts = {};
    if (statx(AT_FDCWD, ".", 0, STATX_BTIME, &facts) != 0 || (facts.stx_mask & STATX_BTIME) == 0)
        return false;
    seconds = facts.stx_btime.tv_sec - (facts.stx_btime.tv_nsec < kTickNanoseconds ? 1 : 0);
    return true;
}

int FindSegment(key_t key)
{
    return shmget(key, 0, 0);
}

int FindSemaphore(key_t key)
{
    return semget(key, 0, 0);
}

bool SegmentUsable(key_t key)
{
    return shmget(key, kStatusTableBytes, kTableMode) != -1;
}

bool SemaphoreUsable(key_t key)
{
    return semget(key, 1, kSemaphoreMode) != -1;
}

bool ReadSegmentFacts(int segment, SSegmentFacts& facts)
{
    struct shmid_ds description = {};
    if (shmctl(segment, IPC_STAT, &description) == -1)
        return false;
    facts.user = description.shm_perm.uid;
    facts.group = description.shm_perm.gid;
    facts.mode = description.shm_perm.mode & 0777U;
    facts.bytes = description.shm_segsz;
    facts.attachments = static_cast<unsigned long>(description.shm_nattch);
    facts.changed = Seconds(description.shm_ctime);
    return true;
}

bool ConfirmSegment(int segment)
{
    struct shmid_ds description = {};
    return shmctl(segment, IPC_STAT, &description) == 0 && shmctl(segment, IPC_SET, &description) == 0;
}

bool SegmentUser(int segment, uid_t& user)
{
    std::ifstream file("/proc/sysvipc/shm");
    std::string line;
    while (std::getline(file, line))
    {
        std::istringstream fields(line);
        std::string key, mode, bytes, creator, last, attachments;
        int id = -1;
        uid_t owner = 0;
        if (fields >> key >> id >> mode >> bytes >> creator >> last >> attachments >> owner && id == segment)
        {
            user = owner;
            return true;
        }
    }
    return false;
}

ELockAttempt TryLock(int semaphore)
{
    if (Operate(semaphore, -1, SEM_UNDO | IPC_NOWAIT))
        return elaTaken;
    return errno == EAGAIN || errno == EINTR ? elaBusy : elaFailed;
}

bool Unlock(int semaphore)
{
    return Operate(semaphore, 1, SEM_UNDO);
}

int LockValue(int semaphore)
{
    return semctl(semaphore, 0, GETVAL);
}

pid_t LastLocker(int semaphore)
{
    return semctl(semaphore, 0, GETPID);
}

std::int64_t LockUsed(int semaphore)
{
    return Seconds(Description(semaphore).sem_otime);
}

std::int64_t LockMade(int semaphore)
{
    return Seconds(Description(semaphore).sem_ctime);
}

unsigned long LockCount(int semaphore)
{
    return static_cast<unsigned long>(Description(semaphore).sem_nsems);
}

int TakeDownLock(int semaphore)
{
    // Not by SETVAL, which would also forget what the system owes to processes that hold the lock.
    int taken = 0;
    while (Operate(semaphore, -1, IPC_NOWAIT))
        ++taken;
    return taken;
}

bool CopyTable(int segment, SStatusTable& table)
{
    const void* const address = shmat(segment, nullptr, SHM_RDONLY);
    if (address == reinterpret_cast<const void*>(-1))
        return false;
    std::memcpy(&table, address, sizeof table);
    return shmdt(address) == 0;
}

bool RemoveSegment(int segment)
{
    return shmctl(segment, IPC_RMID, nullptr) == 0;
}

bool RemoveSemaphore(int semaphore)
{
    return semctl(semaphore, 0, IPC_RMID) == 0;
}

int ClaimSemaphore(key_t key)
{
    return semget(key, 1, IPC_CREAT | IPC_EXCL | kPrivateMode);
}

int ClaimSegment(key_t key)
{
    return shmget(key, kStatusTableBytes, IPC_CREAT | IPC_EXCL | kPrivateMode);
}

bool ProcessRuns(pid_t process)
{
    if (process <= 0 || (kill(process, 0) != 0 && errno == ESRCH))
        return false;
    const char state = ProcessState(process);
    return state != 'Z' && state != 'X';
}

std::string UserName(uid_t user)
{
    const struct passwd* const entry = getpwuid(user);
    return entry == nullptr ? std::to_string(user) : entry->pw_name;
}

} // namespace Faultkeeper::Apps
