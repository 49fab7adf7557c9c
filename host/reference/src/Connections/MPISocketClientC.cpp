#include <MPI/MPISocketClientC.h>

#include <ctime>

namespace
{

/// By a clock that is cheap to read and counts in steps of a millisecond or more.
std::int64_t Milliseconds()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return static_cast<std::int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

} // namespace

MPISocketClientC::MPISocketClientC(bool reconnect)
{
    ConnectsAgain(reconnect);
    StartSession(reconnect);
}

MPISocketClientC::~MPISocketClientC() = default;

void MPISocketClientC::CheckCallbacks()
{
    MPISocketConnectionC::CheckCallbacks();
    // A descriptor means that a connection is being made, or that a lost one still has input to read.
    if (!ConnectsAgain() || Descriptor() >= 0 || Connected() ||
        MillisecondsSinceAttempt() < kRetryMilliseconds)
        return;
    const unsigned before = AttemptCount();
    Reconnect(-1);
    m_ownAttempts += AttemptCount() - before;
    MPISocketConnectionC::CheckCallbacks(); // on the loopback it is up by now
}

bool MPISocketClientC::VerifyConnection()
{
    if (LookedAtJustNow())
        return true;
    if (m_noForRoom && NoHolds())
        return SayNoAgain();
    ProcessMessages(false);
    bool up = Bridges() ? Up() : Connected();
    if (!up)
    {
        CheckCallbacks(); // the loss may have come out only now, and its time to be tried again be there
        up = Bridges() || Connected();
    }
    const bool yes = up && HasRoom();
    m_lookTime = -1;
    // Who overrides Connected is free without a connection.
    if (NoHolds() && (!yes || Bridges() || Socket::Connected()))
        return SayNoAgain();
    m_saidNo = !yes;
    m_noForRoom = !yes && Bridges();
    m_batchOfNo = Batch();
    m_noTime = Clock::now();
    m_ownersAttemptAtNo = OwnersAttempts();
    if (yes && Welcomed())
        m_lookTime = Milliseconds();
    PromiseToAccept(yes && ConnectsAgain());
    return yes;
}

bool MPISocketClientC::SayNoAgain()
{
    m_batchOfNo = Batch();
    PromiseToAccept(false);
    return false;
}

bool MPISocketClientC::LookedAtJustNow() const
{
    return m_lookTime >= 0 && Welcomed() && HasRoom() && Milliseconds() == m_lookTime;
}

bool MPISocketClientC::NoHolds() const
{
    if (!m_saidNo || m_ownersAttemptAtNo != OwnersAttempts())
        return false;
    if (Batch() != 0 && Batch() == m_batchOfNo)
        return true;
    const int duration = m_noForRoom ? kNoRoomMilliseconds : kRetryMilliseconds;
    return Clock::now() - m_noTime < std::chrono::milliseconds(duration);
}
