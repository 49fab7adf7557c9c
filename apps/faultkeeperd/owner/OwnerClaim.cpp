#include "faultkeeperd/owner/OwnerClaim.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kTries = 20;
constexpr std::chrono::milliseconds kBetweenTries(50);
} // namespace

COwnerClaim::~COwnerClaim()
{
    if (m_directory != -1)
        close(m_directory);
}

bool COwnerClaim::Take()
{
    m_directory = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int attempt = 1; !TryTake(); ++attempt)
    {
        if (attempt == kTries)
            return false;
        std::this_thread::sleep_for(kBetweenTries);
    }
    return true;
}

// A directory that may not be opened, or lies where nothing can be locked, is no reason not to start.
bool COwnerClaim::TryTake() const
{
    return flock(m_directory, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

} // namespace Faultkeeper::Apps
