#ifndef MPI_MPISOCKETCLIENTC_H
#define MPI_MPISOCKETCLIENTC_H

#include <Core/Export.h>
#include <MPI/MPISocketConnectionC.h>

#include <chrono>
#include <cstdint>

/// The connecting end of a message connection, which connects again when the connection is lost.
///
/// Notifications are delivered with confirmation where the receiver knows how. Each connection begins with an
/// introduction, {"args": [id], "name": "Hello"}, the id being 32 hexadecimal digits that are this object's
/// alone, and each notification has a number, 1, 2, 3 ... over the life of the object. A receiver that keeps
/// account answers {"welcome": n}, having applied this session up to n, and tells {"ack": n} from time to
/// time. Once welcomed, every notification is kept until it is acknowledged, and what is not goes out again,
/// in order, after the welcome on the next connection. So a receiver that is killed and started again costs
/// nothing. One that does not answer gets everything at once and nothing twice; what was under way is lost
/// with it. Numbers that were never sent, and acknowledgements before the welcome, are as if not said.
///
/// So that a notification was accepted means that it cannot be lost, as long as this object lives, only from
/// the first welcome on (Welcomed), and as long as all receivers welcome. What was accepted before, and can't
/// be sent in order any more when the welcome comes, is given up and counted (GivenUpCount).
///
/// If a receiver that welcomed is followed by one that does not, the latter is waited for 3 s. Then it gets,
/// once, what was not acknowledged and no silent receiver has had, and is treated as one that does not answer
/// until it does.
///
/// In a process that was forked, a client that goes on being used begins a session of its own there, with a
/// new id, numbers from 1, an empty outbox, counts of 0 and a connection of its own, which is made to where
/// the last one went. Session, connection and all that waits stay the parent's, who notices nothing.
///
/// Nothing here waits for the peer: a client that is asked before every message (VerifyConnection), or whose
/// owner calls ProcessMessages(false) at least once a second, keeps itself connected and its outbox empty.
class CORE_EXPORT MPISocketClientC : public MPISocketConnectionC
{
public:
    /// A lost connection, or one that could not be made, is tried again no sooner than this after the last
    /// try.
    static constexpr int kRetryMilliseconds = 250;

    /// How long VerifyConnection's no for want of room holds in a session that was welcomed.
    static constexpr int kNoRoomMilliseconds = 5;

    /// @param reconnect  connect again by itself? Without, a lost connection stays lost until Reconnect.
    explicit MPISocketClientC(bool reconnect);
    ~MPISocketClientC() override;

    /// Does what is due: connects again if the connection is lost and the time has come, and sends what waits
    /// in the outbox.
    void CheckCallbacks() override;

    /// Can a notification be sent now? Does a turn (ProcessMessages(false)) first, so a peer that has gone is
    /// noticed; while welcomed, at most one turn a millisecond.
    ///
    /// A session that was welcomed is as good as a connection, if this client connects again by itself: what
    /// is sent during an outage is kept for the next one.
    ///
    /// A no holds for kRetryMilliseconds, also if the connection is made again or room found meanwhile: who
    /// asks before each of many messages, and keeps those that met a no, would otherwise send later ones
    /// before earlier ones. After it, a new message goes before the kept ones unless those are sent first.
    /// Within a batch (BeginBatch) it holds to the batch's end. In a session that was
    /// welcomed only room can be wanting, which comes and goes quickly; there a no holds for
    /// kNoRoomMilliseconds otherwise. Connect, Reconnect and Accept by the owner end it at once.
    /// @return true if the connection is up (Connected), or the session as good as that, and the outbox has
    ///         room for a message of any size
    bool VerifyConnection();

private:
    using Clock = std::chrono::steady_clock;

    bool LookedAtJustNow() const;
    bool NoHolds() const;
    bool SayNoAgain();
    unsigned OwnersAttempts() const { return AttemptCount() - m_ownAttempts; }

    std::int64_t m_lookTime = -1; // of the last turn of VerifyConnection that ended welcomed and with a yes
    unsigned m_ownAttempts = 0;   // to connect, those that were not the owner's
    bool m_saidNo = false;
    bool m_noForRoom = false; // in a session that was welcomed
    unsigned m_batchOfNo = 0;
    Clock::time_point m_noTime;       // of the no that holds, if any
    unsigned m_ownersAttemptAtNo = 0; // OwnersAttempts then
};

#endif
