#include "FormerStateFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Support;
using namespace Faultkeeper;
using namespace Faultkeeper::Apps;
using testing::HasSubstr;

TEST_F(FormerState, WithoutAnythingIsEmpty)
{
    EXPECT_EQ(Found(), "");
    EXPECT_FALSE(m_former.sameBoot);
    EXPECT_EQ(m_former.latest, Core::Time());
    EXPECT_EQ(m_said, "faultkeeperd: info: the state store is switched off: acknowledged means applied and "
                      "shown\n");
}

TEST_F(FormerState, OfTheSameBootComesBackWhole)
{
    LeaveStore("boot", "c");
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 5/5\na 17\n");
    EXPECT_TRUE(m_former.sameBoot);
    EXPECT_EQ(m_former.latest, Core::Time(1000));
    EXPECT_EQ(m_said, "");
}

TEST_F(FormerState, OfAnotherBootIsCountersAndTimes)
{
    LeaveStore("boot before", "c");
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 clear 5/5\n");
    EXPECT_FALSE(m_former.sameBoot);
    EXPECT_EQ(m_former.errors.at(0).entry.raisedTime, Core::Time(1000));
    EXPECT_EQ(m_former.latest, Core::Time()) << "displays have not seen anything yet";
}

TEST_F(FormerState, OfAnotherBootIsNeverRaisedAgainHoweverSoonTheOwnerIsKilled)
{
    LeaveStore("boot before", "c");
    Found();
    UseStore(); // nothing was committed
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 clear 5/5\n");
    EXPECT_TRUE(m_former.sameBoot);
}

TEST_F(FormerState, OfAnotherConfigurationIsWhatStillExists)
{
    LeaveStore("boot", "another");
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 5/5\na 17\n");
    EXPECT_THAT(m_said, HasSubstr("info: the state store is of another configuration"));
}

TEST_F(FormerState, WithoutAStoreIsInTheTableOfADeadOwner)
{
    LeaveTable();
    EXPECT_EQ(Found(), "Positioning:Ublox:No Data:2 raised 1/1\n");
    EXPECT_TRUE(m_former.sameBoot);
    EXPECT_GT(m_former.latest, Core::Time(1000));
    EXPECT_THAT(m_said, HasSubstr("starting from the table of a former owner"));
}

TEST_F(FormerState, OfAStoreThatMissedThisBootIsCompletedFromTheTable)
{
    LeaveStore("boot before", "c");
    LeaveTable();
    EXPECT_EQ(Found(),
              "Positioning:GPS:Communications:9 clear 5/5\nPositioning:Ublox:No Data:2 raised 1/1\n");
    EXPECT_EQ(m_former.errors.at(0).entry.raisedTime, Core::Time(1000));
}

TEST_F(FormerState, OfAStoreThatMissedThisBootIsToldToItsJournal)
{
    LeaveStore("boot before", "c");
    LeaveTable();
    Found();
    const std::vector<STransition> transitions = Keeper().Journal(0, 10);
    ASSERT_EQ(transitions.size(), 1u);
    EXPECT_EQ(Id(transitions[0].problemCode, transitions[0].problemType), kDataSensor);
    EXPECT_TRUE(transitions[0].raised);
    EXPECT_EQ(transitions[0].reason, eorTable);
}

TEST_F(FormerState, OfAStoreThatAnOwnerReadButCouldNotWriteIsNotCountedTwice)
{
    LeaveStore("boot before", "c");
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.RestoreErrors({StoredError(kLinkSensor, false, 5, 5).entry});
        owner.FaultkeeperReady(true);
        owner.RaiseError(kDataSensor.first, kDataSensor.second);
    }
    EXPECT_EQ(Found(),
              "Positioning:GPS:Communications:9 clear 5/5\nPositioning:Ublox:No Data:2 raised 1/1\n");
}

TEST_F(FormerState, IsNotCountedTwiceHoweverOftenTheOwnerIsKilledBeforeItCanWrite)
{
    LeaveStore("boot before", "c");
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.RestoreErrors({StoredError(kLinkSensor, false, 5, 5).entry});
        owner.FaultkeeperReady(true);
        owner.RaiseError(kLinkSensor.first, kLinkSensor.second);
    }
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 6/6\n");
}

