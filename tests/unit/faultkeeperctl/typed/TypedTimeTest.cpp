#include "faultkeeperctl/typed/TypedTime.h"

#include "faultkeeperctl/text/TimeText.h"

#include <Core/Time.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>

using namespace Faultkeeper::Apps;

namespace
{
constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kMarch = 1772384709; // 2026-03-01T17:05:09Z
constexpr std::int64_t kNow = kMarch * kSecond;

class TypedTime : public testing::Test
{
protected:
    TypedTime() { Zone("UTC0"); }
    ~TypedTime() override { Zone("UTC0"); }

    static void Zone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }

    /// "first last" in seconds, with a fraction if there is one, or what is wrong.
    static std::string Read(const std::string& typed)
    {
        STypedTime time;
        std::string problem;
        if (!ParseTime(typed, kNow, time, problem))
            return problem;
        return Shown(time.first) + " " + Shown(time.last);
    }

    static std::string Shown(std::int64_t nanoseconds)
    {
        const std::string fraction = std::to_string(kSecond + nanoseconds % kSecond).substr(1);
        return std::to_string(nanoseconds / kSecond) + "." + fraction;
    }
};
} // namespace

TEST_F(TypedTime, LastsAsLongAsItsLastDigit)
{
    EXPECT_EQ(Read("2026-03-01T17:05:09+00:00"), "1772384709.000000000 1772384709.999999999");
    EXPECT_EQ(Read("2026-03-01T17:05:09.25Z"), "1772384709.250000000 1772384709.259999999");
    EXPECT_EQ(Read("2026-03-01T17:05:09.123456789"), "1772384709.123456789 1772384709.123456789");
    EXPECT_EQ(Read("2026-03-01 17:05"), "1772384700.000000000 1772384759.999999999");
    EXPECT_EQ(Read("2026-03-01T17"), "1772384400.000000000 1772387999.999999999");
    EXPECT_EQ(Read("2026-03-01"), "1772323200.000000000 1772409599.999999999");
    EXPECT_EQ(Read("2026-03-31"), "1774915200.000000000 1775001599.999999999");
    EXPECT_EQ(Read("2026-03"), "1772323200.000000000 1775001599.999999999");
    EXPECT_EQ(Read("2026-12"), "1796083200.000000000 1798761599.999999999");
    EXPECT_EQ(Read("2261-12").substr(21), "9214646399.999999999");
}

TEST_F(TypedTime, KnowsZonesAndTheLocalOne)
{
    EXPECT_EQ(Read("2026-03-01T18:05:09+01:00"), Read("2026-03-01T17:05:09Z"));
    EXPECT_EQ(Read("2026-03-01T18:05:09+0100"), Read("2026-03-01T17:05:09Z"));
    EXPECT_EQ(Read("2026-03-01T13:35:09-03:30"), Read("2026-03-01T17:05:09Z"));
    EXPECT_EQ(Read("2026-03-01T18:05:09+01"), Read("2026-03-01T17:05:09Z"));
    EXPECT_EQ(Read("2026-03-01T12-05"), Read("2026-03-01T17Z"));
    Zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(Read("2026-03-01T18:05:09"), "1772384709.000000000 1772384709.999999999");
    EXPECT_EQ(Read("2026-07-01T00:00:00"), Read("2026-06-30T22:00:00Z"));
    EXPECT_EQ(Read("2026-03-29"), "1774738800.000000000 1774821599.999999999"); // of 23 hours
    EXPECT_EQ(Read("2026-03"), "1772319600.000000000 1774994399.999999999");
}

TEST_F(TypedTime, KnowsHowLongAgo)
{
    EXPECT_EQ(Read("now"), "1772384709.000000000 1772384709.000000000");
    EXPECT_EQ(Read("90s"), "1772384619.000000000 1772384619.000000000");
    EXPECT_EQ(Read("10m"), "1772384109.000000000 1772384109.000000000");
    EXPECT_EQ(Read("2h"), "1772377509.000000000 1772377509.000000000");
    EXPECT_EQ(Read("1d"), "1772298309.000000000 1772298309.000000000");
    EXPECT_EQ(Read("1h30m"), Read("90m"));
    EXPECT_EQ(Read("999999d"), "\"999999d\" ago was before 1970");
}

TEST_F(TypedTime, KnowsTheCalendar)
{
    EXPECT_EQ(Read("1970-01-01T00:00:00Z"), "0.000000000 0.999999999");
    EXPECT_EQ(Read("2024-02-29T00:00:00Z").substr(0, 10), "1709164800");
    EXPECT_EQ(Read("2100-03-01T00:00:00Z").substr(0, 10), "4107542400");
    EXPECT_EQ(Read("2261-12-31T23:59:59Z").substr(0, 10), "9214646399");
}

TEST_F(TypedTime, RefusesEverythingElse)
{
    for (const std::string typed : {"",
                                    "yesterday",
                                    "10",
                                    "10x",
                                    "m",
                                    "-5m",
                                    "1h-30m",
                                    "2026",
                                    "2026-13-01",
                                    "2026-02-29",
                                    "2026-03-",
                                    "2026-3",
                                    "2026-13",
                                    "2026-03T17",
                                    "2026-03-01T",
                                    "2026-03-01T1",
                                    "2026-03-01T17:",
                                    "2026-03-01+01",
                                    "2026-03-01T25:00",
                                    "2026-03-01T17:60",
                                    "2026-03-01T17:05:60",
                                    "2026-03-01T17:05:09.",
                                    "2026-03-01T17:05:09+1",
                                    "2026-03-01T17:05:09+01:",
                                    "2026-03-01T17:05:09Zx",
                                    "2026-03-01 ",
                                    "1969-12-31",
                                    "2262-01-01",
                                    "12345678901d",
                                    "2026-03-01T17:05:09.1234567890"})
        EXPECT_EQ(Read(typed), "\"" + typed +
                                   "\" is no time: type one as it is printed, such as "
                                   "2026-03-01T17:05:09+01:00 or less of it, or how long ago it was, such as "
                                   "90s, 10m, 2h, 1d or 1h30m");
}

TEST_F(TypedTime, ReadsWhatIsPrinted)
{
    std::mt19937_64 random(3);
    for (const char* const zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "WEST3:30", "EAST-14"})
    {
        Zone(zone);
        for (int i = 0; i < 500; ++i)
        {
            const auto moment = static_cast<std::int64_t>(random() % 9000000000U) * kSecond +
                                static_cast<std::int64_t>(random() % 1000000000U);
            const std::string text = ExactTimeText(Core::Time::FromNanoseconds(moment), 9);
            STypedTime time;
            std::string problem;
            ASSERT_TRUE(ParseTime(text, kNow, time, problem)) << text;
            ASSERT_EQ(time.first, moment) << text;
            ASSERT_EQ(time.last, moment) << text;
        }
    }
}

TEST_F(TypedTime, ExactTimesAreCutOff)
{
    const Core::Time time = Core::Time::FromNanoseconds(kNow + 129999999);
    EXPECT_EQ(ExactTimeText(time, 3), "2026-03-01T17:05:09.129+00:00");
    EXPECT_EQ(ExactTimeText(time, 1), "2026-03-01T17:05:09.1+00:00");
    EXPECT_EQ(ExactTimeText(Core::Time::FromNanoseconds(-1), 9), "1969-12-31T23:59:59.999999999+00:00");
}
