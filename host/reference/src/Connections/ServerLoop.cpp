#include "Connections/ServerLoop.h"

#include "Sockets/SocketCalls.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/epoll.h>
#include <utility>

namespace
{

constexpr int kEventsPerTurn = 64;
constexpr int kAcceptsPerTurn = 64;
constexpr std::uint64_t kListeners = 0; // in place of a connection's number

FileDescriptor SpareDescriptor()
{
    return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

} // namespace

MPISocketServerC::Implementation::Implementation(MPIServerHandlerC& handler)
    : m_handler(handler), m_watch(epoll_create1(EPOLL_CLOEXEC)), m_spare(SpareDescriptor())
{
    if (!m_watch.Valid())
        Fail("epoll_create1", errno);
}

bool MPISocketServerC::Implementation::Fail(const std::string& what, int problem)
{
    m_error = what + ": " + std::strerror(problem);
    return false;
}

bool MPISocketServerC::Implementation::Listen(unsigned short port)
{
    if (Port() != 0)
        return Fail("port " + std::to_string(Port()) + " is listened on already", EALREADY);
    if (!m_listeners.Open(port))
    {
        m_error = m_listeners.Error();
        return false;
    }
    if (!WatchListeners())
    {
        m_listeners.Close();
        return false;
    }
    m_error.clear();
    return true;
}

bool MPISocketServerC::Implementation::WatchListeners()
{
    for (const FileDescriptor& listener : m_listeners.Descriptors())
    {
        if (!Watch(listener.Number(), kListeners))
            return false;
    }
    return true;
}

bool MPISocketServerC::Implementation::Watch(int descriptor, std::uint64_t number)
{
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLRDHUP;
    event.data.u64 = number;
    return epoll_ctl(m_watch.Number(), EPOLL_CTL_ADD, descriptor, &event) == 0 || Fail("epoll_ctl", errno);
}

int MPISocketServerC::Implementation::Serve(int timeoutMilliseconds)
{
    epoll_event events[kEventsPerTurn];
    const int count = epoll_wait(m_watch.Number(), events, kEventsPerTurn, timeoutMilliseconds);
    if (count < 0 && errno != EINTR)
    {
        Fail("epoll_wait", errno);
        return -1;
    }
    m_error.clear();
    int handedOver = 0;
    for (int index = 0; index < count; ++index)
        handedOver += ServeConnection(events[index].data.u64);
    return handedOver;
}

/// Ready descriptors come round robin, and each gets no more than a bounded turn, so a busy one starves
/// nobody.
int MPISocketServerC::Implementation::ServeConnection(std::uint64_t number)
{
    if (number == kListeners)
    {
        for (const FileDescriptor& listener : m_listeners.Descriptors())
            AcceptFrom(listener.Number());
        return 0;
    }
    const auto found = m_connections.find(number);
    if (found == m_connections.end())
        return 0;
    const int handedOver = found->second->Serve();
    if (found->second->Ended())
        Remove(number);
    return handedOver;
}

void MPISocketServerC::Implementation::AcceptFrom(int listener)
{
    for (int accepts = 0; accepts < kAcceptsPerTurn; ++accepts)
    {
        int problem = 0;
        FileDescriptor accepted = SocketCalls::Accept(listener, problem);
        if (accepted.Valid())
            Welcome(std::move(accepted));
        else if (problem == EMFILE || problem == ENFILE)
            return TurnAwayForWantOfDescriptors(listener);
        else if (problem == EAGAIN || problem == EWOULDBLOCK)
            return;
        // Anything else is the misfortune of one connection that is gone already.
    }
}

void MPISocketServerC::Implementation::Welcome(FileDescriptor descriptor)
{
    if (m_connections.size() >= kMaximumConnections || !Watch(descriptor.Number(), m_lastNumber + 1))
        return TurnAway(std::move(descriptor));
    ++m_lastNumber;
    auto connection = std::make_unique<ServerConnection>(m_handler, m_lastNumber, std::move(descriptor));
    const MPIPeerC peer = connection->Peer();
    m_connections.emplace(m_lastNumber, std::move(connection));
    m_handler.PeerConnected(peer);
}

void MPISocketServerC::Implementation::TurnAway(FileDescriptor descriptor)
{
    MPIPeerC peer = {0, SocketAddress::Peer(descriptor.Number()).Text()};
    m_handler.PeerTurnedAway(peer);
}

/// Left waiting, the connection would make the listener ready for ever, and its owner busy for nothing.
void MPISocketServerC::Implementation::TurnAwayForWantOfDescriptors(int listener)
{
    m_spare = FileDescriptor();
    int problem = 0;
    FileDescriptor accepted = SocketCalls::Accept(listener, problem);
    if (accepted.Valid())
        TurnAway(std::move(accepted));
    m_spare = SpareDescriptor();
}

void MPISocketServerC::Implementation::Remove(std::uint64_t number)
{
    const auto found = m_connections.find(number);
    const MPIPeerC peer = found->second->Peer();
    m_connections.erase(found);
    m_handler.PeerDisconnected(peer);
}

void MPISocketServerC::Implementation::Close()
{
    m_listeners.Close();
    while (!m_connections.empty())
        Remove(m_connections.begin()->first);
}
