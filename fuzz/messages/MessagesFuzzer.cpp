// Whatever bytes come in over a connection, in pieces of whatever size, the server passes on all
// notifications among them, no others, and ends the connection at the first wrong byte.
//
// An input is two bytes, from which follow the sizes of the pieces and how the connection ends, and then the
// stream.

#include "harness/Expectation.h"
#include "harness/Input.h"
#include "messages/ServerModel.h"
#include "support/wire/HostElements.h"

#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketServerC.h>

#include <arpa/inet.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr unsigned kClosedEvery = 16;    // of so many connections one is closed, the others are cut
constexpr int kServeMilliseconds = 5000; // far more than it takes; without anything to do it is a finding
constexpr int kMostTurns = 1000;         // for what a server has to do
constexpr int kReadMilliseconds = 5000;  // likewise, to read what was sent

/// What a stream comes to.
struct SDecoded
{
    std::map<std::uint64_t, std::string> messages; // by their offset, encoded again
    std::string fault;                             // empty if there is none
    std::uint64_t faultOffset = 0;
    bool incomplete = false;

    bool operator==(const SDecoded& other) const
    {
        return messages == other.messages && fault == other.fault && faultOffset == other.faultOffset &&
               incomplete == other.incomplete;
    }
};

std::string Encoded(const BElementC& element)
{
    BEncoderC encoder;
    encoder.Element(element);
    Fuzz::Expect(encoder.Depth() <= BDecoderC::kMaximumDepth, "no message is too deep");
    return encoder.Bytes();
}

void Feed(BDecoderC& decoder, const std::string& piece, SDecoded& decoded)
{
    std::size_t taken = 0;
    while (taken < piece.size() && !decoder.Failed())
    {
        taken += decoder.Feed(piece.data() + taken, piece.size() - taken);
        if (const auto message = decoder.TakeMessage())
            decoded.messages[decoder.MessageOffset()] = Encoded(*message);
    }
}

SDecoded Decode(const std::vector<std::string>& pieces)
{
    BDecoderC decoder;
    SDecoded decoded;
    for (const std::string& piece : pieces)
        Feed(decoder, piece, decoded);
    decoded.fault = decoder.FaultReason();
    decoded.faultOffset = decoder.FaultOffset();
    decoded.incomplete = decoder.Incomplete();
    return decoded;
}

std::vector<std::string> Cut(const std::string& stream, unsigned seed)
{
    std::minstd_rand random(seed);
    const std::size_t most = 1U << random() % 12U;
    std::vector<std::string> pieces;
    for (std::size_t begin = 0; begin < stream.size(); begin += pieces.back().size())
        pieces.push_back(stream.substr(begin, 1 + random() % most));
    return pieces;
}

/// A message that was decoded and encoded again decodes to itself.
void CheckMessages(const SDecoded& decoded)
{
    for (const auto& entry : decoded.messages)
    {
        const SDecoded again = Decode({entry.second});
        Fuzz::Expect(again.messages.size() == 1 && again.messages.begin()->second == entry.second,
                     "what was decoded can be encoded");
    }
}

/// The decoder finds what the plain reader of the format finds.
void CheckDecoded(const SDecoded& decoded, const Support::SWireStream& stream)
{
    Fuzz::Expect(decoded.messages.size() == stream.messages.size(), "as many messages as there are");
    for (const Support::SWireMessage& message : stream.messages)
    {
        const auto found = decoded.messages.find(message.offset);
        Fuzz::Expect(found != decoded.messages.end(), "a message is where it begins");
        const Support::SWireStream again = Support::ReadWire(found->second);
        Fuzz::Expect(again.messages.size() == 1 &&
                         Support::Shown(again.messages[0].content) == Support::Shown(message.content),
                     "a message is what was sent");
    }
    Fuzz::Expect(decoded.fault.empty() == (stream.end != Support::eweWrong), "wrong bytes are found");
    Fuzz::Expect(decoded.fault.empty() || decoded.faultOffset == stream.endOffset, "the first one is");
    Fuzz::Expect(decoded.incomplete == (stream.end == Support::eweCutOff), "half a message is no message");
}

