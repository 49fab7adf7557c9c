// Which of them knows better what a former owner has left, the store or the table.
#include "FormerStateFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Support;
using namespace Faultkeeper;
using namespace Faultkeeper::Apps;
using testing::HasSubstr;
using testing::Not;

TEST_F(FormerState, OfATableThatIsAheadOfTheStoreIsTheTables)
{
    LeaveStore("boot", "c");
    WriteFile(m_directory.File("note"), "> " + m_directory.File("state.db") + "\n");
    LeaveTable({kLinkSensor, kDataSensor}, 7);
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 7/7\nPositioning:Ublox:No Data:2 raised "
                       "7/7\na 17\n");
    EXPECT_THAT(m_said, HasSubstr("info: the state store is behind; starting from the table"));
    EXPECT_EQ(ReadFile(m_directory.File("note")), "= " + m_directory.File("state.db") + "\n");
    UseStore();
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 7/7\nPositioning:Ublox:No Data:2 raised "
                       "7/7\na 17\n");
    EXPECT_EQ(m_said, "");
}

TEST_F(FormerState, OfAStoreThatCanOnlyBeReadIsTheTables)
{
    LeaveStore("boot", "c");
    WriteFile(m_directory.File("note"), "= " + m_directory.File("state.db") + "\n");
    LeaveTable({kDataSensor}, 2);
    EXPECT_EQ(FoundReadOnly(),
              "Positioning:GPS:Communications:9 raised 5/5\nPositioning:Ublox:No Data:2 raised "
              "2/2\na 17\n");
}

TEST_F(FormerState, OfAStoreThatCanOnlyBeReadIsWhatWasStoredWhileTheTableWasLocked)
{
    LeaveTable({kLinkSensor, kDataSensor}, 1);
    StoreLater({StoredError(kLinkSensor, true, 2, 2), StoredError(kDataSensor, false, 1, 1)});
    LeaveNote("=");
    EXPECT_EQ(FoundReadOnly(), "Positioning:GPS:Communications:9 raised 2/2\nPositioning:Ublox:No Data:2 "
                               "clear 1/1\n");
    EXPECT_THAT(m_said, Not(HasSubstr("behind"))) << "it is not";
    EXPECT_EQ(m_former.contradicted, std::set<Id>()) << "its times are the later ones";
}

TEST_F(FormerState, OfAStoreThatCanOnlyBeReadIsWhatWasStoredThoughTheTableGotPartOfItLater)
{
    StoreLater({StoredError(kLinkSensor, false, 2, 2)});
    LeaveTable({kLinkSensor}, 2); // all but the clear
    LeaveNote("=");
    EXPECT_EQ(FoundReadOnly(), "Positioning:GPS:Communications:9 clear 2/2\n");
    EXPECT_EQ(m_former.contradicted, std::set<Id>{kLinkSensor}) << "displays have seen it raised";
}

TEST_F(FormerState, OfAStoreThatCanOnlyBeReadAndIsBehindIsTheTables)
{
    StoreLater({StoredError(kLinkSensor, false, 2, 2)});
    LeaveTable({kLinkSensor}, 4);
    LeaveNote("=");
    EXPECT_EQ(FoundReadOnly(), "Positioning:GPS:Communications:9 raised 4/4\n");
    EXPECT_THAT(m_said, HasSubstr("info: the state store is behind; starting from the table"));
}

class StoreBehind : public FormerState, public testing::WithParamInterface<const char*>
{
};

TEST_P(StoreBehind, HasMoreOfWhatWasStoredWhileTheTableWasLocked)
{
    StoreLater({StoredError(kDataSensor, false, 1, 1)});
    LeaveTable({kLinkSensor, kDataSensor}, 3);
    StoreLater({StoredError(kLinkSensor, false, 4, 4)});
    LeaveNote(GetParam()); // the store failed after that, and the owner was killed
    EXPECT_EQ(Found(),
              "Positioning:GPS:Communications:9 clear 4/4\nPositioning:Ublox:No Data:2 raised 3/3\n");
    UseStore();
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 clear 4/4\nPositioning:Ublox:No Data:2 raised 3/3\n")
        << "it is in the store at once";
}

TEST_P(StoreBehind, MayBeSoByMoreThanHalfOfWhatACounterHolds)
{
    StoreLater({StoredError(kLinkSensor, false, 5, 65536 + 5)});
    SErrorEntry later = StoredError(kLinkSensor, true, 40005, 0).entry;
    later.raisedTime = Core::Time::Now();
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.RestoreErrors({later});
    }
    LeaveNote(GetParam());
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 40005/105541\n");
}

INSTANTIATE_TEST_SUITE_P(Signs, StoreBehind, testing::Values(">", "?"),
                         [](const testing::TestParamInfo<const char*>& sign)
                         { return *sign.param == '>' ? "Ahead" : "Elsewhere"; });

TEST_F(FormerState, OfATableThatIsInAnotherStoreIsTheTables)
{
    LeaveStore("boot", "c");
    WriteFile(m_directory.File("note"), "= /another.db\n");
    LeaveTable({kDataSensor}, 2);
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 5/5\nPositioning:Ublox:No Data:2 raised "
                       "2/2\na 17\n");
}

TEST_F(FormerState, OfATableThatNothingWasPutIntoYetIsTheStores)
{
    LeaveStore("boot", "c");
    WriteFile(m_directory.File("note"), "> " + m_directory.File("state.db") + "\n");
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database()); // and is killed
    }
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 raised 5/5\na 17\n");
}
