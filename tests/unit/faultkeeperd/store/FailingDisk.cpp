#include "FailingDisk.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace FailingDisk
{

namespace
{
unsigned s_kinds = 0;
int s_calls = 0;
int s_reads = 0;
int s_goodCalls = -1; // negative: all are good
int s_failures = 0;
int s_problem = 0;
} // namespace

void RefuseAfter(int calls, int problem, int failures, unsigned kinds)
{
    s_kinds = kinds;
    s_calls = 0;
    s_reads = 0;
    s_goodCalls = calls;
    s_failures = failures;
    s_problem = problem;
}

void Mend()
{
    RefuseAfter(-1, 0, 0);
}

int Calls()
{
    return s_calls;
}

int Reads()
{
    return s_reads;
}

/// Counts a call. @return whether it is refused; errno tells why
static bool Refused(unsigned kinds)
{
    s_reads += (kinds & ekRead) != 0 ? 1 : 0;
    if ((kinds & s_kinds) == 0)
        return false;
    ++s_calls;
    if (s_goodCalls < 0 || s_calls <= s_goodCalls || s_failures == 0)
        return false;
    if (s_failures > 0)
        --s_failures;
    errno = s_problem;
    return true;
}

static unsigned KindsOfOpening(int flags)
{
    const bool toWrite = (flags & (O_WRONLY | O_RDWR | O_CREAT)) != 0;
    return ekOpen | (toWrite ? ekOpenToWrite : 0U);
}

template <typename Function> static Function Next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace FailingDisk

using namespace FailingDisk;

extern "C"
{
    int open64(const char* path, int flags, ...)
    {
        static const auto next = Next<int (*)(const char*, int, ...)>("open64");
        va_list rest;
        va_start(rest, flags);
        const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0U;
        va_end(rest);
        return Refused(KindsOfOpening(flags)) ? -1 : next(path, flags, mode);
    }

    int fcntl64(int file, int command, ...)
    {
        static const auto next = Next<int (*)(int, int, ...)>("fcntl64");
        va_list rest;
        va_start(rest, command);
        void* const argument = va_arg(rest, void*); // or a number, which is passed the same way
        va_end(rest);
        const bool locks =
            command == F_SETLK64 && static_cast<const struct flock64*>(argument)->l_type != F_UNLCK;
        return Refused(locks ? ekLock : 0U) ? -1 : next(file, command, argument);
    }

    ssize_t pread64(int file, void* bytes, size_t size, off64_t offset)
    {
        static const auto next = Next<ssize_t (*)(int, void*, size_t, off64_t)>("pread64");
        return Refused(ekRead) ? -1 : next(file, bytes, size, offset);
    }

    ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset)
    {
        static const auto next = Next<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
        return Refused(ekWrite) ? -1 : next(file, bytes, size, offset);
    }

    int ftruncate64(int file, off64_t size) noexcept
    {
        static const auto next = Next<int (*)(int, off64_t)>("ftruncate64");
        return Refused(ekWrite) ? -1 : next(file, size);
    }

    // No flush goes on to the medium: power does not fail here, and the wait would be for nothing.
    int fdatasync(int)
    {
        return Refused(ekWrite) ? -1 : 0;
    }

    int fsync(int)
    {
        return Refused(ekWrite) ? -1 : 0;
    }
}
