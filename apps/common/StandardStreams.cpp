#include "common/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Faultkeeper::Apps
{

void OpenStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    {
        // The lowest one that is closed is the one that open gives.
        if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF && open("/dev/null", O_RDONLY) == -1)
            return;
    }
}

} // namespace Faultkeeper::Apps
