#include "campaign/parts/Verdict.h"
#include "campaign/runs/Campaigns.h"
#include "campaign/runs/OwnerCampaign.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <random>
#include <thread>

namespace Campaign
{

namespace
{
constexpr unsigned kLongestPause = 40000; // microseconds

/// Kills or stops one of those with an odd number.
void Disturb(CReporters& reporters, std::minstd_rand& random)
{
    const auto reporter = static_cast<int>(random() % (kReporters / 2)) * 2 + 1;
    const auto pause = [&random]
    { std::this_thread::sleep_for(std::chrono::microseconds(random() % kLongestPause)); };
    if (random() % 2 == 0)
    {
        reporters.Process(reporter).Signal(SIGSTOP);
        pause();
        if (random() % 2 == 0)
            reporters.Process(reporter).Signal(SIGCONT);
    }
    if (random() % 2 == 0)
        reporters.Replace(reporter, static_cast<unsigned>(random()));
    reporters.Process(reporter).Signal(SIGCONT);
    pause();
}

/// What was killed takes with it what its system did not have yet, and a successor does not know what was
/// raised: then there are fewer raises than were accepted, and never more.
void JudgeKilled(const States& states, const SAccounts& accounts, SVerdict& verdict)
{
    for (int reporter = 1; reporter < kReporters; reporter += 2)
    {
        const std::vector<ErrorId> errors = ErrorsOf(reporter);
        for (std::size_t i = 0; i < errors.size(); ++i)
        {
            const auto found = states.find(errors[i]);
            const std::uint64_t stored = found != states.end() ? found->second.raises : 0;
            // A kill may come between a report and its account.
            const std::uint64_t most =
                accounts.reporters[reporter].raises[i] + accounts.reporters[reporter].kills;
            verdict.twice += stored > most ? stored - most : 0;
        }
    }
}
} // namespace

bool RunReporters(int rounds, unsigned seed)
{
    CScene scene(ReportedErrors());
    scene.StartOwner();
    scene.AwaitOwner();
    bool good = true;
    CSharedAccounts accounts;
    const auto begin = std::chrono::steady_clock::now();
    CReporters reporters(seed, accounts);
    std::minstd_rand random(seed);
    for (int round = 0; round < rounds && good; ++round)
    {
        Disturb(reporters, random);
        good = LockFree(scene);
    }
    good = reporters.Finish() && good;
    good = scene.EndOwner() && good;

    SVerdict verdict;
    const States states = StoredStates(scene.StorePath());
    for (int reporter = 0; reporter < kReporters; reporter += 2)
        JudgeReporter(reporter, states, *accounts, verdict);
    JudgeKilled(states, *accounts, verdict);
    JudgeTable(scene.Table(), states, verdict);
    JudgeJournal(StoredJournal(scene.StorePath()), verdict);
    good = PrintRun("reporter", rounds, seed, begin, *accounts) && good;
    verdict.Print();
    return good && verdict.Good();
}

} // namespace Campaign