/// Compares what the server tells with what it has to tell.
class CHandler : public MPIServerHandlerC
{
public:
    /// @param expected  borrowed
    /// @param fault     what is wrong with the stream's first wrong byte; borrowed
    void Expect(const Fuzz::SConnection& expected, const std::string& fault)
    {
        m_expected = &expected;
        m_fault = &fault;
        m_connected = false;
        m_introduced = false;
        m_refused = false;
        m_ended = false;
        m_passedOn = 0;
    }

    /// To be called once the connection has ended.
    void ExpectAllTold() const
    {
        Fuzz::Expect(m_passedOn == m_expected->notifications.size(),
                     "the server passes on all that was sent");
        Fuzz::Expect(m_introduced == !m_expected->session.empty(), "the server tells who has said so");
        Fuzz::Expect(m_refused == m_expected->refused, "the server refuses what is wrong");
    }

    bool Connected() const { return m_connected; }
    bool Ended() const { return m_ended; }

private:
    void PeerConnected(const MPIPeerC&) override { m_connected = true; }
    void PeerDisconnected(const MPIPeerC&) override { m_ended = true; }

    void PeerIntroduced(const MPIPeerC& peer) override
    {
        Fuzz::Expect(!m_introduced && m_passedOn == 0, "an introduction comes once, and first");
        Fuzz::Expect(!m_expected->session.empty() && peer.session == m_expected->session,
                     "the server tells whom it has been told");
        m_introduced = true;
    }

    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override
    {
        Fuzz::Expect(!m_refused, "nothing comes after a refusal");
        Fuzz::Expect(m_passedOn < m_expected->notifications.size(), "the server makes nothing up");
        const Fuzz::SNotification received = {notification.offset,
                                              notification.name,
                                              Support::Shown(Support::WireElementOf(notification.arguments)),
                                              Support::Shown(Support::WireElementOf(notification.message)),
                                              notification.number,
                                              peer.session};
        Fuzz::Expect(received == m_expected->notifications[m_passedOn],
                     "the server passes on what was sent, in order");
        ++m_passedOn;
        return notification.name != Fuzz::kRefusedByHandler;
    }

    void InputRefused(const MPIPeerC&, std::uint64_t offset, const std::string& reason) override
    {
        Fuzz::Expect(!m_refused && !reason.empty(), "a connection is refused once");
        m_refused = true;
        Fuzz::Expect(
            m_expected->refused && offset == m_expected->refusalOffset,
            "what is refused is a wrong byte, a message that is no notification, or the end of half of one");
        Fuzz::Expect(!m_expected->wrongByte || reason == *m_fault,
                     "the server says what is wrong with a byte");
        Fuzz::Expect(m_passedOn == m_expected->notifications.size(), "what was right is passed on before");
    }

    const Fuzz::SConnection* m_expected = nullptr; // borrowed
    const std::string* m_fault = nullptr;          // likewise
    bool m_connected = false;
    bool m_introduced = false;
    bool m_refused = false;
    bool m_ended = false;
    std::size_t m_passedOn = 0;
};

/// A server on a port that the system chooses, used by one connection after the other.
class CServer
{
public:
    CServer() : m_server(m_handler) { Fuzz::Expect(m_server.Listen(0), "there is a free port"); }

