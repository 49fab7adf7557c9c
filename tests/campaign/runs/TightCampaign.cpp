#include "campaign/parts/AlternatingReporter.h"
#include "campaign/parts/DisplayProcess.h"
#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"

#include <chrono>
#include <cstdio>

namespace Campaign
{

namespace
{
constexpr int kCopiers = 2;

/// Makes each change once. @return false if not everything is acknowledged in the end
bool ReportAll(int changes)
{
    CAlternatingReporter reporter;
    while (reporter.Changes() < static_cast<std::uint64_t>(changes))
        reporter.Change();
    return reporter.Finish();
}
} // namespace

bool RunTight(int rounds, unsigned)
{
    CScene scene(ReportedErrors());
    scene.StartOwner();
    scene.AwaitOwner();
    auto copiers = StartCopiers(kCopiers, scene.ConfigurationPrefix());
    const auto begin = std::chrono::steady_clock::now();
    bool good = ReportAll(rounds);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    good = AllRun(copiers) && good;
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
