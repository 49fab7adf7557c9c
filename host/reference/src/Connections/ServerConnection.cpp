#include "Connections/ServerConnection.h"

#include "Connections/NotificationParts.h"
#include "Sockets/SocketCalls.h"

ServerConnection::ServerConnection(MPIServerHandlerC& handler, std::uint64_t number,
                                   FileDescriptor descriptor)
    : m_handler(handler), m_peer()
{
    m_peer.connection = number;
    Accept(descriptor.Release());
    m_peer.name = PeerName();
}

int ServerConnection::Serve()
{
    m_passedOn = 0;
    ProcessMessages(false);
    if (!m_ended)
        TellRefusal();
    return m_passedOn;
}

void ServerConnection::TellRefusal()
{
    if (Refused())
        m_handler.InputRefused(m_peer, RefusalOffset(), RefusalReason());
    else if (Descriptor() < 0 && Decoder().Incomplete())
        m_handler.InputRefused(m_peer, Decoder().StreamOffset(), "connection ended within a message");
}

void ServerConnection::MessageReceived(BDictionaryC* message)
{
    if (m_ended)
        return;
    const std::uint64_t offset = Decoder().MessageOffset();
    const NotificationParts parts(*message);
    if (!parts.Complete())
    {
        m_ended = true;
        return m_handler.InputRefused(m_peer, offset, "not a notification: no \"name\" or no \"args\"");
    }
    ++m_passedOn;
    m_ended = !m_handler.NotificationReceived(m_peer, {*parts.name, *parts.arguments, *message, offset});
}

void ServerConnection::DataReceived()
{
    SocketCalls::AcknowledgeAtOnce(Descriptor());
}
