#include "common/StandardStreams.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/commands/Commands.h"

#include <signal.h>

int main(int argumentCount, char** arguments)
{
    Faultkeeper::Apps::OpenStandardStreams();
    signal(SIGPIPE, SIG_DFL); // a reader that goes away ends the program quietly, whatever the parent set
    Faultkeeper::Apps::CCommandLine commandLine;
    Faultkeeper::Apps::AddCommands(commandLine);
    return commandLine.Run(argumentCount, arguments);
}
