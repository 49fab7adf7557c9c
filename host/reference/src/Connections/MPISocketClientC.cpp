#include <MPI/MPISocketClientC.h>

MPISocketClientC::MPISocketClientC(bool reconnect) : m_reconnect(reconnect) {}

MPISocketClientC::~MPISocketClientC() = default;

void MPISocketClientC::CheckCallbacks()
{
    MPISocketConnectionC::CheckCallbacks();
    // A descriptor means that a connection is being made, or that a lost one still has input to read.
    if (!m_reconnect || Descriptor() >= 0 || Connected() || MillisecondsSinceAttempt() < kRetryMilliseconds)
        return;
    const unsigned before = AttemptCount();
    Reconnect(-1);
    m_ownAttempts += AttemptCount() - before;
    MPISocketConnectionC::CheckCallbacks(); // on the loopback it is up by now
}

bool MPISocketClientC::VerifyConnection()
{
    ProcessMessages(false);
    if (!Connected())
        CheckCallbacks(); // the loss may have come out only now, and its time to be tried again be there
                          // already
    const bool yes = Connected() && HasRoom();
    if (NoHolds() && (!yes || Socket::Connected())) // who overrides Connected is free without a connection
        return false;
    m_saidNo = !yes;
    m_noTime = Clock::now();
    m_ownersAttemptAtNo = OwnersAttempts();
    return yes;
}

bool MPISocketClientC::NoHolds() const
{
    return m_saidNo && m_ownersAttemptAtNo == OwnersAttempts() &&
           Clock::now() - m_noTime < std::chrono::milliseconds(kRetryMilliseconds);
}
