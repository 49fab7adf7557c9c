#include "FailingDisk.h"
#include "StoreFixture.h"

#include "faultkeeperd/store/StateKeeper.h"
#include "store/Sqlite.h"
#include "support/CapturedOutput.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

using namespace StoreFixture;
using Support::WarnedBy;

// What becomes of a store that fails, or cannot be had at the beginning, when it works again.

namespace
{

class RecoveringKeeper : public Test
{
protected:
    typedef CStateKeeper::Clock Clock;

    void TearDown() override { FailingDisk::Mend(); }

    /// Some time later: long enough for anything to be due.
    Clock::time_point Later() { return m_now += std::chrono::hours(1); }

    /// What an owner before has left.
    void Leave(const std::string& boot)
    {
        CStateKeeper keeper(Settings());
        keeper.Open(boot, "c");
        keeper.Keep(Error(1, true, 1));
        keeper.Keep(Error(2, true, 1));
        keeper.Keep(SStoredSession{"a", 7});
        keeper.Keep(Transition(2, true));
        EXPECT_TRUE(keeper.CommitAtOnce(Later()));
    }

    void RemoveStore()
    {
        std::remove(Settings().path.c_str());
        std::remove((Settings().path + "-wal").c_str());
    }

    /// The keeper's disk fails once, and works again later.
    void FailOnce(CStateKeeper& keeper, const std::function<void()>& meanwhile)
    {
        FailingDisk::RefuseAfter(0, EIO, -1);
        keeper.Keep(Error(3, true, 1));
        WarnedBy([&] { keeper.Commit(Later()); });
        EXPECT_FALSE(keeper.Storing());
        FailingDisk::Mend();
        meanwhile();
        m_said = WarnedBy([&] { keeper.Commit(Later()); });
        EXPECT_TRUE(keeper.Storing());
    }

    Clock::time_point m_now = Clock::now();
    std::string m_said;
};

const std::string kRaised1 = "error 265243:1 raised 1/2/1 1001000000000 901000000000\n";
const std::string kRaised2 = "error 265243:2 raised 1/2/1 1002000000000 902000000000\n";
const std::string kRaised3 = "error 265243:3 raised 1/2/1 1003000000000 903000000000\n";
const std::string kCleared1 = "error 265243:1 clear 1/2/1 1001000000000 901000000000\n";
const std::string kCleared2 = "error 265243:2 clear 1/2/1 1002000000000 902000000000\n";

TEST_F(RecoveringKeeper, ANewFileIsToldWhatWasInTheOneBefore)
{
    Leave("boot");
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "c");
        FailOnce(keeper, [this] { RemoveStore(); });
    }
    EXPECT_EQ(Contents(), kRaised1 + kRaised2 + kRaised3 + "session a 7\n");
}

TEST_F(RecoveringKeeper, ANewFileIsToldNothingThatWasRaisedBeforeTheMachineStarted)
{
    Leave("boot before");
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "c");
        FailOnce(keeper, [this] { RemoveStore(); });
    }
    EXPECT_EQ(Contents(), kCleared1 + kCleared2 + kRaised3);
}

TEST_F(RecoveringKeeper, WhatWasForgottenWhileTheDiskFailedIsForgotten)
{
    Leave("boot");
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "c");
        FailOnce(keeper, [&keeper] { keeper.Forget("a"); });
    }
    EXPECT_EQ(Contents(), kRaised1 + kRaised2 + kRaised3);
}

TEST_F(RecoveringKeeper, AnotherFileInItsPlaceCountsForLess)
{
    Leave("boot");
    auto keeper = std::make_unique<CStateKeeper>(Settings());
    keeper->Open("boot", "c");
    const auto putAnother = [this]
    {
        RemoveStore();
        SStoreBatch batch;
        batch.errors = {Error(1, false, 9, 9), Error(4, true, 9, 9)};
        batch.sessions = {{"a", 1}, {"b", 1}};
        CStateStore store(Settings());
        store.Begin("boot", "c");
        store.Commit(batch);
    };
    FailOnce(*keeper, putAnother);
    keeper.reset();
    EXPECT_EQ(Contents(), kRaised1 + kRaised2 + kRaised3 +
                              "error 265243:4 clear 9/10/9 1004000000000 904000000000\nsession a 7\n");
}

