#ifndef MPI_SOCKET_H
#define MPI_SOCKET_H

#include <Core/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class MessageOutbox;
class SessionDelivery;

/// A TCP connection that never keeps its owner waiting unless it is told to.
///
/// What is sent goes out as whole messages: those that the kernel has no room for wait in an outbox, in
/// order, and survive the loss of the connection. One that was cut off by the loss starts again from its
/// first byte.
///
/// The virtual operations are declared in a fixed order, destructor first: programs built against one version
/// of the host run with another. Append only.
///
/// Ownership: the socket owns its descriptor.
/// Threads: none inside; one thread at a time per object.
/// Failure: nothing is printed, no signal is raised (no SIGPIPE); a connection that fails is not Connected.
class CORE_EXPORT Socket
{
public:
    /// The outbox holds this many bytes, the message being sent and those kept for sending again included.
    static constexpr std::size_t kOutboxBytes = 1048576; // 1 MiB

    /// So many bytes are read at once.
    static constexpr std::size_t kReadBytes = 16384;

    Socket();

    /// Hands the kernel what it takes of the outbox, reads away what is pending (unread input would make the
    /// kernel cut off what we sent), then shuts writing down and closes. Does not wait for anybody; only
    /// where the peer acknowledges notifications, the kernel is given 500 ms to pass on what it has, as long
    /// as it gets on with it within 100 ms. In a process forked since the connection was made, it and Close
    /// only close the copy of the descriptor: the connection and the outbox are the parent's.
    virtual ~Socket();

    /// Called by a wait that has ended without any input.
    virtual void Idle() {}

    /// Takes over a connected stream socket, such as accept(2) returns; the connection held before is closed.
    /// @param descriptor  owned from here on; if negative, or the one held already, nothing happens
    virtual void Accept(int descriptor);

    /// Starts connecting anew to where Connect went last; the connection held before is closed.
    /// @param timeoutMilliseconds  as for Connect
    /// @return as Connect; false if there was no Connect
    virtual bool Reconnect(int timeoutMilliseconds);

    /// Is the connection up? A connection being made is looked after, without waiting.
    virtual bool Connected();

    /// Another descriptor that a wait should watch for input; negative if none, which is the default.
    virtual int GetExtraReader();

    /// Called by a wait when the extra descriptor has input. Does nothing by default.
    virtual void ReadExtra();

    /// Called after bytes have come in. Does nothing by default.
    virtual void DataReceived();
    /// Called behind DataReceived, with the peer that they came from. Does nothing by default.
    virtual void DataReceivedFrom(std::string address, unsigned short port);

    /// Called when the outbox has become empty: the kernel has everything. Does nothing by default.
    virtual void DataSent();

    /// Called when a connection that was up is so no more. Does nothing by default. Not called by the
    /// destructor.
    virtual void Disconnected();

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    /// Connects to a port; the connection held before is closed. What waits in the outbox goes to the new
    /// one.
    ///
    /// No name service is asked: `host` is a numeric IPv4 or IPv6 address, or "localhost", which is 127.0.0.1
    /// and, if that refuses or does not answer within a second, ::1. While an address does not answer, it is
    /// tried anew each second.
    /// @param timeoutMilliseconds  how long to wait for the connection; -1: start it and return, whatever
    /// follows
    ///                             is found out by Connected
    /// @return true if the connection is up, or with -1, if it is up or being made. A connection that is not
    /// up when
    ///         the time is over goes on being made
    bool Connect(const std::string& host, unsigned short port, int timeoutMilliseconds);

    /// Sends what can be sent without waiting and closes. What waits in the outbox stays there.
    void Close();

    /// The socket, for poll(2): for input always, for output while Sending(). -1 without a connection.
    /// Changes when the connection does, so ask each time.
    int Descriptor() const;

    /// True while there is something to do as soon as the descriptor takes output: a connection is being
    /// made, or messages wait in the outbox of one that is up.
    bool Sending() const;

    /// The bytes waiting in the outbox.
    std::size_t BytesWaiting() const;

    /// The other end as "127.0.0.1:5300" or "[::1]:5300", or "unknown" if it had gone before it could be
    /// asked for; empty without a connection. Once lost, no longer known.
    const std::string& PeerName() const;

protected:
    /// Puts a whole message into the outbox; Flush sends it.
    /// @param number  in the session, if it has one; such a message stays until it is acknowledged
    /// @return false if the outbox has no room for it; nothing of it is kept then
    bool Queue(const std::string& message, std::uint64_t number);

    /// Sends what can be sent of the outbox without waiting. Without a connection nothing happens.
    /// @param look  look at the connection first, and send nothing to a peer that has ended its own sending
    void Flush(bool look);

    /// From here on every connection begins with an introduction, and what is sent with a number is looked
    /// after beyond the connection's end.
    void StartSession(bool bridgesOutages);
    SessionDelivery* Session() const; ///< null without

    /// What waits to be sent.
    const MessageOutbox& Outbox() const;

    /// While on, small messages go out at once. Off, they may wait until the peer's system has acknowledged
    /// those before. On for each new connection.
    void SendWithoutDelay(bool on);

    /// From here on a connection that takes no more output is read to its end before it counts as lost.
    void ReadToTheEnd();

    /// Is there a connection? Looks at nothing.
    bool Up() const;

    /// Forgets all messages in the outbox.
    void DropOutbox();

    /// Reads what is there without waiting, up to kReadBytes. A connection that the peer has closed is found
    /// out here.
    /// @param input  replaced, before anything is told to DataReceived and the operations after it
    /// @return the bytes read, 0 if there were none
    std::size_t Receive(std::string& input);

    /// The same into memory of the caller's, without telling anybody but, of a loss, Disconnected.
    std::size_t Receive(char* buffer, std::size_t size);

    /// Waits until the socket has input, can go on sending, or the time is over, and serves the extra reader.
    /// @param timeoutMilliseconds  0 only looks; -1 waits without limit
    /// @return true if anything of that happened
    bool Wait(int timeoutMilliseconds);

    /// Closes and forgets where to connect.
    void Forget();

    /// Has the peer of a connection ended its own sending, or the connection been cut? Input may be left to
    /// read.
    bool PeerHasEnded() const;

    /// How many connections this object has had, the present one included.
    unsigned ConnectionCount() const;

    /// How often Connect, Reconnect or Accept have begun something new.
    unsigned AttemptCount() const;

    /// Milliseconds since connecting was last tried; the greatest int if it never was or that long ago.
    int MillisecondsSinceAttempt() const;

private:
    class CORE_LOCAL Transport;

    Transport& Own() const;
    void ReportLoss();

    std::unique_ptr<Transport> m_transport;
};

#endif
