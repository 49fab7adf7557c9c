// A reporting process, in the form in which every process of a console has one: a loop of its own that waits
// for its device, and a client object that reports what goes wrong with it. Standard input stands for the
// device:
//
//   echo "raise Positioning:GPS:No Data:2" | reporter
//
// Lines are "raise NAME" or "clear NAME" with a name as in configuration files. For each the answer of the
// client is printed. At the end of the input the process waits until all is sent, and ends with 0; with 1 if
// there was no owner.

#include <Faultkeeper/FaultkeeperAPI.h>
#include <Faultkeeper/Identifiers.h>

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

using namespace Faultkeeper;

namespace
{

// The client connects again, sends what waits and notices a lost owner in its turns: give it at least one a
// second.
constexpr int kTurnMilliseconds = 250;
constexpr std::chrono::seconds kPatienceAtTheEnd(5);

/// "Positioning:GPS:No Data:2" as the pair of numbers that goes over the wire.
bool ParseName(const std::string& name, std::pair<int, int>& id)
{
    std::istringstream fields(name);
    std::string module;
    std::string subModule;
    std::string problem;
    std::string type;
    std::getline(fields, module, ':');
    std::getline(fields, subModule, ':');
    std::getline(fields, problem, ':');
    std::getline(fields, type);
    const EModuleIdentifier moduleId = TranslateModuleId(module);
    const ESubModuleIdentifier subModuleId = TranslateSubModuleId(subModule);
    const EProblemIdentifier problemId = TranslateProblemId(problem);
    const EProblemType problemType = TranslateProblemType(type);
    if (moduleId == emiUnknown || subModuleId == esmiUnknown || problemId == epiUnknown ||
        problemType == eptUnknown)
        return false;
    id = {static_cast<int>(moduleId) | static_cast<int>(subModuleId) | static_cast<int>(problemId),
          problemType};
    return true;
}

const char* Meaning(int result)
{
    if (result > 0)
        return "sent";
    return result == 0 ? "known already" : "kept until there is an owner";
}

void Report(CFaultkeeperAPI& client, const std::string& line)
{
    const std::size_t blank = line.find(' ');
    const std::string action = line.substr(0, blank);
    std::pair<int, int> id;
    if ((action != "raise" && action != "clear") || blank == std::string::npos ||
        !ParseName(line.substr(blank + 1), id))
        std::printf("%s: not understood\n", line.c_str());
    else
        std::printf("%s: %s\n", line.c_str(),
                    Meaning(action == "raise" ? client.RaiseError(id, false) : client.ClearError(id)));
    std::fflush(stdout);
}

/// Reports every whole line of `text` and leaves the rest in it.
void ReportLines(CFaultkeeperAPI& client, std::string& text)
{
    for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1))
        Report(client, text.substr(0, end));
}

/// Waits for the device and for the owner alike, until the input ends.
void Watch(CFaultkeeperAPI& client)
{
    std::string text;
    char buffer[256];
    for (ssize_t got = 1; got > 0;)
    {
        struct pollfd inputs[] = {{STDIN_FILENO, POLLIN, 0}, {client.Descriptor(), POLLIN, 0}};
        poll(inputs, 2, kTurnMilliseconds);
        client.ProcessMessages(false);
        client.ProcessQueuedErrors(); // what was kept goes out as soon as there is an owner
        if (inputs[0].revents == 0)
            continue;
        got = read(STDIN_FILENO, buffer, sizeof buffer);
        text.append(buffer, got > 0 ? static_cast<std::size_t>(got) : 0);
        ReportLines(client, text);
    }
    if (!text.empty())
        Report(client, text);
}

bool SendTheRest(CFaultkeeperAPI& client)
{
    const auto end = std::chrono::steady_clock::now() + kPatienceAtTheEnd;
    while (!client.VerifyConnection() || client.BytesWaiting() > 0)
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    client.ProcessQueuedErrors();
    return client.BytesWaiting() == 0;
}

} // namespace

int main()
{
    CFaultkeeperAPI client; // starts connecting, and never waits for the owner
    Watch(client);
    return SendTheRest(client) ? 0 : 1;
}
