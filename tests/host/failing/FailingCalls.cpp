#include "host/failing/FailingCalls.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <map>
#include <memory>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/timerfd.h>

namespace
{

using HostTest::CFailingCalls;

thread_local std::map<std::string, std::shared_ptr<CFailingCalls::Answer>> answers;

std::optional<int> Asked(const char* call, int descriptor, long argument = 0, const void* data = nullptr)
{
    const auto found = answers.find(call);
    if (found == answers.end())
        return std::nullopt;
    const auto answer = found->second; // which may put another in its place
    return (*answer)(descriptor, static_cast<int>(argument), const_cast<void*>(data));
}

/// The system's own function.
/// @param name64  what it is called on machines with 32 bits, whose times have 64; null: the same
template <typename Function> Function* System(const char* name, const char* name64 = nullptr)
{
    const bool other = sizeof(void*) == 4 && name64 != nullptr;
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, other ? name64 : name));
}

} // namespace

namespace HostTest
{

CFailingCalls::~CFailingCalls()
{
    answers.clear();
}

void CFailingCalls::Ask(const std::string& call, const Answer& answer)
{
    answers[call] = std::make_shared<Answer>(answer);
}

void CFailingCalls::Fail(const std::string& call, int error, int times, int passed)
{
    Ask(call,
        [error, times, passed](int, int, void*) mutable -> std::optional<int>
        {
            if (passed-- > 0 || times-- <= 0)
                return std::nullopt;
            errno = error;
            return -1;
        });
}

void CFailingCalls::FailOn(int descriptor, const std::string& call, int error, int times)
{
    Ask(call,
        [descriptor, error, times](int about, int, void*) mutable -> std::optional<int>
        {
            if (about != descriptor || times-- <= 0)
                return std::nullopt;
            errno = error;
            return -1;
        });
}

void CFailingCalls::Leave(const std::string& call)
{
    answers.erase(call);
}

} // namespace HostTest

// Names and parameters are the system's. The executable's definitions win over the C library's.
extern "C"
{

    int socket(int family, int type, int protocol) noexcept
    {
        static auto* const system = System<int(int, int, int)>("socket");
        const auto answer = Asked("socket", -1, family);
        return answer ? *answer : system(family, type, protocol);
    }

    int connect(int descriptor, const sockaddr* address, socklen_t size)
    {
        static auto* const system = System<int(int, const sockaddr*, socklen_t)>("connect");
        const auto answer = Asked("connect", descriptor, static_cast<long>(size), address);
        return answer ? *answer : system(descriptor, address, size);
    }

    int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept
    {
        static auto* const system = System<int(int, const sockaddr*, socklen_t)>("bind");
        const auto answer = Asked("bind", descriptor, address->sa_family, address);
        return answer ? *answer : system(descriptor, address, size);
    }

    int listen(int descriptor, int backlog) noexcept
    {
        static auto* const system = System<int(int, int)>("listen");
        const auto answer = Asked("listen", descriptor, backlog);
        return answer ? *answer : system(descriptor, backlog);
    }

    int accept4(int descriptor, sockaddr* address, socklen_t* size, int flags)
    {
        static auto* const system = System<int(int, sockaddr*, socklen_t*, int)>("accept4");
        const auto answer = Asked("accept4", descriptor);
        return answer ? *answer : system(descriptor, address, size, flags);
    }

    int getsockname(int descriptor, sockaddr* address, socklen_t* size) noexcept
    {
        static auto* const system = System<int(int, sockaddr*, socklen_t*)>("getsockname");
        const auto answer = Asked("getsockname", descriptor);
        return answer ? *answer : system(descriptor, address, size);
    }

    int getsockopt(int descriptor, int level, int option, void* value, socklen_t* size) noexcept
    {
        static auto* const system =
            System<int(int, int, int, void*, socklen_t*)>("getsockopt", "__getsockopt64");
        const auto answer = Asked("getsockopt", descriptor, option, value);
        return answer ? *answer : system(descriptor, level, option, value, size);
    }

    ssize_t send(int descriptor, const void* bytes, size_t size, int flags)
    {
        static auto* const system = System<ssize_t(int, const void*, size_t, int)>("send");
        const auto answer = Asked("send", descriptor, static_cast<long>(size), bytes);
        if (!answer)
            return system(descriptor, bytes, size, flags);
        return *answer < 0 ? -1 : system(descriptor, bytes, static_cast<size_t>(*answer), flags);
    }

    ssize_t recv(int descriptor, void* bytes, size_t size, int flags)
    {
        static auto* const system = System<ssize_t(int, void*, size_t, int)>("recv");
        const auto answer = Asked("recv", descriptor, static_cast<long>(size), bytes);
        return answer ? *answer : system(descriptor, bytes, size, flags);
    }

    int ioctl(int descriptor, unsigned long request, ...) noexcept
    {
        static auto* const system = System<int(int, unsigned long, ...)>("ioctl", "__ioctl_time64");
        va_list arguments;
        va_start(arguments, request);
        void* const data = va_arg(arguments, void*);
        va_end(arguments);
        const auto answer = Asked("ioctl", descriptor, static_cast<long>(request), data);
        return answer ? *answer : system(descriptor, request, data);
    }

    int epoll_create1(int flags) noexcept
    {
        static auto* const system = System<int(int)>("epoll_create1");
        const auto answer = Asked("epoll_create1", -1);
        return answer ? *answer : system(flags);
    }

    int epoll_ctl(int watch, int operation, int descriptor, epoll_event* event) noexcept
    {
        static auto* const system = System<int(int, int, int, epoll_event*)>("epoll_ctl");
        const auto answer = Asked("epoll_ctl", descriptor, operation, event);
        return answer ? *answer : system(watch, operation, descriptor, event);
    }

    int epoll_wait(int watch, epoll_event* events, int count, int timeoutMilliseconds)
    {
        static auto* const system = System<int(int, epoll_event*, int, int)>("epoll_wait");
        const auto answer = Asked("epoll_wait", watch, timeoutMilliseconds);
        return answer ? *answer : system(watch, events, count, timeoutMilliseconds);
    }

    int eventfd(unsigned count, int flags) noexcept
    {
        static auto* const system = System<int(unsigned, int)>("eventfd");
        const auto answer = Asked("eventfd", -1);
        return answer ? *answer : system(count, flags);
    }

    int timerfd_create(clockid_t clock, int flags) noexcept
    {
        static auto* const system = System<int(clockid_t, int)>("timerfd_create");
        const auto answer = Asked("timerfd_create", -1);
        return answer ? *answer : system(clock, flags);
    }

    ssize_t getrandom(void* bytes, size_t size, unsigned flags)
    {
        static auto* const system = System<ssize_t(void*, size_t, unsigned)>("getrandom");
        const auto answer = Asked("getrandom", -1, static_cast<long>(size), bytes);
        return answer ? *answer : system(bytes, size, flags);
    }

} // extern "C"
