#include "campaign/parts/DisplayProcess.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <chrono>
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

std::unique_ptr<CChildProcess> StartCopier(const std::string& configuration)
{
    return std::make_unique<CChildProcess>(
        [&configuration]() -> int
        {
            BeQuiet();
            Faultkeeper::CErrorDatabase database(configuration);
            CErrorDatabaseView view(false, Faultkeeper::eViewReader);
            while (!view.Failed())
                view.Synchronise(database);
            return 1;
        });
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
