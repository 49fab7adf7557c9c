#include "faultkeeperctl/past/PastState.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kStart = 1772384709 * kSecond;

/// A machine with an owner, written down as its store would have it. Seconds count from kStart.
class CMachine
{
public:
    void Wait(std::int64_t seconds) { m_now += seconds * kSecond; }
    void SetClock(std::int64_t seconds) { m_clockOffset += seconds * kSecond; }

    void Restart()
    {
        m_boot = m_now;
        for (auto& error : m_errors)
            error.second.entry.flags = 0;
    }

    void Change(int type, bool raised)
    {
        SStoredError& error = m_errors[type];
        error.entry.problemCode = 0x40C1B;
        error.entry.problemType = static_cast<std::int16_t>(type);
        if (((error.entry.flags & kRaisedFlag) != 0) == raised)
            return;
        error.entry.flags = raised ? kRaisedFlag : std::uint16_t(0);
        (raised ? error.entry.raisedTime : error.entry.clearedTime) = Core::Time::FromNanoseconds(Clock());
        error.raises += raised ? 1 : 0;
        STransition transition;
        transition.number = ++m_number;
        transition.time = Core::Time::FromNanoseconds(Clock());
        transition.sinceBoot = m_now - m_boot;
        transition.raised = raised;
        transition.problemCode = 0x40C1B;
        transition.problemType = type;
        m_journal.push_back(transition);
    }

    /// @param kept  transitions that the journal holds
    SPast Past(std::size_t kept = 1000000, bool ofThisBoot = true) const
    {
        SPast past;
        const std::size_t first = m_journal.size() > kept ? m_journal.size() - kept : 0;
        past.journal.assign(m_journal.begin() + static_cast<std::ptrdiff_t>(first), m_journal.end());
        for (const auto& error : m_errors)
            past.errors.push_back(error.second);
        past.now = Clock();
        past.bootTime = Clock() - (m_now - m_boot);
        past.ofThisBoot = ofThisBoot;
        return past;
    }

    std::set<int> Active() const
    {
        std::set<int> active;
        for (const auto& error : m_errors)
        {
            if (error.second.entry.flags != 0)
                active.insert(error.first);
        }
        return active;
    }

    std::int64_t Clock() const { return m_now + m_clockOffset; }

private:
    std::int64_t m_now = kStart + 1000 * kSecond;
    std::int64_t m_clockOffset = -1000 * kSecond;
    std::int64_t m_boot = kStart;
    std::uint64_t m_number = 0;
    std::map<int, SStoredError> m_errors;
    std::vector<STransition> m_journal;
};

/// "2 since 5, 3; not known: 4"; times count from kStart, and are missing where they are not known.
std::string At(const SPast& past, std::int64_t seconds)
{
    SPastState state;
    std::string problem;
    if (!StateAt(past, kStart + seconds * kSecond, state, problem))
        return problem;
    std::string text;
    for (const SPastError& error : state.active)
    {
        text += (text.empty() ? "" : ", ") + std::to_string(error.id.second);
        if (error.raised != Core::Time())
            text += " since " + std::to_string((error.raised.Nanoseconds() - kStart) / kSecond);
    }
    for (const ErrorId& id : state.unknown)
        text += "; not known: " + std::to_string(id.second);
    for (const std::string& note : state.notes)
        text += "; " + note;
    return text;
}

class PastStateModel : public testing::TestWithParam<unsigned>
{
};
} // namespace

TEST(PastState, FollowsTheTransitions)
{
    CMachine machine;
    machine.Wait(10);
    machine.Change(2, true);
    machine.Wait(10);
    machine.Change(3, true);
    machine.Wait(10);
    machine.Change(2, false);
    machine.Wait(10);
    const SPast past = machine.Past();
    EXPECT_EQ(At(past, 10), "2 since 10");
    EXPECT_EQ(At(past, 19), "2 since 10");
    EXPECT_EQ(At(past, 20), "2 since 10, 3 since 20");
    EXPECT_EQ(At(past, 30), "3 since 20");
    EXPECT_EQ(At(past, 40), "3 since 20");
}

TEST(PastState, BeforeTheJournalIsNotGuessed)
{
    CMachine machine;
    machine.Wait(10);
    machine.Change(2, true);
    setenv("TZ", "UTC0", 1);
    EXPECT_EQ(At(machine.Past(), 9),
              "the journal begins at 2026-03-01T17:05:19.000+00:00: what was active before is not known");
    EXPECT_EQ(At(CMachine().Past(), 9),
              "the journal is empty: nothing has been raised since the store was begun, or nothing is "
              "remembered");
}

TEST(PastState, KnowsWhatTheJournalHasForgottenFromWhatItIsNow)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Change(3, true);
    machine.Change(4, true);
    machine.Wait(10);
    machine.Change(4, false);
    machine.Wait(10);
    machine.Change(3, false);
    machine.Wait(10);
    const SPast past = machine.Past(2);
    EXPECT_EQ(At(past, 15), "2 since 0, 3 since 0");
    EXPECT_EQ(At(past, 25), "2 since 0");
}

TEST(PastState, DoesNotKnowSinceWhenIfThatIsForgotten)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Wait(10);
    machine.Change(3, true);
    machine.Wait(10);
    machine.Change(2, false);
    machine.Wait(10);
    machine.Change(2, true);
    EXPECT_EQ(At(machine.Past(3), 15), "2, 3 since 10");
}