TEST_F(FormerState, OfATableThatCountedByItselfIsAddedToTheStore)
{
    LeaveStore("boot before", "c");
    WriteFile(m_directory.File("note"), "+ \n");
    LeaveTable({kLinkSensor}, 7);
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 12/12\n");
    UseStore();
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 12/12\n") << "it is in the store at once";
}

TEST_F(FormerState, OfATableThatCountsLowerThanTheStoreIsAddedToIt)
{
    LeaveStore("boot before", "c");
    LeaveTable({kLinkSensor, kDataSensor}, 3);
    EXPECT_EQ(Found(),
              "Positioning:GPS:Communications:9 raised 8/8\nPositioning:Ublox:No Data:2 raised 3/3\n");
}

class FutureTime : public FormerState, public testing::WithParamInterface<int>
{
protected:
    /// A store of this boot with a time that many hours ahead.
    SStoredError LeaveFuture()
    {
        LeaveStore("boot", "c");
        SStoredError error = StoredError(kLinkSensor, false, 5, 5);
        error.entry.raisedTime = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() +
                                                             GetParam() * std::int64_t(3600000000000));
        Keeper().Open("boot", "c");
        Keeper().Keep(error);
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        UseStore();
        return error;
    }
};

TEST_P(FutureTime, ThatTheTableShowsHasBeenSeen)
{
    const SStoredError error = LeaveFuture();
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.RestoreErrors({error.entry});
    }
    Found();
    EXPECT_EQ(m_former.latest, error.entry.raisedTime);
}

TEST_P(FutureTime, ThatTheTableDoesNotShowHasNot)
{
    const SStoredError error = LeaveFuture();
    LeaveTable();
    Found();
    EXPECT_LT(m_former.latest, error.entry.raisedTime);
    EXPECT_GT(m_former.latest, Core::Time(1000));
}

INSTANTIATE_TEST_SUITE_P(Hours, FutureTime, testing::Values(1, 48, 40000));

TEST_F(FormerState, OfTheStoreGoesBeforeTheTables)
{
    LeaveStore("boot", "c");
    LeaveTable();
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 5/5\na 17\n");
    EXPECT_GT(m_former.latest, Core::Time(1000)) << "displays have seen the table";
}

TEST_F(FormerState, NamesTheRowsThatCannotBeTrusted)
{
    LeaveStore("boot", "c");
    CSqlite(m_directory.File("state.db")).Run("UPDATE errors SET counter1 = 9 WHERE type = 9");
    EXPECT_EQ(Found(), "a 17\n");
    EXPECT_EQ(m_said, "faultkeeperd: warning: the state store held a damaged row, which is dropped: error "
                      "Positioning:GPS:Communications:9\n");
}

TEST_F(FormerState, OfADamagedRowIsInTheTable)
{
    LeaveStore("boot", "c");
    LeaveTable({kLinkSensor, kDataSensor}, 7);
    CSqlite(m_directory.File("state.db")).Run("UPDATE errors SET counter1 = 9 WHERE type = 9");
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 7/7\na 17\n")
        << "what was not stored has not happened";
    EXPECT_THAT(
        m_said,
        HasSubstr("info: error Positioning:GPS:Communications:9 is taken from the table of a former"));
    EXPECT_EQ(m_former.contradicted, std::set<Id>{kDataSensor});
}

TEST_F(FormerState, OfAnotherBootDoesNotTakeDamagedRowsFromNowhere)
{
    LeaveStore("boot before", "c");
    CSqlite(m_directory.File("state.db")).Run("UPDATE errors SET counter1 = 9 WHERE type = 9");
    EXPECT_EQ(Found(), "");
}

TEST_F(FormerState, NamesAllRowsThatCannotBeTrustedInOneLine)
{
    LeaveStore("boot", "c");
    CSqlite(m_directory.File("state.db"))
        .Run("UPDATE errors SET counter1 = 9; UPDATE sessions SET applied = 3; "
             "INSERT INTO journal(number) VALUES(4), (5), (6), (8)");
    EXPECT_EQ(Found(), "");
    EXPECT_EQ(m_said, "faultkeeperd: warning: the state store held damaged rows, which are dropped: error "
                      "Positioning:GPS:Communications:9, error Service:GPS:No Data:2, session that reads a, "
                      "transitions numbered 4 to 6, transition numbered 8\n");
}
