#include <MPI/MPISocketClientC.h>

MPISocketClientC::MPISocketClientC(bool reconnect) : m_reconnect(reconnect) {}

MPISocketClientC::~MPISocketClientC() = default;

void MPISocketClientC::CheckCallbacks()
{
    MPISocketConnectionC::CheckCallbacks();
    // A descriptor means that a connection is being made, or that a lost one still has input to read.
    if (!m_reconnect || Descriptor() >= 0 || Connected() || MillisecondsSinceAttempt() < kRetryMilliseconds)
        return;
    Reconnect(-1);
    MPISocketConnectionC::CheckCallbacks(); // on the loopback it is up by now
}

bool MPISocketClientC::VerifyConnection()
{
    ProcessMessages(false);
    if (!Connected())
        CheckCallbacks(); // the loss may have come out only now, and its time to be tried again be there
                          // already
    return Connected() && HasRoom();
}
