#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/DisplayDocuments.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TreeText.h"

#include <iostream>

namespace Faultkeeper::Apps
{

namespace
{
EProgramStatus List(const SSettings& settings)
{
    CDisplay display(settings);
    display.RequirePicture();
    WarnOfUnknown(display);
    if (settings.json)
        PrintDocument(PictureDocument(display));
    else
        std::cout << TreesText(display.Trees(), OutputWidth());
    return epsDone;
}
} // namespace

void AddList(CCommandLine& commandLine)
{
    commandLine.Add(
        "list", "Show the active faults as the console's screens put them together",
        "One tree for each active top error: title, severity, problems, solutions, times, counters, the\n"
        "state key that \"decode\" takes, the friendly code and the error's name.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper list",
        List);
}

} // namespace Faultkeeper::Apps
