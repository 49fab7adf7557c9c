#ifndef SOCKETS_SESSIONDELIVERY_H
#define SOCKETS_SESSIONDELIVERY_H

#include "Sockets/MessageOutbox.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

/// Sees to it that a client's notifications reach their receiver once each and in order, whatever becomes of
/// the connection, provided that the receiver keeps account of the session.
///
/// Notifications are numbered over the life of the client. A receiver that keeps account answers the
/// introduction with the number up to which it has applied them (the welcome), and tells later up to which it
/// has (acknowledgements). What is not acknowledged stays in the outbox, and goes out again after the welcome
/// on the next connection.
///
/// A receiver that says nothing gets everything at once and nothing twice. On a connection that follows one
/// with a welcome, it is waited for kWelcomeMilliseconds; a receiver that has not spoken until then counts as
/// one of those: it gets, once, what is not acknowledged and was not sent to such a one before.
///
/// That leaves gaps. A connection without a welcome begins with what the one before it has not had, and who
/// applies that passes over what it lacks from before. So a welcome vouches for what was sent over such
/// connections only if it lies before the gap, when all can be sent again in order; what it does not vouch
/// for is given up.
class SessionDelivery
{
public:
    static constexpr int kWelcomeMilliseconds = 3000;

    /// @param outbox          borrowed
    /// @param bridgesOutages  is a session that was welcomed as good as a connection?
    SessionDelivery(MessageOutbox& outbox, bool bridgesOutages);

    /// What every connection begins with.
    const std::string& Introduction() const { return m_introduction; }

    std::uint64_t NextNumber() const { return m_last + 1; }

    /// That number is in the outbox, or somewhere else out of our hands.
    void Accepted(std::uint64_t number) { m_last = number; }

    /// The outbox has a connection, or has it no more.
    void Begin();
    void End();

    /// The receiver has spoken. Numbers that it cannot have had are as if not said.
    /// @return true if it is welcomed by that
    bool Welcome(std::int64_t number);
    void Acknowledge(std::int64_t number);

    /// Gives up waiting for a welcome when it is time.
    void LosePatience();

    /// Has the receiver at the other end of the connection welcomed the session?
    bool Welcomed() const { return m_up && m_welcomed; }

    /// Can notifications be taken on without a look at the connection?
    bool Bridges() const { return m_bridgesOutages && m_everWelcomed && !(m_up && m_silent); }

    /// Gives up what is in the outbox, and with it the session's standing.
    void Forget();

    std::uint64_t Unacknowledged() const { return m_last - m_acknowledged; }
    std::uint64_t GivenUp() const { return m_givenUp; }

private:
    using Clock = std::chrono::steady_clock;

    void NoteGap(std::uint64_t first);
    void GiveUpWhatWasPassedOver(std::uint64_t applied);
    void GiveUpBefore(std::uint64_t number);
    std::uint64_t SendTheRest();

    MessageOutbox& m_outbox;
    const bool m_bridgesOutages;
    std::string m_introduction;
    std::uint64_t m_last = 0;         // accepted
    std::uint64_t m_acknowledged = 0; // and all before it; given up counts as well
    std::uint64_t m_givenUp = 0;      // how many of those
    std::uint64_t m_firstGap = 0;     // the number after it, 0 if there is none since the last welcome
    std::uint64_t m_lastGap = 0;      // likewise, of the last one
    std::uint64_t m_sentSilently = 0; // the greatest number that had gone to somebody who did not welcome us
    bool m_everWelcomed = false;
    bool m_up = false;
    bool m_welcomed = false;   // on this connection, or the last
    bool m_silent = false;     // likewise: the welcome is no longer waited for
    Clock::time_point m_begin; // of this connection
};

#endif
