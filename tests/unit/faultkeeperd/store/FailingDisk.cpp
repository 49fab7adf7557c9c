#include "FailingDisk.h"

#include <cerrno>
#include <dlfcn.h>
#include <sys/types.h>

namespace FailingDisk
{

namespace
{
int s_writes = 0;
int s_goodWrites = -1; // negative: all are good
int s_failures = 0;
int s_problem = 0;
} // namespace

void RefuseAfter(int writes, int problem, int failures)
{
    s_writes = 0;
    s_goodWrites = writes;
    s_failures = failures;
    s_problem = problem;
}

void Mend()
{
    RefuseAfter(-1, 0, 0);
}

int Writes()
{
    return s_writes;
}

/// Counts a write. @return whether it is refused; errno tells why
static bool Refused()
{
    ++s_writes;
    if (s_goodWrites < 0 || s_writes <= s_goodWrites || s_failures == 0)
        return false;
    if (s_failures > 0)
        --s_failures;
    errno = s_problem;
    return true;
}

template <typename Function> static Function Next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace FailingDisk

using FailingDisk::Next;
using FailingDisk::Refused;

extern "C"
{
    ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset)
    {
        static const auto next = Next<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
        return Refused() ? -1 : next(file, bytes, size, offset);
    }

    int ftruncate64(int file, off64_t size) noexcept
    {
        static const auto next = Next<int (*)(int, off64_t)>("ftruncate64");
        return Refused() ? -1 : next(file, size);
    }

    // No flush goes on to the medium: power does not fail here, and the wait would be for nothing.
    int fdatasync(int)
    {
        return Refused() ? -1 : 0;
    }

    int fsync(int)
    {
        return Refused() ? -1 : 0;
    }
}