TEST(PastState, ARestartLeavesNothingActive)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Wait(100);
    machine.Restart();
    machine.Wait(20);
    const std::string note = "; the machine was started at 2026-03-01T17:06:49.000+00:00, and when it went "
                             "down before, and whether it ran meanwhile, is not known";
    EXPECT_EQ(At(machine.Past(), 50), "2 since 0" + note); // nothing since the restart
    EXPECT_EQ(At(machine.Past(), 110), "");
    machine.Change(3, true);
    machine.Wait(10);
    EXPECT_EQ(At(machine.Past(), 50), "2 since 0" + note);
    EXPECT_EQ(At(machine.Past(), 110), ""); // after the start, and before it was raised
    EXPECT_EQ(At(machine.Past(), 125), "3 since 120");
}

TEST(PastState, WhatWasRaisedBeforeTheJournalMayHaveGoneWithARestart)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Change(4, true);
    machine.Change(4, false);
    machine.Wait(10);
    machine.Change(3, true);
    machine.Wait(100);
    machine.Restart();
    machine.Wait(20);
    machine.Change(5, true);
    machine.Wait(5);
    EXPECT_EQ(At(machine.Past(2), 50).substr(0, 24), "3 since 10; not known: 2");
    EXPECT_EQ(At(machine.Past(2), 50).substr(24, 16), "; the machine wa");
    EXPECT_EQ(At(machine.Past(2), 132), "5 since 130");
}

TEST(PastState, AnOwnerThatHasNotRunSinceTheRestartKnowsNothingOfIt)
{
    setenv("TZ", "UTC0", 1);
    CMachine machine;
    machine.Change(2, true);
    const SPast before = machine.Past();
    machine.Wait(100);
    machine.Restart();
    machine.Wait(20);
    SPast past = machine.Past(10, false);
    past.errors = before.errors; // nobody has forgotten them
    EXPECT_EQ(At(past, 50),
              "2 since 0; the machine was started at 2026-03-01T17:06:49.000+00:00, and when it "
              "went down before, and whether it ran meanwhile, is not known");
    EXPECT_EQ(At(past, 110), "no owner has used the store since the machine was started at "
                             "2026-03-01T17:06:49.000+00:00: what is active since is not known");
}

TEST(PastState, AClockThatIsSetBackBringsTimesTwice)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Wait(10);
    machine.Change(3, true);
    machine.SetClock(-1000);
    machine.Wait(10);
    machine.Change(2, false);
    machine.Wait(2000);
    machine.Change(4, true);
    const SPast past = machine.Past();
    EXPECT_EQ(At(past, 5),
              "3 since 10; the clock was set back meanwhile, so there were 2 such times; this is "
              "the last one of which the journal is sure");
    EXPECT_EQ(At(past, -985).substr(0, 21), "the journal begins at");
}

TEST(PastState, TellsWhatIsBetween)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Wait(5);
    machine.Change(2, false);
    machine.SetClock(5);
    machine.Change(2, true);
    machine.Restart();
    machine.Wait(1);
    machine.Change(2, true);
    const SPast past = machine.Past();
    EXPECT_EQ(WhatIsBetween(past, 0), ebNothing);
    EXPECT_EQ(WhatIsBetween(past, 1), ebDoubt);
    EXPECT_EQ(WhatIsBetween(past, 2), ebRestart);
    EXPECT_EQ(WhatIsBetween(past, 3), ebNothing);
    EXPECT_EQ(WhatIsBetween(machine.Past(100, false), 3), ebDoubt);
}

TEST(PastState, ARestartThatCouldBeASetClockMayHaveLeftNothingActive)
{
    CMachine machine;
    machine.Change(2, true);
    machine.Wait(5);
    machine.Change(3, true);
    machine.Change(3, false);
    machine.Restart();
    machine.Wait(1200); // longer than it ran before
    machine.Change(4, true);
    machine.Wait(1);
    EXPECT_EQ(At(machine.Past(), 600), "; not known: 2");
    EXPECT_EQ(At(machine.Past(), 1206), "4 since 1205");
}

// Whatever is said with certainty is true; and where the machine ran on all the time, all is certain.
TEST_P(PastStateModel, SaysNothingThatWasNot)
{
    std::mt19937 random(GetParam());
    CMachine machine;
    const bool restarts = GetParam() % 2 == 1;
    std::map<std::int64_t, std::set<int>> truth; // by the clock
    for (int step = 0; step < 300; ++step)
    {
        machine.Wait(1 + random() % 5);
        if (restarts && random() % 25 == 0)
        {
            machine.Wait(30);
            machine.Restart();
            machine.Wait(3);
        }
        else
            machine.Change(static_cast<int>(random() % 8), random() % 2 == 0);
        truth[machine.Clock()] = machine.Active();
    }
    machine.Wait(7);
    int certain = 0;
    for (const std::size_t kept : {std::size_t(10), std::size_t(60), std::size_t(1000)})
    {
        const SPast past = machine.Past(kept);
        for (const auto& moment : truth)
        {
            SPastState state;
            std::string problem;
            if (!StateAt(past, moment.first, state, problem))
            {
                ASSERT_LT(moment.first, past.journal.front().time.Nanoseconds());
                continue;
            }
            std::set<int> left = moment.second;
            for (const ErrorId& id : state.unknown)
                left.erase(id.second);
            std::set<int> active;
            for (const SPastError& error : state.active)
                active.insert(error.id.second);
            if (!state.notes.empty()) // it may have gone down already
                left.insert(active.begin(), active.end());
            ASSERT_EQ(active, left) << "kept " << kept << " at " << moment.first;
            ASSERT_TRUE(restarts || (state.unknown.empty() && state.notes.empty()));
            certain += state.unknown.empty() && state.notes.empty() ? 1 : 0;
        }
    }
    EXPECT_GT(certain, 200);
}

INSTANTIATE_TEST_SUITE_P(Seeds, PastStateModel, testing::Range(0u, 40u));
