// Whatever bytes come in over a connection, in pieces of whatever size, the server passes on the
// notifications among them and ends the connection at the first wrong byte.
//
// An input is two bytes, from which follow the sizes of the pieces and how the connection ends, and then the
// stream.

#include "harness/Expectation.h"
#include "harness/Input.h"

#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketServerC.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
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

/// Compares what the server tells with what the stream comes to.
class CHandler : public MPIServerHandlerC
{
public:
    void Expect(const SDecoded& decoded)
    {
        m_decoded = &decoded;
        m_connected = false;
        m_refused = false;
        m_ended = false;
        m_last = 0;
        m_passedOn = 0;
    }
    bool Connected() const { return m_connected; }
    bool Refused() const { return m_refused; }
    bool Ended() const { return m_ended; }

private:
    void PeerConnected(const MPIPeerC&) override { m_connected = true; }
    void PeerDisconnected(const MPIPeerC&) override { m_ended = true; }

    bool NotificationReceived(const MPIPeerC&, const MPINotificationC& notification) override
    {
        const auto found = m_decoded->messages.find(notification.offset);
        Fuzz::Expect(found != m_decoded->messages.end() && found->second == Encoded(notification.message),
                     "the server passes on what was sent");
        Fuzz::Expect(m_passedOn == 0 || notification.offset > m_last, "the server passes on in order");
        Fuzz::Expect(!m_refused, "nothing comes after a refusal");
        m_last = notification.offset;
        ++m_passedOn;
        return notification.name != "refuse";
    }

    void InputRefused(const MPIPeerC&, std::uint64_t offset, const std::string& reason) override
    {
        Fuzz::Expect(!m_refused && !reason.empty(), "a connection is refused once");
        m_refused = true;
        const bool wrongByte = reason == m_decoded->fault && offset == m_decoded->faultOffset;
        Fuzz::Expect(
            wrongByte || m_decoded->messages.count(offset) != 0 || m_decoded->incomplete,
            "what is refused is a wrong byte, a message that is no notification, or the end of half of one");
    }

    const SDecoded* m_decoded = nullptr; // borrowed
    bool m_connected = false;
    bool m_refused = false;
    bool m_ended = false;
    std::uint64_t m_last = 0;
    int m_passedOn = 0;
};

/// A server on a port that the system chooses, used by one connection after the other.
class CServer
{
public:
    CServer() : m_server(m_handler) { Fuzz::Expect(m_server.Listen(0), "there is a free port"); }

    /// @param reset  cut the connection at the end rather than close it
    void Run(const std::vector<std::string>& pieces, const SDecoded& decoded, bool reset)
    {
        m_handler.Expect(decoded);
        const int peer = Connect();
        ServeUntil([this] { return m_handler.Connected(); });
        for (const std::string& piece : pieces)
        {
            Send(peer, piece);
            m_server.Serve(0);
        }
        End(peer, reset);
        Fuzz::Expect(decoded.fault.empty() || m_handler.Refused() || !decoded.messages.empty(),
                     "a wrong byte is refused");
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

    void ServeUntil(const std::function<bool()>& condition)
    {
        constexpr int kMostTurns = 1000;
        for (int turn = 0; !condition(); ++turn)
        {
            Fuzz::Expect(turn < kMostTurns, "a server gets on");
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
    server.Run(pieces, decoded, seed % kClosedEvery != 0);
    return 0;
}
