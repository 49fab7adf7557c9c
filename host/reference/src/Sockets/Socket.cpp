#include <MPI/Socket.h>

#include "Sockets/Deadline.h"
#include "Sockets/SocketCalls.h"
#include "Sockets/SocketTransport.h"

#include <algorithm>

Socket::Socket() : m_transport(std::make_unique<Transport>()) {}

Socket::~Socket() = default;

void Socket::Accept(int descriptor)
{
    if (descriptor < 0 || descriptor == Descriptor())
        return;
    Close();
    m_transport->Adopt(FileDescriptor(descriptor));
}

bool Socket::Reconnect(int timeoutMilliseconds)
{
    if (!m_transport->HasTarget())
        return false;
    Close();
    m_transport->Start();
    if (timeoutMilliseconds < 0)
        return m_transport->UnderWay(); // at the soonest it is up when it is asked for next
    const Deadline deadline(timeoutMilliseconds);
    m_transport->Progress();
    while (m_transport->UnderWay() && !deadline.Passed())
    {
        SocketCalls::Poll(m_transport->Number(), true, -1,
                          std::min(deadline.MillisecondsLeft(), m_transport->MillisecondsOfPatience()));
        m_transport->Progress();
    }
    return m_transport->Up();
}

bool Socket::Connected()
{
    m_transport->Progress();
    return m_transport->Up();
}

int Socket::GetExtraReader()
{
    return -1;
}

void Socket::ReadExtra() {}

void Socket::DataReceived() {}

void Socket::DataReceivedFrom(std::string, unsigned short) {}

void Socket::DataSent() {}

void Socket::Disconnected() {}

bool Socket::Connect(const std::string& host, unsigned short port, int timeoutMilliseconds)
{
    m_transport->Target(SocketAddress::Find(host, port));
    if (m_transport->HasTarget())
        return Reconnect(timeoutMilliseconds);
    Close();
    return false;
}

void Socket::Close()
{
    m_transport->Close();
    ReportLoss();
}

void Socket::Forget()
{
    m_transport->Target({}); // first: Disconnected may want to connect again
    Close();
}

bool Socket::PeerHasEnded() const
{
    return m_transport->Up() && SocketCalls::PeerHasEnded(m_transport->Number());
}

int Socket::Descriptor() const
{
    return m_transport->Number();
}

bool Socket::Sending() const
{
    return m_transport->UnderWay() || (m_transport->Up() && m_transport->Outbox().UnsentBytes() > 0);
}

std::size_t Socket::BytesWaiting() const
{
    return m_transport->Outbox().Waiting();
}

const std::string& Socket::PeerName() const
{
    return m_transport->PeerName();
}

bool Socket::Queue(const std::string& message, std::uint64_t number)
{
    return m_transport->Outbox().Add(message, number);
}

void Socket::Flush(bool look)
{
    if (m_transport->Flush(look))
        DataSent();
    ReportLoss();
}

void Socket::DropOutbox()
{
    if (m_transport->Session() != nullptr)
        m_transport->Session()->Forget();
    m_transport->Outbox().Clear();
}

void Socket::StartSession(bool bridgesOutages)
{
    m_transport->StartSession(bridgesOutages);
}

SessionDelivery* Socket::Session() const
{
    return m_transport->Session();
}

const MessageOutbox& Socket::Outbox() const
{
    return m_transport->Outbox();
}

void Socket::SendWithoutDelay(bool on)
{
    SocketCalls::SendWithoutDelay(m_transport->Number(), on); // without a connection nothing comes of it
}

void Socket::ReadToTheEnd()
{
    m_transport->ReadToTheEnd();
}

bool Socket::Up() const
{
    return m_transport->Up();
}

std::size_t Socket::Receive(std::string& input)
{
    char buffer[kReadBytes];
    const std::size_t count = m_transport->Receive(buffer, sizeof(buffer));
    input.assign(buffer, count);
    if (count > 0)
    {
        const std::string host = m_transport->PeerHost(); // which may be gone after the first call
        const unsigned short port = m_transport->Peer().Port();
        DataReceived();
        DataReceivedFrom(host, port);
    }
    ReportLoss();
    return count;
}

std::size_t Socket::Receive(char* buffer, std::size_t size)
{
    const std::size_t count = m_transport->Receive(buffer, size);
    ReportLoss();
    return count;
}

bool Socket::Wait(int timeoutMilliseconds)
{
    int timeout = timeoutMilliseconds;
    if (m_transport->UnderWay()) // longer than that the address is not waited for
        timeout = timeout < 0 ? m_transport->MillisecondsOfPatience()
                              : std::min(timeout, m_transport->MillisecondsOfPatience());
    const unsigned ready = SocketCalls::Poll(m_transport->Number(), Sending(), GetExtraReader(), timeout);
    if ((ready & 2u) != 0)
        ReadExtra();
    return ready != 0;
}

unsigned Socket::ConnectionCount() const
{
    return m_transport->Count();
}

unsigned Socket::AttemptCount() const
{
    return m_transport->Starts();
}

int Socket::MillisecondsSinceAttempt() const
{
    return m_transport->MillisecondsSinceStart();
}

void Socket::ReportLoss()
{
    if (m_transport->TakeLoss())
        Disconnected();
}
