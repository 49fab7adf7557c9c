#ifndef MPI_MPISOCKETCLIENTC_H
#define MPI_MPISOCKETCLIENTC_H

#include <Core/Export.h>
#include <MPI/MPISocketConnectionC.h>

#include <chrono>

/// The connecting end of a message connection, which connects again when the connection is lost.
///
/// Nothing here waits for the peer: a client that is asked before every message (VerifyConnection), or whose
/// owner calls ProcessMessages(false) at least once a second, keeps itself connected and its outbox empty.
class CORE_EXPORT MPISocketClientC : public MPISocketConnectionC
{
public:
    /// A lost connection, or one that could not be made, is tried again no sooner than this after the last
    /// try.
    static constexpr int kRetryMilliseconds = 250;

    /// @param reconnect  connect again by itself? Without, a lost connection stays lost until Reconnect.
    explicit MPISocketClientC(bool reconnect);
    ~MPISocketClientC() override;

    /// Does what is due: connects again if the connection is lost and the time has come, and sends what waits
    /// in the outbox.
    void CheckCallbacks() override;

    /// Can a message be sent now? Does a turn (ProcessMessages(false)) first, so a peer that has gone is
    /// noticed.
    ///
    /// A no holds for kRetryMilliseconds, also if the connection is made again or room found meanwhile: who
    /// asks before each of many messages, and keeps those that met a no, would otherwise send later ones
    /// before earlier ones. Connect, Reconnect and Accept by the owner end it at once.
    /// @return true if the connection is up (Connected) and the outbox has room for a message of any size
    bool VerifyConnection();

private:
    using Clock = std::chrono::steady_clock;

    bool NoHolds() const;
    unsigned OwnersAttempts() const { return AttemptCount() - m_ownAttempts; }

    bool m_reconnect;
    unsigned m_ownAttempts = 0; // to connect, those that were not the owner's
    bool m_saidNo = false;
    Clock::time_point m_noTime;       // of the no that holds, if any
    unsigned m_ownersAttemptAtNo = 0; // OwnersAttempts then
};

#endif