TEST_F(RecoveringKeeper, RowsThatAreDroppedAtARetryAreNamed)
{
    Leave("boot");
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    FailOnce(keeper,
             [this] { CSqlite(Settings().path).Run("UPDATE errors SET counter1 = 5 WHERE type = 2"); });
    EXPECT_EQ(m_said, "faultkeeperd: warning: the state store held a damaged row, which is dropped: error "
                      "Positioning:GPS:No Data:2\nfaultkeeperd: info: the state store " +
                          Settings().path + " works again\n");
}

TEST_F(RecoveringKeeper, AStoreThatAnotherProcessReadsForAMomentIsWaitedFor)
{
    Leave("boot");
    auto other = std::make_unique<CSqlite>(Settings().path);
    other->Run("BEGIN");
    EXPECT_EQ(other->Integer("SELECT count(*) FROM errors"), 2);
    std::thread reader(
        [&other]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            other.reset();
        });
    CStateKeeper keeper(Settings());
    EXPECT_EQ(Shown(keeper.Open("boot", "c")), kRaised1 + kRaised2 + "session a 7\n");
    EXPECT_TRUE(keeper.Storing());
    reader.join();
}

TEST_F(RecoveringKeeper, AStoreThatWasInUseAtTheBeginningIsOverwrittenLater)
{
    Leave("boot");
    {
        CStateKeeper keeper(Settings());
        {
            const CStateStore other(Settings());
            SStoreContents contents;
            EXPECT_EQ(WarnedBy([&] { contents = keeper.Open("boot", "c"); }),
                      "faultkeeperd: error: the state store " + Settings().path +
                          " cannot be used: database is locked; reports go on being applied, shown "
                          "and then acknowledged, but a restart of the machine would forget them\n");
            EXPECT_EQ(Shown(contents), "");
        }
        keeper.Keep(Error(2, false, 5, 5));
        keeper.Keep(SStoredSession{"b", 1});
        WarnedBy([&] { keeper.Commit(Later()); });
        EXPECT_TRUE(keeper.Storing());
    }
    EXPECT_EQ(Contents(), kCleared1 + "error 265243:2 clear 5/6/5 1002000000000 902000000000\n"
                                      "session a 7\nsession b 1\n")
        << "the client of session a may come back yet";
}

TEST_F(RecoveringKeeper, AStoreOfAnotherConfigurationIsOfNoneOnceItIsWrittenUntilThatIsJudged)
{
    const auto configuration = [this] { return CStateStore(Settings()).Read().configuration; };
    Leave("boot");
    {
        CStateKeeper keeper(Settings());
        EXPECT_EQ(keeper.Open("boot", "d").configuration, "c");
        keeper.Keep(Error(3, true, 1));
        EXPECT_TRUE(keeper.CommitAtOnce(Later()));
    }
    EXPECT_EQ(configuration(), "several") << "its owner ended before it could tell";
    {
        CStateKeeper keeper(Settings());
        keeper.Open("boot", "d");
        EXPECT_EQ(keeper.MillisecondsToCommit(Later()), -1);
        keeper.TakeConfiguration();
        EXPECT_EQ(keeper.MillisecondsToCommit(Later()), 0);
        EXPECT_TRUE(keeper.Commit(Later()));
        EXPECT_EQ(keeper.MillisecondsToCommit(Later()), -1);
    }
    EXPECT_EQ(configuration(), "d");
}

