#include <MPI/Socket.h>

#include "Sockets/Deadline.h"
#include "Sockets/SocketCalls.h"
#include "Sockets/SocketTransport.h"

#include <algorithm>

Socket::Socket() : m_transport(std::make_unique<Transport>()) {}

Socket::~Socket() = default;

Socket::Transport& Socket::Own() const
{
    m_transport->FollowFork();
    return *m_transport;
}

void Socket::Accept(int descriptor)
{
    if (descriptor < 0 || descriptor == Descriptor())
        return;
    Close();
    Own().Adopt(FileDescriptor(descriptor));
}

bool Socket::Reconnect(int timeoutMilliseconds)
{
    if (!Own().HasTarget())
        return false;
    Close();
    Own().Start();
    if (timeoutMilliseconds < 0)
        return Own().UnderWay(); // at the soonest it is up when it is asked for next
    const Deadline deadline(timeoutMilliseconds);
    Own().Progress();
    while (Own().UnderWay() && !deadline.Passed())
    {
        SocketCalls::Poll(Own().Number(), true, -1,
                          std::min(deadline.MillisecondsLeft(), Own().MillisecondsOfPatience()));
        Own().Progress();
    }
    return Own().Up();
}

bool Socket::Connected()
{
    Own().Progress();
    return Own().Up();
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
    Own().Target(SocketAddress::Find(host, port));
    if (Own().HasTarget())
        return Reconnect(timeoutMilliseconds);
    Close();
    return false;
}

void Socket::Close()
{
    Own().Close();
    ReportLoss();
}

void Socket::Forget()
{
    Own().Target({}); // first: Disconnected may want to connect again
    Close();
}

bool Socket::PeerHasEnded() const
{
    return Own().Up() && SocketCalls::PeerHasEnded(Own().Number());
}

int Socket::Descriptor() const
{
    return Own().Number();
}

bool Socket::Sending() const
{
    return Own().UnderWay() || (Own().Up() && Own().Outbox().UnsentBytes() > 0);
}

std::size_t Socket::BytesWaiting() const
{
    return Own().Outbox().Waiting();
}

const std::string& Socket::PeerName() const
{
    return Own().PeerName();
}

bool Socket::Queue(const std::string& message, std::uint64_t number)
{
    return Own().Outbox().Add(message, number);
}

void Socket::Flush(bool look)
{
    if (Own().Flush(look))
        DataSent();
    ReportLoss();
}

void Socket::DropOutbox()
{
    if (Own().Session() != nullptr)
        Own().Session()->Forget();
    Own().Outbox().Clear();
}

void Socket::StartSession(bool bridgesOutages)
{
    Own().StartSession(bridgesOutages);
}

SessionDelivery* Socket::Session() const
{
    return Own().Session();
}

const MessageOutbox& Socket::Outbox() const
{
    return Own().Outbox();
}

void Socket::SendWithoutDelay(bool on)
{
    SocketCalls::SendWithoutDelay(Own().Number(), on); // without a connection nothing comes of it
}

void Socket::ReadToTheEnd()
{
    Own().ReadToTheEnd();
}

bool Socket::Up() const
{
    return Own().Up();
}

std::size_t Socket::Receive(std::string& input)
{
    char buffer[kReadBytes];
    const std::size_t count = Own().Receive(buffer, sizeof(buffer));
    input.assign(buffer, count);
    if (count > 0)
    {
        const std::string host = Own().PeerHost(); // which may be gone after the first call
        const unsigned short port = Own().Peer().Port();
        DataReceived();
        DataReceivedFrom(host, port);
    }
    ReportLoss();
    return count;
}

std::size_t Socket::Receive(char* buffer, std::size_t size)
{
    const std::size_t count = Own().Receive(buffer, size);
    ReportLoss();
    return count;
}

bool Socket::Wait(int timeoutMilliseconds)
{
    int timeout = timeoutMilliseconds;
    if (Own().UnderWay()) // longer than that the address is not waited for
        timeout =
            timeout < 0 ? Own().MillisecondsOfPatience() : std::min(timeout, Own().MillisecondsOfPatience());
    const unsigned ready = SocketCalls::Poll(Own().Number(), Sending(), GetExtraReader(), timeout);
    if ((ready & 2u) != 0)
        ReadExtra();
    return ready != 0;
}

unsigned Socket::ConnectionCount() const
{
    return Own().Count();
}

unsigned Socket::AttemptCount() const
{
    return Own().Starts();
}

int Socket::MillisecondsSinceAttempt() const
{
    return Own().MillisecondsSinceStart();
}

void Socket::ReportLoss()
{
    if (Own().TakeLoss())
        Disconnected();
}
