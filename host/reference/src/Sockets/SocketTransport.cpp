#include "Sockets/SocketTransport.h"

#include "Sockets/Deadline.h"
#include "Sockets/SocketCalls.h"

#include <limits>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int kLongestFarewell = 500; // milliseconds
constexpr int kLongestStandstill = 100;

} // namespace

Socket::Transport::~Transport()
{
    if (m_up && m_process == getpid() && m_session != nullptr && m_session->Welcomed())
        LetGo();
    Close();
}

/// What a receiver says to a descriptor that is closed makes the system cut off what it has not passed on.
/// One that acknowledges is sure to say something; so the system is given the time to pass all on, as long as
/// it gets on with it.
void Socket::Transport::LetGo()
{
    Flush(false);
    if (!m_up)
        return;
    SocketCalls::EndWriting(m_descriptor.Number());
    const Deadline end(kLongestFarewell);
    std::size_t left = SocketCalls::BytesHeldBack(m_descriptor.Number());
    for (Deadline standstill(kLongestStandstill); left > 0 && !standstill.Passed() && !end.Passed();)
    {
        SocketCalls::DiscardInput(m_descriptor.Number());
        SocketCalls::Poll(-1, false, -1, 1);
        const std::size_t now = SocketCalls::BytesHeldBack(m_descriptor.Number());
        if (now < left)
            standstill = Deadline(kLongestStandstill);
        left = now;
    }
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
        const SocketCalls::EConnecting connecting = SocketCalls::Progress(m_descriptor.Number());
        if (connecting == SocketCalls::EConnecting::established)
            return Establish();
        if (connecting == SocketCalls::EConnecting::underWay)
        {
            if (MillisecondsOfPatience() > 0)
                return;
            m_gaveUp = true;
        }
        TryNextAddress();
    }
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
    m_peerHost = m_peer.Host();
    m_peerName = m_peer.Name();
    m_process = getpid();
    m_introduced = 0;
    m_outputLost = false;
    m_up = true;
    ++m_count;
    if (m_session == nullptr)
        return;
    m_session->Begin();
    SendIntroduction();
}

void Socket::Transport::FollowFork()
{
    if (m_forks == ForkCount())
        return;
    m_forks = ForkCount();
    if (m_session == nullptr)
        return;
    Drop();
    m_outbox.StartAnew();
    StartSession(m_bridgesOutages);
    m_started = false; // so that it connects as soon as it is wanted
    ++m_count;         // what has come in so far belongs to another connection than what will come
}

void Socket::Transport::StartSession(bool bridgesOutages)
{
    m_bridgesOutages = bridgesOutages;
    m_session = std::make_unique<SessionDelivery>(m_outbox, bridgesOutages);
}

void Socket::Transport::Close()
{
    const bool ours = m_process == getpid();
    if (m_up && ours)
        Flush(true);
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
    if (m_up && m_session != nullptr)
        m_session->End();
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

bool Socket::Transport::Flush(bool look)
{
    if (!m_up || m_outputLost || !SendIntroduction() || m_outbox.UnsentBytes() == 0)
        return false;
    if (look && SocketCalls::PeerHasEnded(m_descriptor.Number()))
        return false; // what goes to a peer that has ended is lost, what stays goes to the next
    while (m_outbox.UnsentBytes() > 0)
    {
        std::size_t sent = 0;
        const bool up = SendSome(m_outbox.Unsent(), m_outbox.UnsentBytes(), sent);
        m_outbox.Sent(sent);
        if (!up)
            LoseOutput();
        if (sent == 0)
            return false;
    }
    return true;
}

/// @return true if the connection has all of it, so that messages may follow
bool Socket::Transport::SendIntroduction()
{
    while (m_session != nullptr && m_introduced < m_session->Introduction().size())
    {
        const std::string& introduction = m_session->Introduction();
        std::size_t sent = 0;
        if (!SendSome(introduction.data() + m_introduced, introduction.size() - m_introduced, sent))
            LoseOutput();
        if (sent == 0)
            return false;
        m_introduced += sent;
    }
    return true;
}

/// @return false if the connection takes nothing any more
bool Socket::Transport::SendSome(const char* bytes, std::size_t size, std::size_t& sent)
{
    const auto result = SocketCalls::Send(m_descriptor.Number(), bytes, size);
    sent = result.bytes;
    return !result.lost;
}

void Socket::Transport::LoseOutput()
{
    if (!m_readsToTheEnd)
        return Drop();
    m_outbox.Clear();
    m_outputLost = true;
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
