#include "Sockets/SocketTransport.h"

#include "Sockets/SocketCalls.h"

#include <limits>
#include <unistd.h>
#include <utility>

Socket::Transport::~Transport()
{
    Close();
}

void Socket::Transport::Start()
{
    Close();
    ++m_starts;
    m_started = true;
    m_start = Clock::now();
    m_nextAddress = 0;
    m_gaveUp = false;
    TryNextAddress();
}

void Socket::Transport::TryNextAddress()
{
    Drop();
    while (m_nextAddress < m_target.size() || m_gaveUp)
    {
        if (m_nextAddress == m_target.size())
        {
            m_nextAddress = 0; // somebody may have had no time to answer: another round
            m_gaveUp = false;
        }
        const SocketAddress& address = m_target[m_nextAddress];
        ++m_nextAddress;
        m_addressStart = Clock::now();
        m_descriptor = SocketCalls::MakeStream(address.Family());
        if (m_descriptor.Valid() && SocketCalls::StartConnecting(m_descriptor.Number(), address))
            return;
        m_descriptor = FileDescriptor();
    }
}

void Socket::Transport::Progress()
{
    while (UnderWay())
    {
        switch (SocketCalls::Progress(m_descriptor.Number()))
        {
        case SocketCalls::EConnecting::underWay:
            if (MillisecondsOfPatience() > 0)
                return;
            GiveUpAddress();
            break;
        case SocketCalls::EConnecting::established:
            return Establish();
        case SocketCalls::EConnecting::failed:
            TryNextAddress();
        }
    }
}

void Socket::Transport::GiveUpAddress()
{
    m_gaveUp = true;
    TryNextAddress();
}

int Socket::Transport::MillisecondsOfPatience() const
{
    const auto end = m_addressStart + std::chrono::milliseconds(kPatienceMilliseconds);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

void Socket::Transport::Adopt(FileDescriptor descriptor)
{
    Close();
    ++m_starts;
    m_descriptor = std::move(descriptor);
    Establish();
}

void Socket::Transport::Establish()
{
    SocketCalls::PrepareStream(m_descriptor.Number());
    m_peer = SocketAddress::Peer(m_descriptor.Number());
    m_peerName = m_peer.Name();
    m_process = getpid();
    m_up = true;
    ++m_count;
}

void Socket::Transport::Close()
{
    const bool ours = m_process == getpid();
    if (m_up && ours)
        Flush();
    if (m_up && ours)
    {
        // Closing with input unread would make the kernel cut off what we have sent.
        SocketCalls::DiscardInput(m_descriptor.Number());
        SocketCalls::EndWriting(m_descriptor.Number());
    }
    Drop();
}

void Socket::Transport::Drop()
{
    m_lossUntold = m_lossUntold || m_up;
    m_descriptor = FileDescriptor();
    m_up = false;
    m_peer = SocketAddress();
    m_peerName.clear();
    m_outbox.Rewind();
}

int Socket::Transport::MillisecondsSinceStart() const
{
    constexpr int kLongAgo = std::numeric_limits<int>::max();
    if (!m_started)
        return kLongAgo;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_start).count();
    return passed < kLongAgo ? static_cast<int>(passed) : kLongAgo;
}

bool Socket::Transport::Flush()
{
    if (!m_up || m_outbox.Empty() || SocketCalls::PeerHasEnded(m_descriptor.Number()))
        return false; // what goes to a peer that has ended is lost, what stays goes to the next
    while (!m_outbox.Empty())
    {
        const auto sent = SocketCalls::Send(m_descriptor.Number(), m_outbox.Unsent(), m_outbox.UnsentBytes());
        m_outbox.Sent(sent.bytes);
        if (sent.lost)
            Drop();
        if (sent.bytes == 0)
            return false;
    }
    return true;
}

std::size_t Socket::Transport::Receive(char* buffer, std::size_t size)
{
    if (!m_up)
        return 0;
    const auto received = SocketCalls::Receive(m_descriptor.Number(), buffer, size);
    if (received.lost)
        Drop();
    return received.bytes;
}
