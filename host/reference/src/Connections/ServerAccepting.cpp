// How a server takes connections in, and turns them away.
#include "Connections/ServerLoop.h"
#include "Sockets/SocketCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/epoll.h>
#include <utility>

namespace
{

constexpr int kAcceptsPerTurn = 64;
constexpr long kPauseNanoseconds = 100000000; // 100 ms

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

FileDescriptor MPISocketServerC::Implementation::SpareDescriptor()
{
    return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
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
    for (int accepts = 0; accepts < kAcceptsPerTurn && !m_closeAsked; ++accepts)
    {
        int problem = 0;
        FileDescriptor accepted = SocketCalls::Accept(listener, problem);
        if (accepted.Valid())
            TakeIn(std::move(accepted));
        else if (problem == EAGAIN)
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
    SetTimer(m_pause, kPauseNanoseconds);
}

void MPISocketServerC::Implementation::ResumeListening()
{
    SetTimer(m_pause, 0);
    if (!m_spare.Valid())
        m_spare = SpareDescriptor();
    if (!WatchListeners())
        PauseListening(errno);
}

void MPISocketServerC::Implementation::TakeIn(FileDescriptor descriptor)
{
    m_troubleTold = false;
    const bool full = m_connections.size() >= m_maximumConnections;
    const ServerConnection* const silent = full ? LongestSilent() : nullptr;
    if ((full && silent == nullptr) || !Watch(descriptor.Number(), m_lastNumber + 1))
        return TurnAway(std::move(descriptor));
    ++m_lastNumber;
    auto connection =
        std::make_unique<ServerConnection>(m_handler, m_order, m_lastNumber, std::move(descriptor));
    ServerConnection& taken = *connection;
    m_connections.emplace(m_lastNumber, std::move(connection));
    if (silent != nullptr)
        GiveWay(*silent);
    taken.Tell();
}

/// Whoever has something to say is not locked out by those who have not.
/// @return null if there is none, or there would be no room without it either
const ServerConnection* MPISocketServerC::Implementation::LongestSilent() const
{
    if (m_connections.size() > m_maximumConnections)
        return nullptr;
    for (const auto& entry : m_connections)
    {
        if (entry.second->Silent())
            return entry.second.get();
    }
    return nullptr;
}

void MPISocketServerC::Implementation::GiveWay(const ServerConnection& connection)
{
    const auto peer = MPIPeerC(connection.Peer()); // which Remove takes away
    Remove(peer.connection);
    m_handler.PeerTurnedAway(peer);
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
    const bool helps = accepted.Valid() || problem == EAGAIN;
    if (accepted.Valid())
        TurnAway(std::move(accepted));
    m_spare = SpareDescriptor();
    return helps;
}
