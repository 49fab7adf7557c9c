#include "Sockets/SocketCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace SocketCalls
{

namespace
{

constexpr std::size_t kDiscardBytes = 16384;
constexpr int kDiscardReads = 512; // 8 MiB, more than the kernel keeps for a connection
constexpr int kBacklog = 128;
constexpr int kFewBytes = 16384;

void SetOption(int descriptor, int level, int option, int value = 1)
{
    setsockopt(descriptor, level, option, &value, sizeof(value)); // what fails costs speed only
}

bool ConnectedToItself(int descriptor)
{
    return SocketAddress::Own(descriptor).Text() == SocketAddress::Peer(descriptor).Text();
}

static_assert(EAGAIN == EWOULDBLOCK, "calls that would have to wait are recognised by the first");

} // namespace

FileDescriptor MakeStream(int family)
{
    return FileDescriptor(socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

bool StartConnecting(int descriptor, const SocketAddress& address)
{
    // A signal during the call does not stop the connecting.
    return connect(descriptor, address.Get(), address.Size()) == 0 || errno == EINPROGRESS || errno == EINTR;
}

EConnecting Progress(int descriptor)
{
    pollfd entry = {descriptor, POLLOUT, 0};
    if (poll(&entry, 1, 0) <= 0)
        return EConnecting::underWay;
    int problem = 0;
    socklen_t size = sizeof(problem);
    if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &problem, &size) != 0 || problem != 0)
        return EConnecting::failed;
    return ConnectedToItself(descriptor) ? EConnecting::failed : EConnecting::established;
}

void PrepareStream(int descriptor)
{
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    fcntl(descriptor, F_SETFD, fcntl(descriptor, F_GETFD) | FD_CLOEXEC);
    SetOption(descriptor, IPPROTO_TCP, TCP_NODELAY);
}

void SendWithoutDelay(int descriptor, bool on)
{
    SetOption(descriptor, IPPROTO_TCP, TCP_NODELAY, static_cast<int>(on));
}

STransfer Send(int descriptor, const char* bytes, std::size_t size)
{
    ssize_t count = 0;
    do
        count = send(descriptor, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        return {0, errno != EAGAIN};
    return {static_cast<std::size_t>(count), false};
}

STransfer Receive(int descriptor, char* buffer, std::size_t size)
{
    ssize_t count = 0;
    do
        count = recv(descriptor, buffer, size, MSG_DONTWAIT);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        return {0, errno != EAGAIN};
    return {static_cast<std::size_t>(count), count == 0};
}

void DiscardInput(int descriptor)
{
    char buffer[kDiscardBytes];
    for (int reads = 0; reads < kDiscardReads; ++reads)
    {
        if (Receive(descriptor, buffer, sizeof(buffer)).bytes == 0)
            return;
    }
}

void EndWriting(int descriptor)
{
    shutdown(descriptor, SHUT_WR);
}

bool PeerHasEnded(int descriptor)
{
    pollfd entry = {descriptor, POLLRDHUP, 0};
    return poll(&entry, 1, 0) > 0;
}

std::size_t BytesHeldBack(int descriptor)
{
    int unsent = 0;
    int unconfirmed = 0;
    if (ioctl(descriptor, SIOCOUTQ, &unconfirmed) != 0)
        return 0;
    if (ioctl(descriptor, SIOCOUTQNSD, &unsent) != 0)
        unsent = unconfirmed; // emulators do not tell them apart
    return unsent > 0 || unconfirmed > kFewBytes ? static_cast<std::size_t>(unconfirmed) : 0;
}

bool HasInput(int descriptor)
{
    int bytes = 0;
    return ioctl(descriptor, SIOCINQ, &bytes) == 0 && bytes > 0;
}

void AcknowledgeAtOnce(int descriptor)
{
    SetOption(descriptor, IPPROTO_TCP, TCP_QUICKACK);
}

FileDescriptor Listen(const SocketAddress& address, int& problem)
{
    FileDescriptor listener = MakeStream(address.Family());
    if (listener.Valid())
    {
        SetOption(listener.Number(), SOL_SOCKET, SO_REUSEADDR);
        if (address.Family() == AF_INET6)
            SetOption(listener.Number(), IPPROTO_IPV6, IPV6_V6ONLY);
        if (bind(listener.Number(), address.Get(), address.Size()) == 0 &&
            listen(listener.Number(), kBacklog) == 0)
            return listener;
    }
    problem = errno;
    return FileDescriptor();
}

FileDescriptor Accept(int listener, int& problem)
{
    FileDescriptor accepted(accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!accepted.Valid())
        problem = errno;
    return accepted;
}

unsigned Poll(int first, bool output, int second, int timeoutMilliseconds)
{
    const auto wanted = static_cast<short>(output ? POLLIN | POLLOUT : POLLIN);
    pollfd entries[] = {{first, wanted, 0}, {second, POLLIN, 0}}; // negative descriptors are passed over
    if (poll(entries, 2, timeoutMilliseconds) <= 0)
        return 0;
    return (entries[0].revents != 0 ? 1u : 0u) | (entries[1].revents != 0 ? 2u : 0u);
}

} // namespace SocketCalls
