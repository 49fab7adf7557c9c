#include "faultkeeperd/service/Signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
// A handler reaches nothing but statics. A pipe rather than signalfd(2), which emulators of other machines do
// not serve.
int s_pipe[2] = {-1, -1};
volatile std::sig_atomic_t s_received = 0;

struct SHandled
{
    int number;
    bool respectIgnored; // started with the signal ignored: leave it so
    struct sigaction before;
};

SHandled s_handled[] = {{SIGTERM, false, {}},
                        {SIGINT, false, {}},
                        {SIGHUP, true, {}},
                        {SIGPIPE, false, {}},
                        {SIGXFSZ, false, {}}};

/// A write that cannot be done says so to its caller, who deals with it: a connection that is gone, a file
/// that may not grow.
bool TellsOfAWrite(int number)
{
    return number == SIGPIPE || number == SIGXFSZ;
}

extern "C" void FaultkeeperNoteSignal(int number)
{
    const int before = errno;
    if (s_received == 0)
        s_received = number;
    const char byte = 0;
    const ssize_t written = write(s_pipe[1], &byte, 1);
    static_cast<void>(written); // a full pipe has input, which is all it is for
    errno = before;
}

void Handle(SHandled& handled)
{
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    action.sa_handler = TellsOfAWrite(handled.number) ? SIG_IGN : &FaultkeeperNoteSignal;
    sigaction(handled.number, nullptr, &handled.before);
    if (!handled.respectIgnored || handled.before.sa_handler != SIG_IGN)
        sigaction(handled.number, &action, nullptr);
}

void Unblock()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const SHandled& handled : s_handled)
        sigaddset(&signals, handled.number);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}
} // namespace

CSignals::CSignals()
{
    if (pipe2(s_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe2");
    s_received = 0;
    for (SHandled& handled : s_handled)
        Handle(handled);
    Unblock();
}

CSignals::~CSignals()
{
    for (const SHandled& handled : s_handled)
        sigaction(handled.number, &handled.before, nullptr);
    close(s_pipe[0]);
    close(s_pipe[1]);
}

int CSignals::Descriptor() const
{
    return s_pipe[0];
}

void CSignals::TakeFirst() const
{
    char byte = 0; // one for each signal
    const ssize_t taken = read(s_pipe[0], &byte, 1);
    static_cast<void>(taken); // nothing, if the program ends for another reason
}

int CSignals::Received() const
{
    return s_received;
}

} // namespace Faultkeeper::Apps