    /// @param reset  cut the connection at the end rather than close it
    void Run(const std::vector<std::string>& pieces, const Fuzz::SConnection& expected,
             const std::string& fault, bool reset)
    {
        m_handler.Expect(expected, fault);
        const int peer = Connect();
        ServeUntil([this] { return m_handler.Connected(); });
        for (const std::string& piece : pieces)
        {
            Send(peer, piece);
            m_server.Serve(0);
        }
        End(peer, reset);
        m_handler.ExpectAllTold();
        Fuzz::Expect(m_server.ConnectionCount() == 0, "a connection that has ended is gone");
    }

private:
    /// Connects from one address of the loopback after the other: the system keeps the port of a connection
    /// that was closed for a minute, and one address has not ports enough.
    int Connect()
    {
        const int peer = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int later = 1; // the port is chosen on connecting
        setsockopt(peer, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &later, sizeof later);
        const sockaddr_in own = Address(INADDR_LOOPBACK + 1 + ++m_connections % 0xFFFF, 0);
        const sockaddr_in server = Address(INADDR_LOOPBACK, m_server.Port());
        const bool bound = bind(peer, reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0;
        Fuzz::Expect(bound && ConnectTo(peer, server), "the server can be connected to");
        return peer;
    }

    /// libFuzzer's timer may interrupt the call; the connection is made all the same.
    static bool ConnectTo(int peer, const sockaddr_in& server)
    {
        if (connect(peer, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0)
            return true;
        if (errno != EINTR)
            return false;
        pollfd waiting = {peer, POLLOUT, 0};
        while (poll(&waiting, 1, -1) < 0 && errno == EINTR)
            continue;
        int error = 0;
        socklen_t size = sizeof error;
        return getsockopt(peer, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    }

    /// Sends as much as the server takes: it may have had enough.
    static void Send(int peer, const std::string& piece)
    {
        for (std::size_t sent = 0; sent < piece.size();)
        {
            const ssize_t bytes = send(peer, piece.data() + sent, piece.size() - sent, MSG_NOSIGNAL);
            if (bytes < 0 && errno != EINTR)
                return;
            sent += bytes < 0 ? 0 : static_cast<std::size_t>(bytes);
        }
    }

    static sockaddr_in Address(std::uint32_t host, std::uint16_t port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(host);
        return address;
    }

    void End(int peer, bool reset)
    {
        if (reset)
            ServeAll(peer);
        const linger cut = {reset ? 1 : 0, 0};
        setsockopt(peer, SOL_SOCKET, SO_LINGER, &cut, sizeof cut);
        if (reset)
            close(peer);
        else
            shutdown(peer, SHUT_WR);
        ServeUntil([this] { return m_handler.Ended(); });
        if (!reset)
            close(peer);
    }

    /// Lets the server read what was sent: of a connection that is cut the rest is lost.
    void ServeAll(int peer)
    {
        int turn = 0;
        while (!m_handler.Ended() && (Unacknowledged(peer) || HasInput(m_server.Descriptor(), 0)))
        {
            Fuzz::Expect(++turn < kReadMilliseconds, "a server reads");
            HasInput(m_server.Descriptor(), 1);
            Fuzz::Expect(m_server.Serve(0) >= 0, "a server's turn succeeds");
        }
    }

    /// Is something of what was sent still under way?
    static bool Unacknowledged(int peer)
    {
        int bytes = 0;
        Fuzz::Expect(ioctl(peer, SIOCOUTQ, &bytes) == 0, "a connection can be asked what it still has");
        return bytes > 0;
    }

    /// @return true also if the wait was interrupted
    static bool HasInput(int descriptor, int timeoutMilliseconds)
    {
        pollfd waiting = {descriptor, POLLIN, 0};
        return poll(&waiting, 1, timeoutMilliseconds) != 0;
    }

    void ServeUntil(const std::function<bool()>& condition)
    {
        for (int turn = 0; !condition(); ++turn)
        {
            Fuzz::Expect(turn < kMostTurns && HasInput(m_server.Descriptor(), kServeMilliseconds),
                         "a server gets on");
            Fuzz::Expect(m_server.Serve(kServeMilliseconds) >= 0, "a server's turn succeeds");
        }
    }

    CHandler m_handler;
    MPISocketServerC m_server;
    std::uint32_t m_connections = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static CServer server;
    Fuzz::CInput input(bytes, size);
    const unsigned seed = input.Word();
    const std::string stream = input.Rest();
    const std::vector<std::string> pieces = Cut(stream, seed);
    const SDecoded decoded = Decode({stream});
    Fuzz::Expect(Decode(pieces) == decoded, "it does not matter how a stream is cut");
    CheckMessages(decoded);
    const Support::SWireStream plainlyRead = Support::ReadWire(stream);
    CheckDecoded(decoded, plainlyRead);
    server.Run(pieces, Fuzz::ExpectedOf(plainlyRead), decoded.fault, seed % kClosedEvery != 0);
    return 0;
}
