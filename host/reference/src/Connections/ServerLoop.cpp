#include "Connections/ServerLoop.h"

#include "Sockets/SocketCalls.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <utility>

namespace
{

constexpr int kEventsPerTurn = 64;
constexpr int kAcceptsPerTurn = 64;
constexpr std::uint64_t kListeners = 0; // in place of a connection's number
constexpr std::uint64_t kPauseOver = std::numeric_limits<std::uint64_t>::max(); // likewise
constexpr long kPauseNanoseconds = 100000000;                                   // 100 ms

FileDescriptor SpareDescriptor()
{
    return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

/// Is it the misfortune of one connection, which is gone already?
bool ConcernsOneConnection(int problem)
{
    switch (problem)
    {
    case EINTR:
    case ECONNABORTED:
    case EPROTO:
    case ENOPROTOOPT:
    case EOPNOTSUPP:
    case ENETDOWN:
    case ENETUNREACH:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case ENONET:
        return true;
    default:
        return false;
    }
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
    if (!m_pause.Valid() && !MakeTimer())
        return false;
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

/// Made beforehand: when it is wanted there may be no descriptors.
bool MPISocketServerC::Implementation::MakeTimer()
{
    m_pause = FileDescriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    if (!m_pause.Valid())
        return Fail("timerfd_create", errno);
    if (Watch(m_pause.Number(), kPauseOver))
        return true;
    m_pause = FileDescriptor();
    return false;
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
        handedOver += ServeReady(events[index].data.u64);
    return handedOver;
}

int MPISocketServerC::Implementation::ServeReady(std::uint64_t number)
{
    if (number == kPauseOver)
        ResumeListening();
    if (number == kPauseOver || number == kListeners)
    {
        AcceptFromAll();
        return 0;
    }
    return ServeConnection(number);
}

/// Ready descriptors come round robin, and each gets no more than a bounded turn, so a busy one starves
/// nobody.
int MPISocketServerC::Implementation::ServeConnection(std::uint64_t number)
{
    const auto found = m_connections.find(number);
    if (found == m_connections.end())
        return 0;
    const int handedOver = found->second->Serve();
    if (found->second->Ended())
        Remove(number);
    return handedOver;
}

void MPISocketServerC::Implementation::AcceptFromAll()
{
    for (const FileDescriptor& listener : m_listeners.Descriptors())
    {
        if (!AcceptFrom(listener.Number()))
            return;
    }
}

/// @return false if the system refuses for good, so that listening pauses
bool MPISocketServerC::Implementation::AcceptFrom(int listener)
{
    for (int accepts = 0; accepts < kAcceptsPerTurn; ++accepts)
    {
        int problem = 0;
        FileDescriptor accepted = SocketCalls::Accept(listener, problem);
        if (accepted.Valid())
            Welcome(std::move(accepted));
        else if (problem == EAGAIN || problem == EWOULDBLOCK)
            return true;
        else if ((problem == EMFILE || problem == ENFILE) && TurnAwayForWantOfDescriptors(listener))
            return true;
        else if (!ConcernsOneConnection(problem))
        {
            PauseListening(problem);
            return false;
        }
    }
    return true;
}

/// A connection that cannot be accepted makes its listener ready for ever, and its owner busy for nothing.
void MPISocketServerC::Implementation::PauseListening(int problem)
{
    if (!m_troubleTold)
        Fail("accept", problem);
    m_troubleTold = true;
    for (const FileDescriptor& listener : m_listeners.Descriptors())
        epoll_ctl(m_watch.Number(), EPOLL_CTL_DEL, listener.Number(), nullptr);
    SetTimer(kPauseNanoseconds);
}

void MPISocketServerC::Implementation::ResumeListening()
{
    SetTimer(0);
    if (!m_spare.Valid())
        m_spare = SpareDescriptor();
    if (!WatchListeners())
        PauseListening(errno);
}

/// @param nanoseconds  0 stops it, and takes back that it has run out
void MPISocketServerC::Implementation::SetTimer(long nanoseconds)
{
    const itimerspec time = {{0, 0}, {0, nanoseconds}};
    timerfd_settime(m_pause.Number(), 0, &time, nullptr);
}

void MPISocketServerC::Implementation::Welcome(FileDescriptor descriptor)
{
    m_troubleTold = false;
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
    const MPIPeerC peer = {0, SocketAddress::Peer(descriptor.Number()).Name()};
    m_handler.PeerTurnedAway(peer);
}

/// @return false if even the spare descriptor does not help
bool MPISocketServerC::Implementation::TurnAwayForWantOfDescriptors(int listener)
{
    m_spare = FileDescriptor();
    int problem = 0;
    FileDescriptor accepted = SocketCalls::Accept(listener, problem);
    const bool helps = accepted.Valid() || problem == EAGAIN || problem == EWOULDBLOCK;
    if (accepted.Valid())
        TurnAway(std::move(accepted));
    m_spare = SpareDescriptor();
    return helps;
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
    if (m_pause.Valid())
        SetTimer(0);
    m_troubleTold = false;
    while (!m_connections.empty())
        Remove(m_connections.begin()->first);
}
