#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/following/Ending.h"
#include "faultkeeperctl/json/DisplayDocuments.h"
#include "faultkeeperctl/text/Colour.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TreeText.h"

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <thread>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kIdleMilliseconds = 1000;                 // then it is seen whether the owner is still there
constexpr std::chrono::milliseconds kDrawingPause(100); // a picture that changes faster cannot be read
constexpr const char* kClearScreen = "\x1b[H\x1b[2J";
constexpr const char* kSeparator = "----------------------------------------\n";

std::string PictureText(const CDisplay& display, const SSettings& settings)
{
    std::string text;
    if (display.Facts().state != etsReady)
        text = StateText(display.Facts(), settings.runDirectory) + "\nLast seen:\n\n";
    text += TreesText(display.Trees(), OutputWidth(), ethAll, ColoursWanted());
    for (const std::string& name : display.UnknownRaised())
        text += "\n" + name + " is raised, but this configuration does not define it\n";
    return text;
}

void Write(const CDisplay& display, const SSettings& settings, bool first)
{
    if (settings.json)
    {
        PrintLine(PictureDocument(display));
        return;
    }
    if (TerminalKnowsEscapes())
        std::cout << kClearScreen;
    else if (!first)
        std::cout << kSeparator;
    std::cout << PictureText(display, settings) << std::flush;
}

void Draw(const CDisplay& display, const SSettings& settings, bool first)
{
    const CPrinting printing;
    if (!EndRequested())
        Write(display, settings, first);
}

// An owner that goes is told, and its faults stay to be seen; when an owner is back they are replaced.
EProgramStatus Watch(const SSettings& settings)
{
    CDisplay display(settings);
    EndOnSignals();
    display.RequirePicture();
    Draw(display, settings, true);
    while (!EndRequested() && std::cout.good() && !ReaderGone())
    {
        display.Wait(kIdleMilliseconds);
        const ETableState before = display.Facts().state;
        const ETableState now = display.Refresh();
        if (now == before && !display.Changed())
            continue;
        if (now == etsReady && before != etsReady)
            display.WarnOfOtherConfiguration(); // it may be another owner
        Draw(display, settings, false);
        if (!EndRequested())
            std::this_thread::sleep_for(kDrawingPause);
    }
    return epsDone;
}
} // namespace

void AddWatch(CCommandLine& commandLine)
{
    commandLine.Add(
        "watch", "Show the active faults again whenever something changes",
        "Sleeps until the owner publishes something; ends on Ctrl-C. An owner that goes is told within a\n"
        "second or so, one that comes back is followed. With --json one document a line for each change.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper watch",
        Watch);
}

} // namespace Faultkeeper::Apps
