#include "campaign/parts/Probe.h"
#include "campaign/parts/Stranger.h"
#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

namespace Campaign
{

namespace
{
constexpr int kFullSize = 1000000;      // from here on memory and time are judged: shorter runs are tests
constexpr long kMostMemory = 16 * 1024; // KiB beyond what it was
constexpr double kMostDelay = 100;      // milliseconds
constexpr int kIdle = 1000;
constexpr int kHalfSent = 100;
constexpr std::chrono::seconds kIdleTime(2);

/// One after the other; who is turned out comes back.
void SendGarbage(int frames)
{
    auto stranger = std::make_unique<CStranger>();
    for (int frame = 0; frame < frames; ++frame)
    {
        if (!stranger->Send(Garbage(static_cast<unsigned>(frame))) || stranger->Closed())
            stranger = std::make_unique<CStranger>();
    }
}

/// Many who say nothing, and many who announce what they never send.
void SayNothing()
{
    std::vector<CStranger> strangers(kHalfSent);
    for (const CStranger& stranger : strangers)
        stranger.Send("d4:argsl1073741824:");
    for (int i = 0; i < kIdle; ++i)
        strangers.emplace_back();
    std::this_thread::sleep_for(kIdleTime);
}
} // namespace

bool RunGarbage(int rounds, unsigned)
{
    CScene scene(ReportedErrors());
    scene.StartOwner();
    bool good = scene.OwnerReady();
    const ErrorId error = ErrorsOf(0).front();
    const auto begin = std::chrono::steady_clock::now();
    CProbe probe(scene.ConfigurationPrefix(), error);
    SendGarbage(kHalfSent); // what is always kept is there from now on
    const long before = scene.OwnerMemory();
    SendGarbage(rounds);
    const long between = scene.OwnerMemory();
    SayNothing();
    const long after = std::max(between, scene.OwnerMemory());
    probe.Finish();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    good = LockFree(scene) && good;
    good = scene.EndOwner() && good;

    SVerdict verdict;
    const States states = StoredStates(scene.StorePath());
    const std::uint64_t raises = states.count(error) > 0 ? states.at(error).raises : 0;
    verdict.lost = probe.Raises() > raises ? probe.Raises() - raises : 0;
    verdict.twice = raises > probe.Raises() ? raises - probe.Raises() : 0;
    std::printf("%d frames of garbage, %d lengths of 1 GiB and %d silent connections in %.1f s\n", rounds,
                kHalfSent, kIdle, seconds.count());
    std::printf("memory        %ld KiB before, %ld KiB after\n", before, after);
    std::printf("raise to copy %.1f ms at most, of %zu\n", probe.Quantile(1), probe.Delays().size());
    verdict.Print();
    const bool kept = after - before <= kMostMemory && probe.Quantile(1) <= kMostDelay;
    return good && verdict.Good() && !probe.Delays().empty() && (kept || rounds < kFullSize);
}

} // namespace Campaign
