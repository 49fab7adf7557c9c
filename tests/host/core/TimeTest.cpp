#include <Core/Time.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

namespace
{

using Core::Time;

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

std::int64_t ValueInMemory(const Time& time)
{
    std::int64_t value = 0;
    std::memcpy(&value, reinterpret_cast<const unsigned char*>(&time) + 4, sizeof(value));
    return value;
}

Time WithTypeWord(Time time, std::uint32_t word)
{
    std::memcpy(static_cast<void*>(&time), &word, sizeof(word));
    return time;
}

TEST(HostTime, TakesTwelveBytesAlignedToFour)
{
    EXPECT_EQ(sizeof(Time), 12u);
    EXPECT_EQ(alignof(Time), 4u);
    EXPECT_TRUE(std::is_trivially_copyable<Time>::value);
}

TEST(HostTime, HoldsItsNanosecondsInBytesFourToElevenInTheMachinesOrder)
{
    EXPECT_EQ(ValueInMemory(Time::FromNanoseconds(0x0102030405060708)), 0x0102030405060708);
    EXPECT_EQ(ValueInMemory(Time(-3)), -3 * kNanosecondsPerSecond);
}

TEST(HostTime, IsAllZeroBytesByDefault)
{
    const Time time;
    const unsigned char zero[12] = {};
    EXPECT_EQ(std::memcmp(&time, zero, sizeof(zero)), 0);
    EXPECT_EQ(time, Time(0));
}

TEST(HostTime, CountsSecondsFrom1970)
{
    EXPECT_EQ(Time(1).Nanoseconds(), 1000000000);
    EXPECT_EQ(Time(5000000000).Nanoseconds(), 5000000000000000000); // past 2038
    EXPECT_EQ(Time(-1).Nanoseconds(), -1000000000);
}

TEST(HostTime, SecondsOutOfRangeGiveTheEarliestOrLatestTime)
{
    EXPECT_EQ(Time(9223372036).Nanoseconds(), 9223372036000000000);
    EXPECT_EQ(Time(9223372037).Nanoseconds(), kGreatest);
    EXPECT_EQ(Time(kGreatest).Nanoseconds(), kGreatest);
    EXPECT_EQ(Time(-9223372036).Nanoseconds(), -9223372036000000000);
    EXPECT_EQ(Time(-9223372037).Nanoseconds(), kSmallest);
    EXPECT_EQ(Time(kSmallest).Nanoseconds(), kSmallest);
}

TEST(HostTime, IsOrderedByItsNanoseconds)
{
    const std::vector<Time> ascending = {Time(-2), Time(-1), Time(), Time::FromNanoseconds(1), Time(1)};
    for (std::size_t a = 0; a < ascending.size(); ++a)
    {
        for (std::size_t b = 0; b < ascending.size(); ++b)
        {
            EXPECT_EQ(ascending[a] < ascending[b], a < b);
            EXPECT_EQ(ascending[a] > ascending[b], a > b);
            EXPECT_EQ(ascending[a] <= ascending[b], a <= b);
            EXPECT_EQ(ascending[a] >= ascending[b], a >= b);
            EXPECT_EQ(ascending[a] == ascending[b], a == b);
            EXPECT_EQ(ascending[a] != ascending[b], a != b);
        }
    }
}

TEST(HostTime, TheTypeWordTakesNoPartInComparing)
{
    const Time marked = WithTypeWord(Time(7), 0xDEADBEEF);
    EXPECT_TRUE(marked == Time(7));
    EXPECT_FALSE(marked != Time(7));
    EXPECT_TRUE(marked < WithTypeWord(Time(8), 0));
}

TEST(HostTime, AsDoubleIsInSecondsCutToWholeMicroseconds)
{
    EXPECT_EQ(Time(12).AsDouble(), 12.0);
    EXPECT_EQ(Time::FromNanoseconds(1500000000).AsDouble(), 1.5);
    EXPECT_EQ(Time::FromNanoseconds(1999999999).AsDouble(), 1.999999);
    EXPECT_EQ(Time::FromNanoseconds(999).AsDouble(), 0.0);
    EXPECT_EQ(Time::FromNanoseconds(1700000000123456789).AsDouble(), 1700000000.123456);
}

TEST(HostTime, AsDoubleCutsTimesBefore1970TowardsZero)
{
    EXPECT_EQ(Time::FromNanoseconds(-1999999999).AsDouble(), -1.999999);
    EXPECT_EQ(Time::FromNanoseconds(-999).AsDouble(), 0.0);
}

TEST(HostTime, NanosecondsAndFromNanosecondsAreEachOthersReverse)
{
    for (const std::int64_t value :
         {kSmallest, std::int64_t(-1), std::int64_t(0), std::int64_t(1), kGreatest})
        EXPECT_EQ(Time::FromNanoseconds(value).Nanoseconds(), value);
}

TEST(HostTime, NowIsTheSystemsClock)
{
    // To the second only: other tests of this program may have pushed Now ahead by a few nanoseconds.
    const Time before(std::time(nullptr) - 1);
    const Time now = Time::Now();
    EXPECT_LE(before, now);
    EXPECT_LE(now, Time(std::time(nullptr) + 2));
}

TEST(HostTime, NowIsLaterOnEveryCall)
{
    Time last = Time::Now();
    for (int call = 0; call < 100000; ++call)
    {
        const Time now = Time::Now();
        ASSERT_LT(last, now) << "call " << call;
        last = now;
    }
}

TEST(HostTime, NowNeverRepeatsOnAnyNumberOfThreads)
{
    std::vector<std::vector<std::int64_t>> seen(4);
    std::vector<std::thread> threads;
    for (auto& mine : seen)
    {
        threads.emplace_back(
            [&mine]
            {
                for (int call = 0; call < 20000; ++call)
                    mine.push_back(Time::Now().Nanoseconds());
            });
    }
    std::vector<std::int64_t> all;
    for (std::size_t index = 0; index < threads.size(); ++index)
    {
        threads[index].join();
        EXPECT_TRUE(std::is_sorted(seen[index].begin(), seen[index].end()));
        all.insert(all.end(), seen[index].begin(), seen[index].end());
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

TEST(HostTime, NotBeforeInThePastChangesNothing)
{
    Time::NotBefore(Time(1));
    const std::time_t clock = std::time(nullptr);
    EXPECT_LE(Time(clock - 1), Time::Now());
    EXPECT_LE(Time::Now(), Time(clock + 30));
}

// In processes of their own: there is no way back from a time to come.
TEST(HostTimeDeathTest, AfterNotBeforeNowIsLater)
{
    const auto run = []
    {
        const Time future(std::time(nullptr) + 100000);
        Time::NotBefore(future);
        const Time first = Time::Now();
        const Time second = Time::Now();
        std::_Exit(future < first && first < second && second < Time(std::time(nullptr) + 100001) ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(HostTimeDeathTest, NotBeforeAnEarlierTimeDoesNotTakeBackALaterOne)
{
    const auto run = []
    {
        const Time future(std::time(nullptr) + 100000);
        Time::NotBefore(future);
        Time::NotBefore(Time(5));
        std::_Exit(future < Time::Now() ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(HostTimeDeathTest, NowIsLaterOnEveryCallUpToTheLatestTimeAndStaysThere)
{
    const auto run = []
    {
        Time::NotBefore(Time::FromNanoseconds(kGreatest - 2));
        bool right = Time::Now().Nanoseconds() == kGreatest - 1;
        for (int call = 0; call < 3; ++call)
            right = right && Time::Now().Nanoseconds() == kGreatest;
        Time::NotBefore(Time::FromNanoseconds(kGreatest));
        std::_Exit(right && Time::Now().Nanoseconds() == kGreatest ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

} // namespace
