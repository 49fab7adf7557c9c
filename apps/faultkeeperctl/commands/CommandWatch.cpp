#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/DisplayDocuments.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TreeText.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <thread>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::chrono::milliseconds kPollPause(100);
constexpr const char* kClearScreen = "\x1b[H\x1b[2J\x1b[3J";
constexpr const char* kSeparator = "----------------------------------------\n";

volatile sig_atomic_t endRequested = 0;

void RequestEnd(int)
{
    endRequested = 1;
}

void EndOnSignals()
{
    struct sigaction action = {};
    action.sa_handler = RequestEnd;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

std::string PictureText(const CDisplay& display, const SSettings& settings)
{
    std::string text;
    if (display.Facts().state != etsReady)
        text = Describe(display.Facts(), settings.runDirectory) + "\nLast seen:\n\n";
    text += TreesText(display.Trees(), OutputWidth());
    for (const std::string& name : display.UnknownRaised())
        text += "\n" + name + " is raised, but this configuration does not define it\n";
    return text;
}

void Draw(const CDisplay& display, const SSettings& settings, bool first)
{
    if (settings.json)
    {
        PrintLine(PictureDocument(display));
        return;
    }
    if (isatty(STDOUT_FILENO) != 0)
        std::cout << kClearScreen;
    else if (!first)
        std::cout << kSeparator;
    std::cout << PictureText(display, settings) << std::flush;
}

// An owner that goes is told, and its faults stay to be seen; when an owner is back they are replaced.
EProgramStatus Watch(const SSettings& settings)
{
    CDisplay display(settings);
    EndOnSignals();
    display.RequirePicture();
    Draw(display, settings, true);
    while (endRequested == 0 && std::cout.good())
    {
        std::this_thread::sleep_for(kPollPause);
        const ETableState before = display.Facts().state;
        const ETableState now = display.Refresh();
        if (now != before || display.Changed())
            Draw(display, settings, false);
    }
    return epsDone;
}
} // namespace

void AddWatch(CCommandLine& commandLine)
{
    commandLine.Add(
        "watch", "Show the active faults again whenever something changes",
        "Looks ten times a second; ends on Ctrl-C. An owner that goes is told, one that comes back is\n"
        "followed. With --json one document a line for each change.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper watch",
        Watch);
}

} // namespace Faultkeeper::Apps
