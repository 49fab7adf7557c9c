#include "campaign/parts/Probe.h"
#include "campaign/parts/Stranger.h"
#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
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
constexpr const char* kConnections = "2000"; // so that all of them are up at once
constexpr rlim_t kDescriptors = 4096;
constexpr std::chrono::seconds kIdleTime(2);

/// For this process and the owner, which inherits it.
void AllowDescriptors()
{
    struct rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(kDescriptors, limit.rlim_max));
    setrlimit(RLIMIT_NOFILE, &limit);
}

/// What of it has to be refused, and what is a message that means nothing.
struct SGarbage
{
    std::int64_t refused = 0;
    std::int64_t meaningless = 0;
};

/// One after the other; who is turned out comes back. All of it arrives: who is to be turned out waits for
/// it.
/// @return false if one that had to be turned out was not
bool SendGarbage(int frames, SGarbage& sent)
{
    bool turnedOut = true;
    auto stranger = std::make_unique<CStranger>();
    for (unsigned frame = 0; frame < static_cast<unsigned>(frames) && turnedOut; ++frame)
    {
        stranger->Send(Garbage(frame));
        sent.meaningless += IsMessage(frame) ? 1 : 0;
        if (!EndsConnection(frame))
            continue;
        ++sent.refused;
        turnedOut = stranger->ClosedInTime();
        stranger = std::make_unique<CStranger>();
    }
    return turnedOut;
}

/// Does the owner's count get so high?
bool Reaches(const char* name, std::int64_t count)
{
    const bool reached = Support::WaitUntil([&] { return CScene::OwnerNumber(name) >= count; });
    if (!reached)
        std::fprintf(stderr, "%s: %" PRId64 ", and not %" PRId64 "\n", name, CScene::OwnerNumber(name),
                     count);
    return reached;
}

/// Many who say nothing, and many who announce what they never send.
/// @return false if the former were not all up, or the latter not all refused
bool SayNothing()
{
    const std::int64_t before = CScene::OwnerNumber("malformed");
    std::vector<CStranger> strangers(kHalfSent);
    bool sent = true;
    for (const CStranger& stranger : strangers)
        sent = stranger.Send("d4:argsl1073741824:") && sent;
    for (int i = 0; i < kIdle; ++i)
        strangers.emplace_back();
    const bool met = Reaches("connections", kIdle) && Reaches("malformed", before + kHalfSent);
    std::this_thread::sleep_for(kIdleTime);
    return met && sent;
}
} // namespace

bool RunGarbage(int rounds, unsigned)
{
    CScene scene(ReportedErrors());
    AllowDescriptors();
    scene.StartOwner({"--connections", kConnections});
    scene.AwaitOwner();
    const ErrorId error = ErrorsOf(0).front();
    const auto begin = std::chrono::steady_clock::now();
    CProbe probe(scene.ConfigurationPrefix(), error);
    SGarbage sent;
    bool good = SendGarbage(kHalfSent, sent); // what is always kept is there from now on
    const long before = scene.OwnerMemory();
    good = SendGarbage(rounds, sent) && good;
    good = Reaches("malformed", sent.refused) && Reaches("unknown", sent.meaningless) && good;
    const long between = scene.OwnerMemory();
    good = SayNothing() && good;
    const std::int64_t malformed = CScene::OwnerNumber("malformed");
    const std::int64_t unknown = CScene::OwnerNumber("unknown");
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
    std::printf("refused       %" PRId64 " times as no message, %" PRId64 " messages that mean nothing\n",
                malformed, unknown);
    std::printf("memory        %ld KiB before, %ld KiB after\n", before, after);
    std::printf("raise to copy %.1f ms at most, of %zu\n", probe.Quantile(1), probe.Delays().size());
    verdict.Print();
    const bool kept = after - before <= kMostMemory && probe.Quantile(1) <= kMostDelay;
    return good && verdict.Good() && !probe.Delays().empty() && (kept || rounds < kFullSize);
}

} // namespace Campaign