TEST_F(RecoveringKeeper, AStoreOfAnotherConfigurationThatWasInUseAtTheBeginningIsLeftToTheNextOwnersJudgement)
{
    Leave("boot");
    {
        CStateKeeper keeper(Settings());
        {
            const CStateStore other(Settings());
            WarnedBy([&] { keeper.Open("boot", "d"); });
        }
        keeper.TakeConfiguration();
        keeper.Keep(Error(2, false, 5, 5));
        WarnedBy([&] { keeper.Commit(Later()); });
        EXPECT_TRUE(keeper.Storing());
    }
    const std::string configuration = CStateStore(Settings()).Read().configuration;
    EXPECT_NE(configuration, "c") << "whoever has that one";
    EXPECT_NE(configuration, "d");
    EXPECT_NE(configuration, "") << "that would be a new store's";
}

class KeeperWithoutRoom : public RecoveringKeeper, public testing::WithParamInterface<int>
{
};

TEST_P(KeeperWithoutRoom, ReadsWhatItCannotWriteAndWritesAsSoonAsItCan)
{
    Leave("boot");
    {
        FailingDisk::RefuseAfter(0, GetParam(), -1, FailingDisk::ekWrite | FailingDisk::ekOpenToWrite);
        CStateKeeper keeper(Settings());
        SStoreContents contents;
        WarnedBy([&] { contents = keeper.Open("boot", "c"); });
        EXPECT_EQ(contents.boot, "boot");
        EXPECT_EQ(Shown(contents), kRaised1 + kRaised2 + "session a 7\n");
        EXPECT_FALSE(keeper.Storing());
        FailingDisk::Mend();
        EXPECT_EQ(keeper.MillisecondsToCommit(Later()), 0) << "though nothing waits";
        m_said = WarnedBy([&] { EXPECT_TRUE(keeper.Commit(m_now)); });
        EXPECT_EQ(m_said, "faultkeeperd: info: the state store " + Settings().path + " works again\n");
        EXPECT_TRUE(keeper.Storing());
        EXPECT_EQ(keeper.JournalLength(), 1u);
        EXPECT_EQ(keeper.MillisecondsToCommit(Later()), -1);
    }
    EXPECT_EQ(Contents(), kRaised1 + kRaised2 + "session a 7\n");
}

INSTANTIATE_TEST_SUITE_P(Problems, KeeperWithoutRoom, testing::Values(ENOSPC, EROFS));

TEST_F(RecoveringKeeper, AStoreThatFailsToGiveItsJournalIsOpenedAgainThoughNothingWaits)
{
    Leave("boot");
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    for (int i = 0; i < 100000; ++i) // more than SQLite keeps in memory
        keeper.Keep(Transition(1, true));
    keeper.CommitAtOnce(Later());
    ASSERT_EQ(keeper.MillisecondsToCommit(m_now), -1);
    FailingDisk::RefuseAfter(0, EIO, -1, FailingDisk::ekRead);
    WarnedBy([&] { EXPECT_EQ(keeper.Journal(0, 100000).size(), 0u); });
    FailingDisk::Mend();
    EXPECT_FALSE(keeper.Storing());
    EXPECT_EQ(keeper.MillisecondsToCommit(Later()), 0);
    WarnedBy([&] { keeper.Commit(m_now); });
    EXPECT_EQ(keeper.Journal(0, 10).size(), 10u);
}

TEST_F(RecoveringKeeper, ARetryOnAFullDiskDoesNotReadTheStore)
{
    SStoreBatch batch;
    batch.transitions.assign(20000, Transition(1, true));
    CStateStore(Settings()).Commit(batch);
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    FailingDisk::RefuseAfter(0, ENOSPC, -1);
    keeper.Keep(Error(2, true, 1));
    WarnedBy([&] { keeper.Commit(Later()); });
    EXPECT_FALSE(keeper.Storing());
    FailingDisk::RefuseAfter(0, ENOSPC, -1);
    keeper.Commit(Later());
    EXPECT_EQ(keeper.Statistics().failures, 2u);
    EXPECT_LT(FailingDisk::Reads(), 100) << "of several hundred pages";
    FailingDisk::Mend();
    WarnedBy([&] { keeper.Commit(Later()); });
    EXPECT_TRUE(keeper.Storing());
}

