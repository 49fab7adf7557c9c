#ifndef MPI_MPISOCKETSERVERC_H
#define MPI_MPISOCKETSERVERC_H

#include <Core/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class BDictionaryC;
class BElementC;
class BListC;

/// One connection to a server, as its handler sees it.
struct CORE_EXPORT MPIPeerC
{
    std::uint64_t connection; ///< counts from 1 in the order of arrival; never used twice by a server
    std::string name;         ///< "127.0.0.1:40312" or "[::1]:40312"; "unknown" if it had gone already
    std::string session = {}; ///< 32 hexadecimal digits; empty as long as the peer has not introduced itself
};

/// A notification that a server has received; everything is borrowed for the call.
struct CORE_EXPORT MPINotificationC
{
    const std::string& name;     ///< such as "RaiseError"
    const BListC& arguments;     ///< in the order sent; empty if there are none
    const BDictionaryC& message; ///< all of it: the two above and whatever else the sender put in
    std::uint64_t offset; ///< of the message's first byte, counted in bytes from the connection's beginning
    /// Its "seq", from 1 on; 0 if it has none. One that does not rise is passed on all the same: a client
    /// that sends again what it does not know to be applied does so, and who keeps account skips it.
    std::uint64_t number = 0;
};

/// A notification whose arguments are numbers, up to kMaximumCount of them, and that has nothing beyond those
/// and its own number: most are. No elements are made for it. Everything is borrowed for the call.
struct CORE_EXPORT MPINumbersC
{
    /// Notifications with more arguments come as elements.
    static constexpr std::size_t kMaximumCount = 16;

    std::string_view name;         ///< as in MPINotificationC
    const std::int64_t* arguments; ///< `count` of them, in the order sent
    std::size_t count;             ///< of arguments
    std::uint64_t offset;          ///< as in MPINotificationC
    std::uint64_t number;          ///< likewise
};

/// What a server tells its owner. All calls come from within MPISocketServerC::Serve or Close, on that
/// thread.
class CORE_EXPORT MPIServerHandlerC
{
public:
    virtual ~MPIServerHandlerC();

    /// Somebody has connected. Does nothing by default.
    virtual void PeerConnected(const MPIPeerC& peer);

    /// The peer has introduced itself ("Hello"), which only the first message of a connection can do: from
    /// here on `peer.session` tells who it is, over all its connections. A handler that keeps account of
    /// sessions answers with MPISocketServerC::Welcome, now or later. Does nothing by default, and a peer
    /// that is not welcomed expects no acknowledgements.
    virtual void PeerIntroduced(const MPIPeerC& peer);

    /// A notification has come in; those of one connection come in the order in which they were sent.
    /// @return false to refuse it: that connection is closed, and what else it has sent is not read
    virtual bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) = 0;

    /// A notification of numbers has come in. Makes the elements and calls NotificationReceived by default;
    /// handlers in a hurry do without.
    /// @return as NotificationReceived
    virtual bool NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification);

    /// A connection has had its turn: MPISocketServerC::kBatchMessages notifications have come from it, or
    /// what was read of it is used up. Called after each turn in which there were any, before anything else
    /// is told of this connection: the moment to apply and acknowledge them together. Does nothing by
    /// default.
    virtual void BatchEnded(const MPIPeerC& peer);

    /// The peer has ended its own sending, between two messages, and all that it sent was handed over. It may
    /// still read: what is sent to it before this returns goes out, then the connection is closed
    /// (PeerDisconnected). Does nothing by default.
    virtual void PeerFinished(const MPIPeerC& peer);

    /// A connection has sent something that is no notification, or has ended in the middle of one, and is
    /// closed. That includes an introduction that is malformed, repeated, or not the first message, and a
    /// "seq" that is not a number from 1 on.
    /// @param offset  of the first wrong byte; of the first byte of a message that is wrong as a whole; or of
    ///                the end. Counted in bytes from the connection's beginning
    /// @param reason  in words, without the peer and the offset
    virtual void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) = 0;

    /// A connection was turned away because there are as many as may be, or the process has no descriptors
    /// left; its number is 0. Or it has had to give way to a new one, see MPISocketServerC: then it has ended
    /// (PeerDisconnected), and keeps its number here. Does nothing by default.
    virtual void PeerTurnedAway(const MPIPeerC& peer);

    /// A connection has ended, for whatever reason; nothing more comes from it. Does nothing by default.
    virtual void PeerDisconnected(const MPIPeerC& peer);
};

