#include <MPI/MPISocketServerC.h>

#include "Connections/ServerLoop.h"

MPIServerHandlerC::~MPIServerHandlerC() = default;

void MPIServerHandlerC::PeerConnected(const MPIPeerC&) {}

void MPIServerHandlerC::PeerTurnedAway(const MPIPeerC&) {}

void MPIServerHandlerC::PeerDisconnected(const MPIPeerC&) {}

MPISocketServerC::MPISocketServerC(MPIServerHandlerC& handler)
    : m_implementation(std::make_unique<Implementation>(handler))
{
}

MPISocketServerC::~MPISocketServerC() = default;

bool MPISocketServerC::Listen(unsigned short port)
{
    return m_implementation->Listen(port);
}

unsigned short MPISocketServerC::Port() const
{
    return m_implementation->Port();
}

const std::string& MPISocketServerC::Error() const
{
    return m_implementation->Error();
}

int MPISocketServerC::Descriptor() const
{
    return m_implementation->Number();
}

int MPISocketServerC::Serve(int timeoutMilliseconds)
{
    return m_implementation->Serve(timeoutMilliseconds);
}

std::size_t MPISocketServerC::ConnectionCount() const
{
    return m_implementation->ConnectionCount();
}

void MPISocketServerC::Close()
{
    m_implementation->Close();
}