TEST_F(RecoveringKeeper, AfterAFailureTheStoreIsLookedThroughBeforeItIsUsed)
{
    Leave("boot");
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    const auto damage = [this]
    { CSqlite(Settings().path).Run("UPDATE journal SET code = 5 WHERE number = 1"); };
    FailOnce(keeper, damage);
    EXPECT_EQ(m_said, "faultkeeperd: warning: the state store held a damaged row, which is dropped: "
                      "transition numbered 1\nfaultkeeperd: info: the state store " +
                          Settings().path + " works again\n");
}

TEST_F(RecoveringKeeper, TheNextOwnerIsToldThatTheStoreIsBehindAsLongAsItIs)
{
    SStoreSettings settings = Settings();
    settings.note = m_directory.Prefix() + "note";
    CStateKeeper keeper(settings);
    keeper.Open("boot", "c");
    EXPECT_EQ(ReadFile(settings.note), "") << "this owner has not begun";
    keeper.Begin({});
    EXPECT_EQ(ReadFile(settings.note), "= " + settings.path + "\n");
    FailOnce(keeper, [&] { EXPECT_EQ(ReadFile(settings.note), "> " + settings.path + "\n"); });
    EXPECT_EQ(ReadFile(settings.note), "= " + settings.path + "\n");
}

TEST_F(RecoveringKeeper, AStoreThatCannotBeWrittenAtTheBeginningIsBehindFromThere)
{
    Leave("boot");
    SStoreSettings settings = Settings();
    settings.note = m_directory.Prefix() + "note";
    FailingDisk::RefuseAfter(0, ENOSPC, -1);
    CStateKeeper keeper(settings);
    WarnedBy([&] { keeper.Open("boot", "c"); });
    EXPECT_FALSE(keeper.Storing());
    EXPECT_EQ(ReadFile(settings.note), "");
    keeper.Begin({});
    EXPECT_EQ(ReadFile(settings.note), "> " + settings.path + "\n");
}

TEST_F(RecoveringKeeper, WhatIsTakenFromATableIsStoredBeforeTheTableIsOverwritten)
{
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    keeper.Begin({Error(2, true, 1)});
    EXPECT_EQ(keeper.Statistics().commits, 1u);
}

TEST_F(RecoveringKeeper, WithoutAStoreNothingIsRemembered)
{
    CStateKeeper keeper{SStoreSettings()};
    keeper.Open("boot", "c");
    keeper.Keep(Error(2, true, 1));
    keeper.Keep(SStoredSession{"a", 1});
    keeper.Forget("b");
    EXPECT_EQ(keeper.Remembered(), 0u);
}

TEST_F(RecoveringKeeper, WithAStoreThatNeverWorksForgottenSessionsAreNotRemembered)
{
    SStoreSettings settings;
    settings.path = m_directory.Prefix() + "missing/state.db";
    CStateKeeper keeper(settings);
    WarnedBy([&] { keeper.Open("boot", "c"); });
    for (int i = 0; i < 1000; ++i)
    {
        keeper.Keep(SStoredSession{std::to_string(i), 1});
        keeper.Forget(std::to_string(i));
    }
    EXPECT_EQ(keeper.Remembered(), 0u);
}

TEST_F(RecoveringKeeper, WhatWasCollectedBeforeTheDiskFailedIsBoundedAsWell)
{
    CStateKeeper keeper(Settings());
    keeper.Open("boot", "c");
    for (std::size_t i = 0; i < CStateKeeper::kWaitingTransitions + 3; ++i)
        keeper.Keep(Transition(i < 3 ? 1 : 2, true));
    FailingDisk::RefuseAfter(0, EIO, -1);
    WarnedBy([&] { keeper.Commit(Later()); });
    EXPECT_EQ(keeper.Statistics().lostTransitions, 3u);
    FailingDisk::Mend();
    WarnedBy([&] { keeper.Commit(Later()); });
    EXPECT_EQ(keeper.JournalLength(), CStateKeeper::kWaitingTransitions);
    EXPECT_EQ(keeper.Journal(0, 1).front().problemType, 2);
}

} // namespace
