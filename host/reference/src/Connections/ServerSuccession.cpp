// How a server keeps the connections of one session in order.
#include "Connections/ServerLoop.h"
#include "Sockets/SocketCalls.h"

#include <sys/epoll.h>

namespace
{

constexpr long kLookNanoseconds = 100000000; // 100 ms
constexpr int kLooks = 5;

} // namespace

/// It is not watched meanwhile: it may well have input, or have ended.
void MPISocketServerC::Implementation::Hold(ServerConnection& connection)
{
    epoll_ctl(m_watch.Number(), EPOLL_CTL_DEL, connection.Descriptor(), nullptr);
    connection.Watched(false);
    connection.WatchedForOutput(false);
    StartLooking();
}

/// Who begins to wait while others do does not put these off.
void MPISocketServerC::Implementation::StartLooking()
{
    if (!m_looking)
        SetTimer(m_patience, kLookNanoseconds);
    m_looking = true;
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

/// One that neither ends nor says anything from look to look is not waited for: it is another's, or goes on
/// beside its successor.
void MPISocketServerC::Implementation::LosePatience()
{
    SetTimer(m_patience, 0);
    m_looking = false;
    for (const SessionOrder::SWaitedFor& first : m_order.WaitedFor())
    {
        ServerConnection& connection = *m_connections.at(first.connection); // who goes leaves its line
        if (connection.QuietLooks() >= kLooks)
            Release(m_order.Leave(first.session, first.connection));
    }
    if (!m_order.WaitedFor().empty())
        StartLooking();
}
