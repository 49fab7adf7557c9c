#include "faultkeeperd/owner/RetryPause.h"

#include <gtest/gtest.h>

#include <vector>

using Faultkeeper::Apps::CRetryPause;
using std::chrono::microseconds;
using std::chrono::milliseconds;

namespace
{
const CRetryPause::Clock::time_point kStart{milliseconds(1000000)};

std::vector<int> PausesOf(int failures)
{
    CRetryPause pause;
    std::vector<int> pauses;
    for (int i = 0; i < failures; ++i)
    {
        pause.Failed(kStart);
        pauses.push_back(pause.MillisecondsLeft(kStart));
    }
    return pauses;
}
} // namespace

TEST(RetryPause, IsDueBeforeAnythingFailed)
{
    const CRetryPause pause;
    EXPECT_TRUE(pause.Due(kStart));
    EXPECT_EQ(pause.MillisecondsLeft(kStart), 0);
}

TEST(RetryPause, DoublesUpToAQuarterOfASecond)
{
    EXPECT_EQ(PausesOf(10), (std::vector<int>{1, 2, 4, 8, 16, 32, 64, 128, 250, 250}));
}

TEST(RetryPause, IsDueWhenThePauseIsOverAndNotBefore)
{
    CRetryPause pause;
    pause.Failed(kStart);
    EXPECT_FALSE(pause.Due(kStart + microseconds(999)));
    EXPECT_TRUE(pause.Due(kStart + milliseconds(1)));
}

TEST(RetryPause, RoundsWhatIsLeftUpSoThatAWaitNeverEndsTooEarly)
{
    CRetryPause pause;
    pause.Failed(kStart);
    EXPECT_EQ(pause.MillisecondsLeft(kStart + microseconds(1)), 1);
    EXPECT_EQ(pause.MillisecondsLeft(kStart + microseconds(999)), 1);
}

TEST(RetryPause, BeginsAnewAfterASuccess)
{
    CRetryPause pause;
    pause.Failed(kStart);
    pause.Failed(kStart);
    pause.Succeeded();
    EXPECT_TRUE(pause.Due(kStart));
    pause.Failed(kStart);
    EXPECT_EQ(pause.MillisecondsLeft(kStart), 1);
}
