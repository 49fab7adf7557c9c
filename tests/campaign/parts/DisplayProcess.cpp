#include "campaign/parts/DisplayProcess.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <algorithm>
#include <cstdio>
#include <thread>

namespace Campaign
{

using Faultkeeper::CErrorDatabaseView;
using Support::CChildProcess;

namespace
{
constexpr std::chrono::milliseconds kHeld(2);
constexpr std::chrono::milliseconds kBetween(5);

/// The lock is busy often enough, and the library says so each time.
void BeQuiet()
{
    std::freopen("/dev/null", "w", stderr);
}
} // namespace

std::unique_ptr<CChildProcess> StartCopier(const std::string& configuration, std::chrono::milliseconds pause)
{
    return std::make_unique<CChildProcess>(
        [&configuration, pause]() -> int
        {
            BeQuiet();
            Faultkeeper::CErrorDatabase database(configuration);
            CErrorDatabaseView view(false, Faultkeeper::eViewReader);
            for (; !view.Failed(); std::this_thread::sleep_for(pause))
                view.Synchronise(database);
            return 1;
        });
}

std::vector<std::unique_ptr<CChildProcess>> StartCopiers(int count, const std::string& configuration,
                                                         std::chrono::milliseconds pause)
{
    std::vector<std::unique_ptr<CChildProcess>> copiers;
    for (int i = 0; i < count; ++i)
        copiers.push_back(StartCopier(configuration, pause));
    return copiers;
}

bool AllRun(const std::vector<std::unique_ptr<CChildProcess>>& displays)
{
    const bool allRun =
        std::all_of(displays.begin(), displays.end(), [](const auto& display) { return display->Running(); });
    if (!allRun)
        std::fprintf(stderr, "a display had ended by itself\n");
    return allRun;
}

std::unique_ptr<CChildProcess> StartHolder()
{
    return std::make_unique<CChildProcess>(
        []() -> int
        {
            BeQuiet();
            CErrorDatabaseView view(false, Faultkeeper::eViewReader);
            while (!view.Failed())
            {
                if (view.GetLock(false))
                {
                    std::this_thread::sleep_for(kHeld);
                    view.ReleaseLock();
                }
                std::this_thread::sleep_for(kBetween);
            }
            return 1;
        });
}

} // namespace Campaign
