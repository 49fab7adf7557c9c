#include "campaign/runs/OwnerCampaign.h"

#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <random>
#include <thread>

namespace Campaign
{

namespace
{
// Of owners that are killed, in microseconds. Every other one hardly gets through its start, which takes some
// 20000; the others live long enough for reporters to find them, which takes up to 250000.
constexpr unsigned kShortLife = 60000;
constexpr unsigned kLongLife = 700000;
constexpr std::chrono::milliseconds kLastLife(500); // before it is said that it is over
} // namespace

bool KillOwners(CScene& scene, int rounds, unsigned seed, const std::vector<std::string>& arguments)
{
    std::minstd_rand random(seed);
    bool good = true;
    for (int round = 0; round < rounds; ++round)
    {
        scene.StartOwner(arguments);
        std::this_thread::sleep_for(
            std::chrono::microseconds(random() % (round % 2 == 0 ? kLongLife : kShortLife)));
        good = scene.KillOwner() && good;
    }
    scene.StartOwner(arguments);
    scene.AwaitOwner();
    std::this_thread::sleep_for(kLastLife);
    return good;
}

bool PrintRun(const char* what, int rounds, unsigned seed, std::chrono::steady_clock::time_point begin,
              const SAccounts& accounts)
{
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    std::printf("%s killed %d times in %.1f s (seed %u)\n", what, rounds, seconds.count(), seed);
    std::printf("reports       %" PRIu64 " by %d reporters on %d errors\n", accounts.Reports(), kReporters,
                kReporters * kErrorsEach);
    if (accounts.Reports() == 0)
        std::fprintf(stderr, "nothing was reported\n");
    return accounts.Reports() > 0;
}

bool RunOwners(int rounds, unsigned seed)
{
    CScene scene(ReportedErrors());
    CSharedAccounts accounts;
    const auto begin = std::chrono::steady_clock::now();
    CReporters reporters(seed, accounts);
    bool good = KillOwners(scene, rounds, seed, {});
    good = reporters.Finish() && good;
    good = scene.EndOwner() && good;

    good = PrintRun("owner", rounds, seed, begin, *accounts) && good;
    return JudgeAll(scene, *accounts).Good() && good;
}

} // namespace Campaign
