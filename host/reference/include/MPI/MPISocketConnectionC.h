#ifndef MPI_MPISOCKETCONNECTIONC_H
#define MPI_MPISOCKETCONNECTIONC_H

#include <Core/Export.h>
#include <MPI/BDecoderC.h>
#include <MPI/BEncoderC.h>
#include <MPI/Socket.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

class BDictionaryC;
class BElementC;
class BListC;

/// A connection over which two programs send each other messages: named notifications with arguments.
///
/// On the wire a notification is the bencoded dictionary {"args": [...], "name": "..."}. A client's are
/// numbered, {"args": [...], "name": "...", "seq": n}, and delivered with confirmation; see MPISocketClientC.
///
/// Ownership: arguments and messages passed by pointer are borrowed.
/// Failure: input that is no message, or too large or too deep a one, closes the connection; Refused and the
/// operations after it tell what was wrong until the next connection.
class CORE_EXPORT MPISocketConnectionC : public Socket
{
public:
    /// What is registered for a notification gets its arguments, borrowed for the call.
    using Callback = std::function<void(BListC* arguments)>;

    /// One call of ProcessMessages reads no more than about this many bytes, so that a busy peer leaves time
    /// for others.
    static constexpr std::size_t kTurnBytes = 65536;

    MPISocketConnectionC();
    ~MPISocketConnectionC() override;

    /// Is the connection up, and has the peer not closed it? A peer that has ended its own sending counts as
    /// gone.
    bool Connected() override;

    /// Gives the connection up for good: closes it and forgets the outbox, unread input and where to connect.
    virtual void Destroy();

    /// Calls what was registered for `name`.
    /// @return false if nothing was
    virtual bool DoCallback(const std::string& name, BListC* arguments);

    /// Called for a notification that nothing was registered for. Does nothing by default.
    /// @return false if it means nothing here, either
    virtual bool DoClientCallback(const std::string& name, BListC* arguments);

    /// One turn: does what is due (CheckCallbacks), then reads what has come in and passes every whole
    /// message to MessageReceived. Called from inside a turn it does nothing.
    /// @param wait  with nothing to read yet, wait for it as long as SetTimeout says, and call Idle if it
    /// does not
    ///              come; the wait may end early
    /// @return messages passed on
    virtual int ProcessMessages(bool wait);

    /// Called by each turn first. Sends what waits in the outbox.
    virtual void CheckCallbacks();

    /// How long the operations told to wait do so, in milliseconds; -1 is without limit. 1000 at first.
    virtual void SetTimeout(int timeoutMilliseconds) { m_timeout = timeoutMilliseconds; }

    /// Sends an encoded message, or keeps it until there is a connection again.
    /// @param message  borrowed, not null
    /// @return false if the connection is not up, the outbox full, or the message beyond the limits of
    /// BDecoderC;
    ///         nothing is sent or kept then
    virtual bool SendMessage(BEncoderC* message);

    /// Encodes an element and sends it with SendMessage.
    /// @param element  borrowed, not null
    virtual bool SendMessageElement(BElementC* element);

    /// The next message; null if there is none. May be called from everywhere, the operations that tell of
    /// input or a loss included.
    /// @param wait  wait for one as long as SetTimeout says; then what the turn may read is not limited
    virtual std::unique_ptr<BDictionaryC> ReceiveMessage(bool wait);

    /// Called with every message of a turn. Passes the arguments of a notification to DoCallback, and if that
    /// finds nothing to DoClientCallback; other messages are ignored.
    /// @param message  borrowed, not null
    virtual void MessageReceived(BDictionaryC* message);

    /// Sends a notification; see SendMessage. A client's is also accepted, and kept, without a connection as
    /// long as its session is as good as one (MPISocketClientC::VerifyConnection).
    /// @param arguments  borrowed; null is an empty list
    /// @return as SendMessage
    bool SendNotification(const std::string& name, BListC* arguments);

    /// Between the two, messages are gathered in the outbox and sent in large pieces, the last by the last
    /// EndBatch. For many messages in a row; whether each can be sent is found out as without. May be nested.
    void BeginBatch();
    /// Ends the batch begun last.
    void EndBatch();

    /// Has the outbox room for a message of the largest size?
    bool HasRoom() const;

