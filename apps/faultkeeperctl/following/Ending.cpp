#include "faultkeeperctl/following/Ending.h"

#include "faultkeeperctl/Settings.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace Faultkeeper::Apps
{

namespace
{
volatile sig_atomic_t endRequested = 0;
volatile sig_atomic_t printing = 0;

void RequestEnd(int)
{
    endRequested = 1;
    if (printing != 0)
        _exit(epsDone);
}
} // namespace

void EndOnSignals()
{
    struct sigaction action = {};
    action.sa_handler = RequestEnd;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool EndRequested()
{
    return endRequested != 0;
}

bool ReaderGone()
{
    struct pollfd output = {STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

CPrinting::CPrinting()
{
    printing = 1;
}

CPrinting::~CPrinting()
{
    printing = 0;
}

} // namespace Faultkeeper::Apps
