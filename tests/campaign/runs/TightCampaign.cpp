#include "campaign/parts/DisplayProcess.h"
#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <chrono>
#include <cstdio>
#include <thread>

namespace Campaign
{

namespace
{
constexpr int kCopiers = 2;
constexpr int kPatienceMilliseconds = 600000;

/// Raises and clears the errors of one reporter in turn, each change once. @return false if it could not
bool ReportAll(int changes)
{
    Faultkeeper::CFaultkeeperAPI client;
    const std::vector<ErrorId> errors = ErrorsOf(0);
    for (int change = 0; change < changes;)
    {
        const ErrorId& id = errors[static_cast<std::size_t>(change / 2) % errors.size()];
        const auto type = static_cast<Faultkeeper::EProblemType>(id.second);
        const int result = change % 2 == 0 ? client.RaiseError(id.first, type, false, false)
                                           : client.ClearError(id.first, type, false);
        change += result == 1 ? 1 : 0;
        if (result != 1)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return client.WaitUntilAcknowledged(kPatienceMilliseconds);
}
} // namespace

bool RunTight(int rounds, unsigned)
{
    CScene scene(ReportedErrors());
    scene.StartOwner();
    bool good = scene.OwnerReady();
    std::vector<std::unique_ptr<Support::CChildProcess>> copiers;
    for (int i = 0; i < kCopiers; ++i)
        copiers.push_back(StartCopier(scene.ConfigurationPrefix()));
    const auto begin = std::chrono::steady_clock::now();
    good = ReportAll(rounds) && good;
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    copiers.clear();
    good = scene.EndOwner() && good;

    SVerdict verdict;
    const States states = StoredStates(scene.StorePath());
    std::uint64_t raises = 0;
    for (const auto& state : states)
        raises += state.second.raises;
    const auto expected = static_cast<std::uint64_t>((rounds + 1) / 2);
    verdict.lost = raises < expected ? expected - raises : 0;
    verdict.twice = raises > expected ? raises - expected : 0;
    JudgeTable(scene.Table(), states, verdict);
    std::printf(
        "%d raises and clears in %.1f s (%.0f a second), against %d displays that copy without a pause\n",
        rounds, seconds.count(), rounds / seconds.count(), kCopiers);
    verdict.Print();
    return good && verdict.Good();
}

} // namespace Campaign
