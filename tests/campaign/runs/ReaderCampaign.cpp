#include "campaign/parts/DisplayProcess.h"
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
constexpr unsigned kLongestPause = 20000; // microseconds
constexpr std::size_t kDisplays = 4;      // every other one holds the lock instead of copying

class CDisplays
{
public:
    CDisplays(const std::string& configuration, unsigned seed)
        : m_configuration(configuration), m_random(seed)
    {
        m_processes.resize(kDisplays);
        for (std::size_t display = 0; display < kDisplays; ++display)
            Start(display);
    }

    /// Kills one or stops it for a while. @return false if it had ended by itself
    bool Disturb()
    {
        const std::size_t display = m_random() % kDisplays;
        Support::CChildProcess& process = *m_processes[display];
        const bool running = process.Running();
        const unsigned way = static_cast<unsigned>(m_random() % 3);
        if (way > 0)
        {
            process.Signal(SIGSTOP);
            Pause();
        }
        if (way == 1)
            process.Signal(SIGCONT);
        else
            Kill(display);
        Pause();
        return running;
    }

    void Pause() { std::this_thread::sleep_for(std::chrono::microseconds(m_random() % kLongestPause)); }

private:
    void Start(std::size_t display)
    {
        m_processes[display] = display % 2 == 0 ? StartCopier(m_configuration) : StartHolder();
    }

    void Kill(std::size_t display)
    {
        m_processes[display]->Signal(SIGKILL);
        m_processes[display]->Wait();
        Start(display);
    }

    const std::string m_configuration;
    std::minstd_rand m_random;
    std::vector<std::unique_ptr<Support::CChildProcess>> m_processes;
};
} // namespace

bool RunReaders(int rounds, unsigned seed)
{
    CScene scene(ReportedErrors());
    scene.StartOwner();
    scene.AwaitOwner();
    bool good = true;
    CSharedAccounts accounts;
    const auto begin = std::chrono::steady_clock::now();
    CReporters reporters(seed, accounts);
    {
        CDisplays displays(scene.ConfigurationPrefix(), seed);
        for (int round = 0; round < rounds && good; ++round)
            good = displays.Disturb() && LockFree(scene);
    }
    good = reporters.Finish() && good;
    good = LockFree(scene) && good;
    good = scene.EndOwner() && good;
    good = PrintRun("display", rounds, seed, begin, *accounts) && good;
    return JudgeAll(scene, *accounts).Good() && good;
}

} // namespace Campaign
