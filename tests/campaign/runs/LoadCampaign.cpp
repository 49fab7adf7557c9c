#include "campaign/parts/AlternatingReporter.h"
#include "campaign/parts/DisplayProcess.h"
#include "campaign/parts/Probe.h"
#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace Campaign
{

namespace
{
using Clock = std::chrono::steady_clock;

constexpr int kDisplays = 8;
constexpr std::chrono::milliseconds kDisplayPause(100);
constexpr std::chrono::milliseconds kStep(10);
constexpr int kChangesAStep = 100; // 10 000 a second

constexpr int kFullSize = 300; // seconds; from here on memory and time are judged: shorter runs are tests
constexpr double kLeastRate = 9500;    // transitions a second
constexpr double kMostDelay = 100;     // milliseconds, for 99 %
constexpr long kMostMemory = 4 * 1024; // KiB beyond what it was after a second

/// The owner's resources in the course of it.
struct SResources
{
    long firstMemory = 0; // KiB
    long mostMemory = 0;
    int firstDescriptors = 0;
    int mostDescriptors = 0;

    void Look(const CScene& scene)
    {
        const long memory = scene.OwnerMemory();
        const int descriptors = scene.OwnerDescriptors();
        firstMemory = firstMemory == 0 ? memory : firstMemory;
        firstDescriptors = firstDescriptors == 0 ? descriptors : firstDescriptors;
        mostMemory = std::max(mostMemory, memory);
        mostDescriptors = std::max(mostDescriptors, descriptors);
    }

    bool Flat() const { return mostMemory - firstMemory <= kMostMemory; }
    bool NoMoreDescriptors() const { return firstDescriptors > 0 && mostDescriptors <= firstDescriptors; }
};

/// Reporter and probe are connected, and perhaps who asks.
bool BothConnected()
{
    return Support::WaitUntil([] { return CScene::OwnerNumber("connections") >= 3; });
}

/// Reports at an even pace. @return false if not everything is acknowledged in the end
bool ReportEvenly(CAlternatingReporter& reporter, std::chrono::seconds duration, const CScene& scene,
                  SResources& resources)
{
    const auto steps = static_cast<int>(duration / kStep);
    const Clock::time_point begin = Clock::now();
    for (int step = 0; step < steps; ++step)
    {
        for (int i = 0; i < kChangesAStep; ++i)
            reporter.Change();
        if (step % 100 == 99) // the first second is for getting started
            resources.Look(scene);
        std::this_thread::sleep_until(begin + kStep * (step + 1));
    }
    return reporter.Finish();
}
} // namespace

bool RunLoad(int rounds, unsigned)
{
    CScene scene(ReportedErrors());
    scene.StartOwner();
    scene.AwaitOwner();
    auto displays = StartCopiers(kDisplays, scene.ConfigurationPrefix(), kDisplayPause);
    SResources resources;
    CAlternatingReporter reporter;
    const ErrorId probed = ErrorsOf(1).front();
    CProbe probe(scene.ConfigurationPrefix(), probed);
    bool good = BothConnected();
    const Clock::time_point begin = Clock::now();
    good = ReportEvenly(reporter, std::chrono::seconds(rounds), scene, resources) && good;
    const std::chrono::duration<double> seconds = Clock::now() - begin;
    probe.Finish();
    good = AllRun(displays) && good;
    displays.clear();
    good = scene.EndOwner() && good;

    SVerdict verdict;
    const States states = StoredStates(scene.StorePath());
    std::uint64_t raises = 0;
    for (const auto& state : states)
        raises += state.second.raises;
    const std::uint64_t expected = (reporter.Changes() + 1) / 2 + probe.Raises();
    verdict.lost = raises < expected ? expected - raises : 0;
    verdict.twice = raises > expected ? raises - expected : 0;
    JudgeTable(scene.Table(), states, verdict);
    const double rate = static_cast<double>(reporter.Changes()) / seconds.count();
    std::printf("%.0f transitions a second for %.0f s, %d displays looking %d times a second\n", rate,
                seconds.count(), kDisplays, static_cast<int>(std::chrono::seconds(1) / kDisplayPause));
    std::printf("memory        %ld KiB after a second, %ld KiB at most\n", resources.firstMemory,
                resources.mostMemory);
    std::printf("descriptors   %d after a second, %d at most\n", resources.firstDescriptors,
                resources.mostDescriptors);
    std::printf(
        "raise to copy %.2f ms half of the time, %.2f ms 99 %% of the time, %.2f ms at most, of %zu\n",
        probe.Quantile(0.5), probe.Quantile(0.99), probe.Quantile(1), probe.Delays().size());
    verdict.Print();
    const bool kept = resources.Flat() && rate >= kLeastRate && probe.Quantile(0.99) <= kMostDelay;
    return good && verdict.Good() && resources.NoMoreDescriptors() && !probe.Delays().empty() &&
           (kept || rounds < kFullSize);
}

} // namespace Campaign
