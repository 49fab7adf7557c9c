#ifndef SOCKETS_SOCKETTRANSPORT_H
#define SOCKETS_SOCKETTRANSPORT_H

#include "Sockets/FileDescriptor.h"
#include "Sockets/Forks.h"
#include "Sockets/MessageOutbox.h"
#include "Sockets/SessionDelivery.h"
#include "Sockets/SocketAddress.h"

#include <MPI/Socket.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

/// What a socket does, without its virtual operations: the descriptor's states, the outbox, and where to
/// connect.
class CORE_LOCAL Socket::Transport
{
public:
    Transport() : m_forks(ForkCount()), m_outbox(kOutboxBytes) {}
    ~Transport();
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    /// To be called first. In a process that was forked since the last call a session starts anew, without a
    /// connection and with nothing to send: those are the parent's.
    void FollowFork();

    /// Remembers where to connect.
    void Target(const std::vector<SocketAddress>& addresses) { m_target = addresses; }
    bool HasTarget() const { return !m_target.empty(); }

    /// Begins to connect; the connection held before is closed.
    void Start();

    /// Goes on connecting, from one address to the next where one refuses or has not answered within
    /// kPatienceMilliseconds; if it was only the latter, round and round.
    void Progress();

    /// Until the address under way is given up.
    int MillisecondsOfPatience() const;

    /// Takes over a connected descriptor.
    void Adopt(FileDescriptor descriptor);

    /// Ends the connection, with a proper farewell if it was up. In a child that was forked with a copy, the
    /// copy just goes: the connection and what waits to be sent are the parent's.
    void Close();

    bool Up() const { return m_up; }

    /// True once after a connection that was up has ended.
    bool TakeLoss() { return std::exchange(m_lossUntold, false); }

    bool UnderWay() const { return m_descriptor.Valid() && !m_up; }
    int Number() const { return m_descriptor.Number(); }
    const SocketAddress& Peer() const { return m_peer; }
    const std::string& PeerHost() const { return m_peerHost; }
    const std::string& PeerName() const { return m_peerName; }
    unsigned Count() const { return m_count; }

    /// How often Start or Adopt was called.
    unsigned Starts() const { return m_starts; }
    int MillisecondsSinceStart() const;

    MessageOutbox& Outbox() { return m_outbox; }
    const MessageOutbox& Outbox() const { return m_outbox; }

    /// From here on every connection begins with an introduction, and a session goes on from one to the next.
    void StartSession(bool bridgesOutages);

    /// Null without.
    SessionDelivery* Session() const { return m_session.get(); }

    /// From here on a connection that takes no more output is read to its end before it counts as lost.
    void ReadToTheEnd() { m_readsToTheEnd = true; }

    /// Sends what can be sent without waiting.
    /// @param look  send nothing to a peer that has ended its own sending
    /// @return true if the outbox has become empty by it
    bool Flush(bool look);

    /// Reads without waiting.
    std::size_t Receive(char* buffer, std::size_t size);

private:
    using Clock = std::chrono::steady_clock;

    static constexpr int kPatienceMilliseconds = 1000;

    void TryNextAddress();
    void Establish();
    bool SendIntroduction();
    bool SendSome(const char* bytes, std::size_t size, std::size_t& sent);
    void LoseOutput();
    void LetGo();
    void Drop();

    std::vector<SocketAddress> m_target;
    std::size_t m_nextAddress = 0;
    bool m_gaveUp = false; // an address of this round, because it did not answer
    unsigned m_starts = 0;
    bool m_started = false;
    Clock::time_point m_start;        // of the last try to connect, if any
    Clock::time_point m_addressStart; // of the address under way, if any
    pid_t m_process = 0;              // that made the connection
    unsigned m_forks;
    FileDescriptor m_descriptor;
    bool m_up = false;
    bool m_lossUntold = false;
    unsigned m_count = 0;
    SocketAddress m_peer;
    std::string m_peerHost;
    std::string m_peerName;
    MessageOutbox m_outbox;
    bool m_bridgesOutages = false;
    std::unique_ptr<SessionDelivery> m_session;
    std::size_t m_introduced = 0; // bytes of the introduction that this connection has taken
    bool m_readsToTheEnd = false;
    bool m_outputLost = false; // of this connection
};

#endif
