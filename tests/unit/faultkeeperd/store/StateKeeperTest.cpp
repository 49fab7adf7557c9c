#include "FailingDisk.h"
#include "StoreFixture.h"

#include "faultkeeperd/store/StateKeeper.h"
#include "support/CapturedOutput.h"

#include <cerrno>

using namespace StoreFixture;
using Support::WarnedBy;

namespace
{

class StateKeeper : public Test
{
protected:
    typedef CStateKeeper::Clock Clock;

    void TearDown() override { FailingDisk::Mend(); }

    /// Some time later: long enough for anything to be due.
    Clock::time_point Later() { return m_now += std::chrono::hours(1); }

    Clock::time_point m_now = Clock::now();
};

TEST_F(StateKeeper, WithoutAStoreEverythingCountsAsKept)
{
    CStateKeeper keeper{SStoreSettings()};
    EXPECT_EQ(Shown(keeper.Open("boot", "c")), "");
    keeper.Keep(Error(2, true, 1));
    keeper.Keep(Transition(2, true));
    EXPECT_TRUE(keeper.Commit(Later()));
    EXPECT_EQ(keeper.MillisecondsToCommit(m_now), -1);
    EXPECT_FALSE(keeper.Storing());
    EXPECT_EQ(keeper.Journal(0, 10).size(), 0u);
}

TEST_F(StateKeeper, StoresTheLatestWordOfEach)
{
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "c");
        EXPECT_TRUE(keeper.Storing());
        keeper.Keep(Error(2, true, 1));
        keeper.Keep(Error(2, false, 2, 2));
        keeper.Keep(SStoredSession{"a", 1});
        keeper.Keep(SStoredSession{"a", 2});
        keeper.Keep(SStoredSession{"b", 1});
        keeper.Forget("b");
        keeper.Keep(Transition(2, true));
        keeper.Keep(Transition(2, false));
        EXPECT_TRUE(keeper.Commit(Later()));
        EXPECT_EQ(keeper.MillisecondsToCommit(m_now), -1);
        EXPECT_EQ(keeper.JournalLength(), 2u);
        EXPECT_EQ(keeper.Statistics().commits, 1u);
    }
    EXPECT_EQ(Contents(), "error 265243:2 clear 2/3/2 1002000000000 902000000000\nsession a 2\n");
}

TEST_F(StateKeeper, CommitsAtOnceAfterAQuietTimeAndOtherwiseAfterAPause)
{
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    keeper.Keep(Error(2, true, 1));
    EXPECT_EQ(keeper.MillisecondsToCommit(Later()), 0);
    EXPECT_TRUE(keeper.Commit(m_now));
    keeper.Keep(Error(2, false, 1));
    EXPECT_EQ(keeper.MillisecondsToCommit(m_now), 20);
    EXPECT_FALSE(keeper.Commit(m_now + std::chrono::milliseconds(19)));
    EXPECT_TRUE(keeper.Commit(m_now + std::chrono::milliseconds(20)));
    EXPECT_EQ(keeper.Statistics().commits, 2u);
}

TEST_F(StateKeeper, AFailingDiskIsToldOnceAndStandsInNobodysWay)
{
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    FailingDisk::RefuseAfter(0, ENOSPC, -1);
    const std::string told = WarnedBy(
        [&]
        {
            for (int round = 0; round < 3; ++round)
            {
                keeper.Keep(Error(2, true, 1));
                keeper.Keep(Transition(2, true));
                EXPECT_TRUE(keeper.Commit(Later()));
            }
        });
    EXPECT_EQ(told, "faultkeeperd: error: the state store " + Settings().path +
                        " cannot be used: database or disk is full; reports go on being applied, shown "
                        "and then acknowledged, but a restart of the machine would forget them\n");
    EXPECT_FALSE(keeper.Storing());
    EXPECT_EQ(keeper.Statistics().failures, 3u);
    EXPECT_EQ(keeper.Statistics().commits, 0u);
}

TEST_F(StateKeeper, AStoreThatWorksAgainIsToldEverything)
{
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "c");
        keeper.Keep(Error(1, true, 1));
        keeper.Commit(Later());
        FailingDisk::RefuseAfter(0, EIO, -1);
        keeper.Keep(Error(2, true, 1));
        keeper.Keep(Transition(2, true));
        keeper.Keep(SStoredSession{"a", 5});
        WarnedBy([&] { keeper.Commit(Later()); });
        FailingDisk::Mend();
        std::remove(Settings().path.c_str()); // a new medium was put in
        std::remove((Settings().path + "-wal").c_str());
        EXPECT_EQ(WarnedBy([&] { keeper.Commit(Later()); }),
                  "faultkeeperd: info: the state store " + Settings().path + " works again\n");
        EXPECT_TRUE(keeper.Storing());
        EXPECT_EQ(keeper.JournalLength(), 1u);
    }
    EXPECT_EQ(Contents(), "error 265243:1 raised 1/2/1 1001000000000 901000000000\n"
                          "error 265243:2 raised 1/2/1 1002000000000 902000000000\n"
                          "session a 5\n");
}

TEST_F(StateKeeper, WhileTheDiskFailsOnlySoManyTransitionsWait)
{
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    FailingDisk::RefuseAfter(0, EIO, -1);
    keeper.Keep(Transition(1, true));
    WarnedBy([&] { keeper.Commit(Later()); });
    for (std::size_t i = 0; i < CStateKeeper::kWaitingTransitions; ++i)
        keeper.Keep(Transition(2, true));
    EXPECT_EQ(keeper.Statistics().lostTransitions, 1u);
    FailingDisk::Mend();
    WarnedBy([&] { keeper.Commit(Later()); });
    EXPECT_EQ(keeper.JournalLength(), CStateKeeper::kWaitingTransitions);
    EXPECT_EQ(keeper.Journal(0, 1).front().problemType, 2);
}

TEST_F(StateKeeper, ADamagedStoreIsMovedAsideAndANewOneBegun)
{
    WriteFile(Settings().path, std::string(5000, 'x'));
    CStateKeeper keeper(Settings());
    SStoreContents contents;
    const std::string told = WarnedBy([&] { contents = keeper.Open("boot", "c"); });
    EXPECT_EQ(told, "faultkeeperd: error: the state store " + Settings().path +
                        " is damaged (file is not a database); it is now " + Settings().path +
                        ".damaged-1, and a new one is begun\n");
    EXPECT_TRUE(keeper.Storing());
    EXPECT_EQ(Shown(contents), "");
    EXPECT_EQ(ReadFile(Settings().path + ".damaged-1").size(), 5000u);
}

TEST_F(StateKeeper, WhatWasStoredBeforeIsReturned)
{
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "c");
        keeper.Keep(Error(2, true, 1));
        keeper.CommitAtOnce(Later());
    }
    CStateKeeper keeper(Settings());
    const SStoreContents contents = keeper.Open("other boot", "other configuration");
    EXPECT_EQ(contents.boot, "boot");
    EXPECT_EQ(contents.configuration, "c");
    EXPECT_EQ(contents.errors.size(), 1u);
}

} // namespace
