#include "unit/Common/limits/FakeClock.h"
#include "unit/Common/view/ViewFixture.h"

#include <algorithm>
#include <memory>
#include <ostream>
#include <random>
#include <set>
#include <tuple>

// Consoles start in 1970 until a satellite tells them the time, and drivers set clocks by hand. Whatever the
// clock does, a display that has started empty shows after each synchronisation what the table says.

namespace
{

using namespace Faultkeeper;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kTenYears = kHour * 24 * 3652;
constexpr std::int64_t kToday = 1790000000;
constexpr std::int64_t kLast32BitSecond = 2147483647; // 2038-01-19T03:14:07
constexpr std::int64_t kLatest = 23 * kTenYears;      // times end in 2262
constexpr int kErrors = 6;

/// How the clock goes.
struct SScript
{
    const char* name;
    std::int64_t start;
    std::vector<std::int64_t> steps; ///< in seconds, taken in turn, over and over
};

std::ostream& operator<<(std::ostream& out, const SScript& script)
{
    return out << script.name;
}

const std::vector<SScript> kScripts = {
    {"StandsStillIn1970", 0, {0}},
    {"StandsStillToday", kToday, {0}},
    {"Leaps1970ToToday", 0, {0, 1, 0, 1, kToday, 0, 1, 1, -kToday - 4}},
    {"LeapsTodayTo1970AndBack", kToday, {1, -kToday, 1, 1, kToday, 1}},
    {"HourForward", kToday, {kHour}},
    {"HourBack", kToday, {-kHour}},
    {"HourForwardAndBack", kToday, {kHour, 1, -kHour, 1}},
    {"TenYearsForward", 0, {kTenYears, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}}, // 1970 to 2200
    {"TenYearsBack", kLatest, {-kTenYears, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"TenYearsForwardAndBack", kToday, {kTenYears, 1, -kTenYears, 1}},
    {"SecondsAround2038", kLast32BitSecond - 60, {1, 0, 0}},
    {"BackAndForthAcross2038", kLast32BitSecond - 1, {3, 0, -2, 0, 3, -4}},
    {"After2038", kLast32BitSecond + 1, {1, -1, kHour, -kHour}},
    {"Around2106", 2 * kLast32BitSecond - 60, {1, 0, 0}}, // the end of unsigned 32 bits
};

/// A display process: an empty database of its own and a reading view.
struct SDisplay
{
    explicit SDisplay(const std::string& prefix) : database(prefix) {}

    CErrorDatabase database;
    CErrorDatabaseView view{false, eViewReader};
};

/// An owner and two displays, and a clock that stands from before the first reading.
class ViewClockFixture : public ViewFixture
{
protected:
    explicit ViewClockFixture(std::int64_t seconds) : ViewFixture(kErrors), m_clock(seconds)
    {
        EXPECT_TRUE(m_owner.LoadErrors(m_database));
        EXPECT_TRUE(m_owner.FaultkeeperReady(true));
        for (std::unique_ptr<SDisplay>& display : m_displays)
            display = std::make_unique<SDisplay>(m_directory.Prefix());
    }

    void Synchronise(SDisplay& display)
    {
        display.view.Synchronise(display.database);
        ASSERT_FALSE(display.view.Failed());
        std::set<int> raised;
        std::set<int> active;
        for (int number = 0; number < kErrors; ++number)
        {
            if ((Record(number).flags & kRaisedFlag) != 0)
                raised.insert(number);
            if (display.database.GetErrorList()[static_cast<std::size_t>(number)].Active())
                active.insert(number);
        }
        ASSERT_EQ(active, raised);
    }

    FakeClock m_clock;
    CErrorDatabaseView m_owner{true, eViewOwner};
    std::unique_ptr<SDisplay> m_displays[2];
};

class RunningClockTest : public ViewClockFixture,
                         public testing::WithParamInterface<std::tuple<SScript, unsigned>>
{
protected:
    RunningClockTest()
        : ViewClockFixture(std::get<0>(GetParam()).start), m_script(std::get<0>(GetParam())),
          m_random(std::get<1>(GetParam()))
    {
    }

    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    void MoveClock(std::size_t step)
    {
        const std::int64_t next = FakeClock::Seconds() + m_script.steps[step % m_script.steps.size()];
        FakeClock::Set(std::clamp<std::int64_t>(next, 0, kLatest), step % 3 == 0 ? 999999999 : 0);
    }

    /// Raises or clears something, by each of the owner's ways.
    void ChangeSomething()
    {
        const std::pair<int, int> id = NumberedErrors::Id(static_cast<int>(Below(kErrors)));
        const std::pair<int, int> other = NumberedErrors::Id(static_cast<int>(Below(kErrors)));
        switch (Below(5))
        {
        case 0:
            ASSERT_TRUE(m_owner.RaiseError(id.first, id.second));
            break;
        case 1:
            ASSERT_TRUE(m_owner.ClearError(id.first, id.second));
            break;
        case 2:
            ASSERT_TRUE(m_owner.RaiseErrors({id, other}));
            break;
        case 3:
            ASSERT_TRUE(m_owner.ClearErrors({id, other}));
            break;
        default: // there and back
            ASSERT_TRUE(m_owner.RaiseErrors({id, other}));
            ASSERT_TRUE(m_owner.ClearError(id.first, id.second));
            break;
        }
    }

    const SScript m_script;
    std::mt19937 m_random;
};

TEST_P(RunningClockTest, DisplaysShowWhatTheTableSaysWhateverTheClockDoes)
{
    for (std::size_t step = 0; step < 300; ++step)
    {
        MoveClock(step);
        for (std::size_t changes = Below(4); changes > 0; --changes)
            ASSERT_NO_FATAL_FAILURE(ChangeSomething());
        ASSERT_NO_FATAL_FAILURE(Synchronise(*m_displays[0])) << "step " << step;
        if (Below(3) == 0)
        {
            ASSERT_NO_FATAL_FAILURE(Synchronise(*m_displays[1])) << "step " << step << ", the slow display";
        }
        if (Below(40) == 0)
            m_displays[Below(2)] = std::make_unique<SDisplay>(m_directory.Prefix());
    }
    EXPECT_GT(FakeClock::Readings(), 300) << "the clock under test is not the one that is set";
}

std::string NameOf(const testing::TestParamInfo<std::tuple<SScript, unsigned>>& info)
{
    return std::string(std::get<0>(info.param).name) + "Seed" + std::to_string(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Clocks, RunningClockTest,
                         testing::Combine(testing::ValuesIn(kScripts), testing::Range(0u, 2u)), NameOf);

/// The parameter is the time at which the clock stands.
class StandingClockTest : public ViewClockFixture, public testing::WithParamInterface<std::int64_t>
{
protected:
    StandingClockTest() : ViewClockFixture(GetParam()) {}
};

TEST_P(StandingClockTest, TheFirstChangeEverIsSeenByADisplayThatWasThereBefore)
{
    Synchronise(*m_displays[0]);
    ASSERT_TRUE(m_owner.RaiseError(NumberedErrors::Code(0), NumberedErrors::Type(0)));
    Synchronise(*m_displays[0]);
    ASSERT_TRUE(m_owner.ClearError(NumberedErrors::Code(0), NumberedErrors::Type(0)));
    Synchronise(*m_displays[0]);
    ASSERT_TRUE(m_owner.RaiseErrors({NumberedErrors::Id(0), NumberedErrors::Id(1)}));
    Synchronise(*m_displays[0]);
}

TEST_P(StandingClockTest, TwoChangesInOneTickAreTwoChanges)
{
    Synchronise(*m_displays[0]);
    ASSERT_TRUE(m_owner.RaiseError(NumberedErrors::Code(1), NumberedErrors::Type(1)));
    Synchronise(*m_displays[0]);
    ASSERT_TRUE(m_owner.ClearError(NumberedErrors::Code(1), NumberedErrors::Type(1)));
    ASSERT_TRUE(m_owner.RaiseError(NumberedErrors::Code(1), NumberedErrors::Type(1)));
    EXPECT_GT(Record(1).raisedTime, Record(1).clearedTime);
    EXPECT_EQ(m_displays[0]->view.Synchronise(m_displays[0]->database), 1);
    ASSERT_TRUE(m_owner.ClearError(NumberedErrors::Code(1), NumberedErrors::Type(1)));
    EXPECT_GT(Record(1).clearedTime, Record(1).raisedTime);
    EXPECT_EQ(m_displays[0]->view.Synchronise(m_displays[0]->database), 2);
}

/// The clock is not behind: what the program has read before does not count.
TEST_P(StandingClockTest, ChangesBearAtLeastTheClocksTime)
{
    ASSERT_TRUE(m_owner.RaiseError(NumberedErrors::Code(0), NumberedErrors::Type(0)));
    EXPECT_GE(Record(0).raisedTime, Core::Time(FakeClock::Seconds()));
    EXPECT_GE(Record(0).raisedTime.AsDouble(), static_cast<double>(FakeClock::Seconds()));
    ASSERT_TRUE(m_owner.ClearErrors({NumberedErrors::Id(0)}));
    EXPECT_GE(Header().lastClearTime, Core::Time(FakeClock::Seconds()));
}

INSTANTIATE_TEST_SUITE_P(Seconds, StandingClockTest,
                         testing::Values(0, 1, kToday, kLast32BitSecond, kLast32BitSecond + 1, kLatest));

} // namespace
