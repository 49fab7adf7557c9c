// Reports for the system tests through the client that all reporting processes use.
//
//   reporter WORD...   with "raise CODE TYPE", "clear CODE TYPE", "then", and in front of all "repeat N",
//                      "queue" or "confirm"
//
// Each report is tried until the owner is connected; with "queue" it is left to the client's own queue. Ends
// with 0 once the kernel has everything; with "confirm" once the owner has acknowledged everything.

#include <Faultkeeper/FaultkeeperAPI.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using namespace Faultkeeper;

namespace
{

constexpr std::chrono::seconds kPatience(30);

struct SReport
{
    bool raise;
    int code;
    EProblemType type;
};

/// Reports that are made one after the other, and how many times over.
struct SPhase
{
    int rounds = 1;
    std::vector<SReport> reports;
};

struct SOrders
{
    bool queue = false;
    bool confirm = false;
    std::vector<SPhase> phases = std::vector<SPhase>(1);
};

SOrders Understood(const std::vector<std::string>& words)
{
    SOrders orders;
    for (std::size_t i = 0; i < words.size(); ++i)
    {
        const auto next = [&] { return std::strtol(words.at(++i).c_str(), nullptr, 0); };
        if (words[i] == "queue")
            orders.queue = true;
        else if (words[i] == "confirm")
            orders.confirm = true;
        else if (words[i] == "then")
            orders.phases.emplace_back();
        else if (words[i] == "repeat")
            orders.phases.back().rounds = static_cast<int>(next());
        else
        {
            const bool raise = words[i] == "raise";
            const int code = static_cast<int>(next());
            orders.phases.back().reports.push_back({raise, code, static_cast<EProblemType>(next())});
        }
    }
    return orders;
}

bool WaitUntil(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

int Send(CFaultkeeperAPI& client, const SReport& report, bool queue)
{
    return report.raise ? client.RaiseError(report.code, report.type, false, queue)
                        : client.ClearError(report.code, report.type, queue);
}

bool SendNow(CFaultkeeperAPI& client, const SPhase& phase)
{
    for (int round = 0; round < phase.rounds; ++round)
    {
        for (const SReport& report : phase.reports)
        {
            if (!WaitUntil([&] { return Send(client, report, false) >= 0; }))
                return false;
        }
    }
    return true;
}

bool SendQueued(CFaultkeeperAPI& client, const SPhase& phase)
{
    for (const SReport& report : phase.reports)
        std::printf("%d\n", Send(client, report, true));
    std::fflush(stdout);
    if (!WaitUntil([&] { return client.VerifyConnection(); }))
        return false;
    client.ProcessQueuedErrors();
    return true;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const SOrders orders = Understood(std::vector<std::string>(arguments + 1, arguments + argumentCount));
    CFaultkeeperAPI client;
    for (const SPhase& phase : orders.phases)
    {
        if (!(orders.queue ? SendQueued(client, phase) : SendNow(client, phase)))
            return 1;
    }
    const bool handedOver = WaitUntil(
        [&]
        {
            client.ProcessMessages(false);
            return orders.confirm ? client.UnacknowledgedCount() == 0 : client.BytesWaiting() == 0;
        });
    return handedOver ? 0 : 1;
}