/// The receiving end of message connections, for the process that owns the error state.
///
/// Everything happens within Serve, which hands what comes in to a handler. Connections of one session are
/// heard one after the other: a second one that introduces itself with it waits until the first has ended or
/// has had nothing to say for half a second. A connection that sends nonsense is closed by itself; no
/// connection holds up another: each gets a turn of kBatchMessages at most, and what comes in meanwhile from
/// those without anything left over goes first. When there are as many connections as may be, one more takes
/// the place of the one that has been up longest without ever sending a whole message; only if all have sent
/// some is it turned away. Memory per connection is bounded, in both directions: a peer
/// that does not read gets only the last of its acknowledgements, and no answers.
///
/// Ownership: the handler is borrowed.
/// Threads: none inside; one thread at a time.
class CORE_EXPORT MPISocketServerC
{
public:
    static constexpr std::size_t kMaximumConnections = 256; ///< unless told otherwise
    /// Notifications of one connection that are handed over before the others get their turn.
    static constexpr int kBatchMessages = 1024;

    /// A server that does not listen yet.
    /// @param handler  borrowed; must live as long as the server
    explicit MPISocketServerC(MPIServerHandlerC& handler);
    ~MPISocketServerC(); ///< closes like Close, but without telling the handler
    MPISocketServerC(const MPISocketServerC&) = delete;
    MPISocketServerC& operator=(const MPISocketServerC&) = delete;

    /// How many connections may be up. Fewer than there are ends none.
    std::size_t MaximumConnections() const;
    /// Sets how many may be up.
    void MaximumConnections(std::size_t count);

    /// Listens on the loopback only: on 127.0.0.1, and on ::1 where there is one.
    /// @param port  0 lets the system choose; Port tells which it was
    /// @return false if a port is in use or can't be had, Error tells why and nothing listens; also if it
    /// listens
    ///         already, which goes on then
    bool Listen(unsigned short port);

    /// The port that the server listens on; 0 if it does not.
    unsigned short Port() const;

    /// Why Listen or Serve failed last, such as "port 5300 on 127.0.0.1: Address already in use"; empty if it
    /// did not.
    ///
    /// Also set, for one turn and without making it fail, when the system begins to refuse connections, for
    /// want of memory for example: "accept: Cannot allocate memory". Nobody is accepted for 100 ms then, and
    /// so on for as long as it lasts; those who are connected are served. It is not told again before the
    /// next connection has been accepted.
    const std::string& Error() const;

    /// A descriptor that has input (poll(2), epoll(7)) whenever Serve has something to do. The same for the
    /// life of the server; -1 if the system would not give one.
    int Descriptor() const;

    /// One turn: accepts who has connected, reads what has come in and tells the handler. Not to be called,
    /// nor the server destroyed, from within the handler.
    ///
    /// What the handler throws comes out. Nothing is lost by that: the next turn goes on where this one was,
    /// and tells again what the handler threw for.
    /// @param timeoutMilliseconds  how long to wait for something to do; 0 does not wait, -1 waits without
    /// limit.
    ///                             A signal ends the wait
    /// @return notifications handed over, 0 or more; -1 if the system refused, Error tells why
    int Serve(int timeoutMilliseconds);

    /// Is Serve to rest for some 50 us after a turn in which much has come in, even if it is told not to
    /// wait? Then more comes in larger pieces, which costs each message less. It does so anyway if it may
    /// wait. For a program that polls Descriptor itself and then calls Serve(0). Off at first.
    bool GathersInput() const;
    /// Switches that rest on or off.
    void GathersInput(bool gathersInput);

    /// Answers an introduction: everything of that session up to `number` has been applied, and what comes
    /// will be acknowledged. To be called once for a connection, before any Acknowledge for it; may be called
    /// from within the handler. Nothing happens if the connection has ended.
    void Welcome(std::uint64_t connection, std::uint64_t number);

    /// Tells a peer that everything of its session up to `number` is applied and kept. It is sent when
    /// nothing has come from the peer for some milliseconds, or a good deal without a pause: a peer that has
    /// just ended would lose what its system still had to send. Of several that wait the last is sent. May be
    /// called from within the handler. Nothing happens if the connection has ended.
    void Acknowledge(std::uint64_t connection, std::uint64_t number);

    /// Sends a peer any message, such as the answer to a question. May be called from within the handler.
    /// @param message  borrowed
    /// @return false if the connection has ended, the peer has not yet taken what it was sent before, or the
    ///         message is beyond the limits of BDecoderC; nothing is sent then
    bool Answer(std::uint64_t connection, const BElementC& message);

    /// Connections that are up.
    std::size_t ConnectionCount() const;

    /// Stops listening and ends all connections; the handler is told of each. Listen may follow. From within
    /// the handler it does so at the end of the turn, before Serve returns: no more is handed over, and
    /// Listen is false until then.
    ///
    /// Where the handler throws meanwhile, some may be left: another call ends those, and so does the next
    /// Serve if Close was called from within the handler.
    void Close();

private:
    class CORE_LOCAL Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

#endif
