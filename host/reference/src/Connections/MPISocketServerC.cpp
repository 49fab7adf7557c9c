#include <MPI/MPISocketServerC.h>

#include "Connections/ServerLoop.h"

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>

MPIServerHandlerC::~MPIServerHandlerC() = default;

void MPIServerHandlerC::PeerConnected(const MPIPeerC&) {}

void MPIServerHandlerC::PeerIntroduced(const MPIPeerC&) {}

bool MPIServerHandlerC::NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification)
{
    const std::string name(notification.name);
    auto list = std::make_unique<BListC>();
    for (std::size_t index = 0; index < notification.count; ++index)
        list->Append(std::make_unique<BAtomC>(notification.arguments[index]));
    const BListC& arguments = *list;
    BDictionaryC message;
    message.Insert("args", std::move(list));
    message.Insert("name", std::make_unique<BAtomC>(name));
    if (notification.number != 0)
        message.Insert("seq", std::make_unique<BAtomC>(static_cast<std::int64_t>(notification.number)));
    return NotificationReceived(peer, {name, arguments, message, notification.offset, notification.number});
}

void MPIServerHandlerC::BatchEnded(const MPIPeerC&) {}

void MPIServerHandlerC::PeerFinished(const MPIPeerC&) {}

void MPIServerHandlerC::PeerTurnedAway(const MPIPeerC&) {}

void MPIServerHandlerC::PeerDisconnected(const MPIPeerC&) {}

MPISocketServerC::MPISocketServerC(MPIServerHandlerC& handler)
    : m_implementation(std::make_unique<Implementation>(handler))
{
}

MPISocketServerC::~MPISocketServerC() = default;

std::size_t MPISocketServerC::MaximumConnections() const
{
    return m_implementation->MaximumConnections();
}

void MPISocketServerC::MaximumConnections(std::size_t count)
{
    m_implementation->MaximumConnections(count);
}

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

bool MPISocketServerC::GathersInput() const
{
    return m_implementation->GathersInput();
}

void MPISocketServerC::GathersInput(bool gathersInput)
{
    m_implementation->GathersInput(gathersInput);
}

void MPISocketServerC::Welcome(std::uint64_t connection, std::uint64_t number)
{
    m_implementation->WelcomePeer(connection, number);
}

void MPISocketServerC::Acknowledge(std::uint64_t connection, std::uint64_t number)
{
    m_implementation->Acknowledge(connection, number);
}

bool MPISocketServerC::Answer(std::uint64_t connection, const BElementC& message)
{
    return m_implementation->Answer(connection, message);
}

std::size_t MPISocketServerC::ConnectionCount() const
{
    return m_implementation->ConnectionCount();
}

void MPISocketServerC::Close()
{
    m_implementation->Close();
}
