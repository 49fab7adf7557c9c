#include "Sockets/SocketTransport.h"

#include "Sockets/SocketCalls.h"

#include <limits>
#include <utility>

Socket::Transport::~Transport()
{
    Close();
}

void Socket::Transport::Start()
{
    Close();
    m_started = true;
    m_start = Clock::now();
    m_nextAddress = 0;
    TryNextAddress();
}

void Socket::Transport::TryNextAddress()
{
    Drop();
    while (m_nextAddress < m_target.size())
    {
        const SocketAddress& address = m_target[m_nextAddress];
        ++m_nextAddress;
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
            return;
        case SocketCalls::EConnecting::established:
            return Establish();
        case SocketCalls::EConnecting::failed:
            TryNextAddress();
        }
    }
}

void Socket::Transport::Adopt(FileDescriptor descriptor)
{
    Close();
    m_descriptor = std::move(descriptor);
    Establish();
}

void Socket::Transport::Establish()
{
    SocketCalls::PrepareStream(m_descriptor.Number());
    m_peer = SocketAddress::Peer(m_descriptor.Number());
    m_peerName = m_peer.Text();
    m_up = true;
    ++m_count;
}

void Socket::Transport::Close()
{
    if (m_up)
        Flush();
    if (m_up)
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