    /// Has the receiver at the other end welcomed this client's session? Then it acknowledges notifications.
    bool Welcomed() const;

    /// Notifications accepted but not yet taken by the system whole, of this connection after a loss.
    std::size_t WaitingCount() const;

    /// Notifications that the system has taken whole at least once.
    std::uint64_t SentCount() const;

    /// Notifications accepted and neither acknowledged nor given up; all of them, if the receiver
    /// acknowledges nothing. Each that was accepted is one of the three: acknowledged, counted here, or in
    /// GivenUpCount.
    std::uint64_t UnacknowledgedCount() const;

    /// Notifications given up over the life of this object: they will not be sent again, and whether they
    /// have arrived nobody can say. There are none but
    ///  - those that a connection without a welcome took before it was lost, and that the next receiver to
    ///    welcome has not said to have applied before others followed them over another connection, or for
    ///    which the outbox had no room any more;
    ///  - those that Destroy forgot.
    /// They count from that next welcome on, or from Destroy; before it they are unacknowledged.
    std::uint64_t GivenUpCount() const;

    /// Waits until every notification accepted so far is acknowledged or given up, connecting again and
    /// sending again as VerifyConnection would. For programs that report and end: an acknowledged
    /// notification has arrived. From within a turn it only looks.
    /// @param timeoutMilliseconds  the longest wait; 0 only looks, -1 waits without limit
    /// @return true if all that were ever accepted are acknowledged, also if there were none; false if the
    ///         time is over, if the connection is lost and not made again by itself, or if there are any that
    ///         were given up
    bool WaitUntilAcknowledged(int timeoutMilliseconds);

    /// Registers what to call for a notification; it takes the place of what was registered before.
    void RegisterCallback(const std::string& name, Callback callback);

    /// True if this or, before the next one, the last connection was closed because of its input.
    bool Refused() const { return m_decoder.Failed(); }

    /// What was wrong, in words; empty if nothing was.
    const std::string& RefusalReason() const { return m_decoder.FaultReason(); }
    /// Where: the first wrong byte, counted from the beginning of the connection.
    std::uint64_t RefusalOffset() const { return m_decoder.FaultOffset(); }

protected:
    /// The batch that is under way, never the same one twice in a row; 0 if none is.
    unsigned Batch() const { return m_batches > 0 ? m_batch : 0; }

    /// Are notifications accepted without a connection?
    bool Bridges() const;

    /// Was somebody told last that a notification can be sent? Then the next one is accepted even if the
    /// connection is lost before it comes, and goes to the next.
    void PromiseToAccept(bool promised) { m_promised = promised; }

    /// Is a lost connection made again from CheckCallbacks? No at first.
    bool ConnectsAgain() const { return m_connectsAgain; }
    /// Sets whether it is.
    void ConnectsAgain(bool connectsAgain) { m_connectsAgain = connectsAgain; }

private:
    bool SendEncoded(BEncoderC& encoder, const std::string& name, BListC* arguments);
    bool SendNumbered(const std::string& message, std::uint64_t number);
    void FlushUnlessGathering(bool look);
    void Hear(const BDictionaryC& message);
    std::unique_ptr<BDictionaryC> DecodeBuffered();
    bool ReadMore(bool limited);
    int HandleMessages();
    int WaitingTime() const;
    void FollowConnection();
    void ForgetInput();

    int m_timeout = 1000;
    bool m_inTurn = false;
    bool m_connectsAgain = false;
    int m_batches = 0;    // begun and not ended
    unsigned m_batch = 1; // the outermost of them, or the last; odd, and so never 0 however many there were
    BEncoderC m_encoder;  // of notifications, so that its memory is used again
    bool m_encoding = false;
    bool m_promised = false;
    const BEncoderC* m_numbered = nullptr; // holds the notification of m_number on its way to SendMessage
    std::uint64_t m_number = 0;
    std::size_t m_turnBytes = 0; // read during this turn
    unsigned m_connection = 0;   // the one that input and decoder belong to
    std::string m_input;         // read, decoded up to m_decoded
    std::size_t m_decoded = 0;
    BDecoderC m_decoder;
    std::map<std::string, Callback> m_callbacks;
};

#endif
