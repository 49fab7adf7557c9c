#ifndef CONNECTIONS_SERVERCONNECTION_H
#define CONNECTIONS_SERVERCONNECTION_H

#include "Connections/NotificationScan.h"
#include "Connections/SessionOrder.h"
#include "Sockets/FileDescriptor.h"

#include <MPI/BDecoderC.h>
#include <MPI/MPISocketServerC.h>
#include <MPI/Socket.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// One connection that a server has accepted: passes what comes in to the server's handler, and takes what is
/// to go out, as much as is good for the memory.
class ServerConnection : public Socket
{
public:
    /// @param handler     borrowed
    /// @param order       borrowed
    /// @param descriptor  connected
    ServerConnection(MPIServerHandlerC& handler, SessionOrder& order, std::uint64_t number,
                     FileDescriptor descriptor);

    const MPIPeerC& Peer() const { return m_peer; }

    /// Passes on what is left over, or else reads once and passes that on, a batch at most. The handler is
    /// told if it was wrong, or if the connection has ended in the middle of a message. Where the handler
    /// throws, the next call goes on with what it threw for.
    /// @param buffer  to read into, borrowed for the call
    /// @return notifications passed on
    int Serve(char* buffer, std::size_t size);

    /// Is there something to be done without reading?
    bool HasWork() const { return HasLeftover() || m_message != nullptr || m_inBatch > 0 || m_ended; }

    /// How many bytes the last Serve read.
    std::size_t BytesRead() const { return m_bytesRead; }

    /// Nothing more comes from this connection: its end is only read when nothing is left over.
    bool Ended() const { return m_ended || !Up(); }
    void End() { m_ended = true; }

    /// Has the handler been told of it?
    bool Told() const { return m_told; }
    void Tell();

    /// The peer has ended its sending; what it has sent may be left to read. Seen by the loop.
    void SeeEnd() { m_endSeen = true; }

    /// Has not even the first message come from it, nor anything that waits to be read?
    bool Silent() const;

    /// How many times in a row, this one included, it was asked for and had brought nothing since.
    int QuietLooks();

    /// The session that it has introduced itself with; empty before that.
    const std::string& Session() const { return m_session; }

    /// Does it wait for a former connection of its session? Its introduction has not been told then.
    bool Held() const { return m_held; }
    void Release() { m_held = false; }

    /// Does the loop watch it? Set by the loop.
    bool Watched() const { return m_watched; }
    void Watched(bool watched) { m_watched = watched; }

    void Welcome(std::uint64_t number);

    /// To be sent when the peer has been quiet for a moment or has ended, or has sent a great deal without a
    /// pause.
    void Acknowledge(std::uint64_t number);
    bool AcknowledgementWaits() const { return m_acknowledge.has_value() && Up(); }

    /// Sends the acknowledgement that waits if nothing has come in since the last call.
    /// @return true if none waits any more
    bool AcknowledgeIfQuiet();

    /// Is it among those that the loop acknowledges later? Set by the loop.
    bool InQuietQueue() const { return m_inQuietQueue; }
    void InQuietQueue(bool inQueue) { m_inQuietQueue = inQueue; }

    bool Answer(const BElementC& message);

    /// Goes on sending, once the descriptor takes output.
    void SendWaiting();

    /// Is the loop to watch for output? Set by who watches.
    bool WatchedForOutput() const { return m_watchedForOutput; }
    void WatchedForOutput(bool watched) { m_watchedForOutput = watched; }

    /// Does it wait in the loop's queue of those with something left over? Likewise.
    bool InQueue() const { return m_inQueue; }
    void InQueue(bool inQueue) { m_inQueue = inQueue; }

private:
    struct SRefusal
    {
        std::uint64_t offset;
        std::string reason;
    };

    bool HasLeftover() const { return m_next < m_leftover.size(); }
    void TellFinished();
    void PassOnFrom(char* buffer, std::size_t size);
    void KeepForLater(std::string_view bytes);
    void PassOn(std::string_view bytes, std::size_t& done);
    std::size_t PassOnScanned(std::string_view bytes);
    std::size_t Decode(std::string_view bytes);
    void PassOnMessage();
    void PassOnDecoded(const BDictionaryC& message, std::uint64_t offset);
    void Introduce(const BListC& arguments, std::uint64_t offset);
    void TellIntroduction();
    void NotePassedOn(bool goesOn);
    bool ReadNumber(const BDictionaryC& message, std::uint64_t& number) const;
    void Refuse(std::uint64_t offset, const std::string& reason);
    void Conclude();
    void SendAcknowledgement();
    void Send(std::string_view key, std::uint64_t number);

    MPIServerHandlerC& m_handler;
    SessionOrder& m_order;
    MPIPeerC m_peer;
    bool m_told = false;
    bool m_endSeen = false;
    std::string m_session;
    bool m_held = false;
    NotificationScan m_scan;
    BDecoderC m_decoder;
    std::uint64_t m_scanned = 0; // bytes of the stream that the decoder has not seen
    std::string m_leftover;      // read, but beyond a batch; from m_next on
    std::size_t m_next = 0;
    std::size_t m_bytesRead = 0;
    std::unique_ptr<BDictionaryC> m_message;    // decoded, but not taken by the handler yet
    std::uint64_t m_messages = 0;               // so far
    bool m_ended = false;                       // by the handler, or by us because of what has come in
    std::optional<SRefusal> m_refusal;          // to be told
    int m_passedOn = 0;                         // by this Serve
    int m_inBatch = 0;                          // since the handler has taken the end of one
    std::optional<std::uint64_t> m_acknowledge; // to be sent
    std::size_t m_unacknowledgedBytes = 0;      // read since one was sent last
    bool m_readLately = false;
    int m_quietLooks = 0;
    bool m_inQuietQueue = false;
    bool m_watched = true;
    bool m_watchedForOutput = false;
    bool m_inQueue = false;
};

#endif
