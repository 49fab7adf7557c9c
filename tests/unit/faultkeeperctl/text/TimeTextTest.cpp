#include "faultkeeperctl/text/TimeText.h"

#include <Core/Time.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

using namespace Faultkeeper::Apps;

namespace
{
class TimeTextTest : public testing::Test
{
protected:
    static void Zone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeTextTest() override
    {
        unsetenv("TZ");
        tzset();
    }
};
} // namespace

TEST_F(TimeTextTest, ShowsLocalTimeWithItsDistanceFromUtc)
{
    Zone("UTC0");
    EXPECT_EQ(TimeText(1772384709), "2026-03-01T17:05:09+00:00");
    Zone("ZON-1");
    EXPECT_EQ(TimeText(1772384709), "2026-03-01T18:05:09+01:00");
    Zone("ZON3:30");
    EXPECT_EQ(TimeText(1772384709), "2026-03-01T13:35:09-03:30");
}

TEST_F(TimeTextTest, GoesOnPast2038)
{
    Zone("UTC0");
    EXPECT_EQ(TimeText(4102444800), "2100-01-01T00:00:00+00:00");
}

TEST_F(TimeTextTest, SaysNeverForATimeThatWasNotRecorded)
{
    Zone("UTC0");
    EXPECT_EQ(TimeOrNever(0), "never");
    EXPECT_EQ(TimeOrNever(1), "1970-01-01T00:00:01+00:00");
}

TEST_F(TimeTextTest, RoundsTimesDownToSeconds)
{
    EXPECT_EQ(WholeSeconds(Core::Time::FromNanoseconds(1999999999)), 1);
    EXPECT_EQ(WholeSeconds(Core::Time::FromNanoseconds(-1)), 0); // cut to microseconds first
    EXPECT_EQ(WholeSeconds(Core::Time::FromNanoseconds(-1500000000)), -2);
}
