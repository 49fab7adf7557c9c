// How a server keeps the connections of one session in order.
#include "Connections/ServerLoop.h"
#include "Sockets/SocketCalls.h"

#include <sys/epoll.h>

namespace
{

constexpr long kPatienceNanoseconds = 500000000; // 500 ms

} // namespace

/// It is not watched meanwhile: it may well have input, or have ended.
void MPISocketServerC::Implementation::Hold(ServerConnection& connection)
{
    epoll_ctl(m_watch.Number(), EPOLL_CTL_DEL, connection.Descriptor(), nullptr);
    connection.Watched(false);
    connection.WatchedForOutput(false);
    SetTimer(m_patience, kPatienceNanoseconds);
}

void MPISocketServerC::Implementation::Release(std::uint64_t number)
{
    ServerConnection* const connection = Find(number);
    if (connection == nullptr)
        return;
    connection->Release();
    connection->Watched(Watch(connection->Descriptor(), number));
    if (!connection->Watched())
        connection->End(); // nobody would notice its input
    Requeue(*connection);
}

/// One that neither ends nor says anything is not waited for: it is another's, or goes on beside its
/// successor.
void MPISocketServerC::Implementation::LosePatience()
{
    SetTimer(m_patience, 0);
    for (const SessionOrder::SWaitedFor& first : m_order.WaitedFor())
    {
        const ServerConnection& connection = *m_connections.at(first.connection); // who goes leaves its line
        if (!connection.HasWork() && !SocketCalls::HasInput(connection.Descriptor()))
            Release(m_order.Leave(first.session, first.connection));
    }
    if (!m_order.WaitedFor().empty())
        SetTimer(m_patience, kPatienceNanoseconds);
}
