#include "common/owner/OwnerClaim.h"

#include "common/owner/TableCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>
#include <thread>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kFile = "faultkeeper.owner";
constexpr mode_t kMode = 0600; // whoever may open it can hold it
constexpr int kTries = 20;
constexpr std::chrono::milliseconds kBetweenTries(50);
constexpr std::size_t kMostBytes = 100;

/// What the file says.
struct SClaim
{
    pid_t process = 0;
    int semaphore = -1;
    std::int64_t made = 0; // when the semaphore set was: numbers are given again after a restart

    bool Means(int lock) const { return semaphore == lock && made == LockMade(lock); }

    /// As it stands behind the process; empty if nothing is marked.
    std::string Mark() const
    {
        return semaphore == -1 ? "" : " " + std::to_string(semaphore) + " " + std::to_string(made);
    }
};

SClaim Read(int descriptor)
{
    char bytes[kMostBytes];
    const ssize_t count = pread(descriptor, bytes, sizeof bytes, 0);
    std::istringstream text(std::string(bytes, count > 0 ? static_cast<std::size_t>(count) : 0));
    SClaim claim;
    if (!(text >> claim.process))
        claim.process = 0;
    if (!(text >> claim.semaphore >> claim.made))
        claim.semaphore = -1;
    return claim;
}

/// In a directory that everybody may write to, somebody else may have put something under the name.
bool Trusted(int descriptor)
{
    struct stat file = {};
    struct stat directory = {};
    return fstat(descriptor, &file) == 0 && stat(".", &directory) == 0 && S_ISREG(file.st_mode) &&
           (file.st_uid == geteuid() || file.st_uid == directory.st_uid);
}

/// @return -1 if it is not to be had
int OpenFile(int flags)
{
    const int descriptor = open(kFile, flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kMode);
    if (descriptor == -1 || Trusted(descriptor))
        return descriptor;
    close(descriptor);
    return -1;
}
} // namespace

COwnerClaim::~COwnerClaim()
{
    if (m_descriptor != -1)
        close(m_descriptor);
}

bool COwnerClaim::Take()
{
    m_descriptor = OpenFile(O_RDWR | O_CREAT);
    m_file = m_descriptor != -1;
    if (!m_file)
        m_descriptor = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int attempt = 1; !TryTake(); ++attempt)
    {
        if (attempt == kTries)
            return false;
        std::this_thread::sleep_for(kBetweenTries);
    }
    Write(m_file ? Read(m_descriptor).Mark() : std::string());
    return true;
}

// What may not be opened, or lies where nothing can be locked, is no reason not to start.
bool COwnerClaim::TryTake() const
{
    return flock(m_descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

pid_t COwnerClaim::Holder() const
{
    return m_file ? Read(m_descriptor).process : 0;
}

void COwnerClaim::Mark()
{
    key_t key = -1;
    SClaim claim;
    claim.semaphore = TableKey(key) ? FindSemaphore(key) : -1;
    claim.made = LockMade(claim.semaphore);
    Write(claim.Mark());
}

void COwnerClaim::Unmark()
{
    Write(std::string());
}

// A full disk takes nothing; then displays can tell less, and that is all.
void COwnerClaim::Write(const std::string& mark) const
{
    if (!m_file)
        return;
    const std::string text = std::to_string(getpid()) + mark + "\n";
    const bool written = ftruncate(m_descriptor, 0) == 0 && pwrite(m_descriptor, text.data(), text.size(),
                                                                   0) == static_cast<ssize_t>(text.size());
    static_cast<void>(written);
}

bool OwnerClaimLeft(int semaphore)
{
    const int descriptor = OpenFile(O_RDONLY);
    if (descriptor == -1)
        return false;
    // Shared, so that those who look do not see each other; an owner that starts just now tries again.
    const bool isFree = flock(descriptor, LOCK_SH | LOCK_NB) == 0;
    const bool left = isFree && Read(descriptor).Means(semaphore);
    close(descriptor);
    return left;
}

bool OwnerClaimMade()
{
    return access(kFile, F_OK) == 0;
}

} // namespace Faultkeeper::Apps
