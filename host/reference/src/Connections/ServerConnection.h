#ifndef CONNECTIONS_SERVERCONNECTION_H
#define CONNECTIONS_SERVERCONNECTION_H

#include "Sockets/FileDescriptor.h"

#include <MPI/MPISocketConnectionC.h>
#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <string>

/// One connection that a server has accepted: passes what comes in to the server's handler.
class ServerConnection : public MPISocketConnectionC
{
public:
    /// @param handler     borrowed
    /// @param descriptor  connected
    ServerConnection(MPIServerHandlerC& handler, std::uint64_t number, FileDescriptor descriptor);

    const MPIPeerC& Peer() const { return m_peer; }

    /// Reads and passes on what has come in, a bounded amount. The handler is told if it was wrong, or if the
    /// connection has ended in the middle of a message.
    /// @return notifications passed on
    int Serve();

    /// Nothing more comes from this connection.
    bool Ended() const { return m_ended || Descriptor() < 0; }

    void MessageReceived(BDictionaryC* message) override;
    void DataReceived() override;

private:
    void TellRefusal();

    MPIServerHandlerC& m_handler;
    MPIPeerC m_peer;
    bool m_ended = false; // by the handler, or by us because of what has come in
    int m_passedOn = 0;
};

#endif
