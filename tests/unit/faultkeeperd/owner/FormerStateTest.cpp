#include "faultkeeperd/owner/FormerState.h"

#include "../OwnerFixture.h"
#include "../store/FailingDisk.h"
#include "support/CapturedOutput.h"
#include "support/FreshDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>

using namespace Support;
using namespace Faultkeeper;
using namespace Faultkeeper::Apps;
using testing::HasSubstr;
using testing::Not;

namespace
{

const Id kUnknown(0x50C1B, 2); // Service:GPS:No Data:2

SStoredError Error(const Id& id, bool raised, std::uint16_t counter, std::uint64_t raises)
{
    SStoredError error;
    error.entry.problemCode = id.first;
    error.entry.problemType = static_cast<std::int16_t>(id.second);
    error.entry.flags = raised ? kRaisedFlag : std::uint16_t(0);
    error.entry.counter1 = counter;
    error.entry.counter2 = counter;
    error.entry.raisedTime = Core::Time(1000);
    error.entry.clearedTime = Core::Time(900);
    error.raises = raises;
    return error;
}

class FormerState : public OwnerTest
{
protected:
    /// A store as an owner of that boot and that configuration has left it.
    void LeaveStore(const std::string& boot, const std::string& configuration)
    {
        UseStore();
        Keeper().Open(boot, configuration);
        Keeper().Keep(Error(kLinkSensor, true, 5, 5));
        Keeper().Keep(Error(kUnknown, true, 6, 6));
        Keeper().Keep(SStoredSession{"a", 17, SStoredSession::kConnected});
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        UseStore();
    }

    /// A table with one raised error, as a dead owner has left it.
    void LeaveTable()
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.FaultkeeperReady(true);
        owner.RaiseError(kDataSensor.first, kDataSensor.second);
    }

    /// A table in which these errors were raised so often, one clear between two raises.
    void LeaveTable(const std::vector<Id>& ids, int raises)
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.FaultkeeperReady(true);
        for (int raise = 0; raise < raises; ++raise)
        {
            owner.ClearErrors(ids);
            owner.RaiseErrors(ids);
        }
    }

    /// What was put into the store while the table was locked, and so later.
    void StoreLater(const std::vector<SStoredError>& errors)
    {
        UseStore();
        Keeper().Open("boot", "c");
        for (SStoredError error : errors)
        {
            error.entry.raisedTime = Core::Time::Now();
            Keeper().Keep(error);
        }
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        UseStore();
    }

    void LeaveNote(const std::string& sign)
    {
        WriteFile(m_directory.File("note"), sign + " " + m_directory.File("state.db") + "\n");
    }

    /// As Found, while the store can only be read.
    std::string FoundReadOnly()
    {
        FailingDisk::RefuseAfter(0, EROFS, -1, FailingDisk::ekWrite | FailingDisk::ekOpenToWrite);
        std::string found = Found();
        FailingDisk::Mend();
        return found;
    }

    std::string Found()
    {
        std::ostringstream text;
        m_said = WarnedBy([&] { m_former = FindFormerState(Keeper(), Database(), "boot", "c"); });
        for (const SStoredError& error : m_former.errors)
        {
            if (error.raises > 0)
                text << ErrorName(error.entry.problemCode, error.entry.problemType) << " "
                     << (error.entry.flags != 0 ? "raised " : "clear ") << error.entry.counter1 << "/"
                     << error.raises << "\n";
        }
        for (const SStoredSession& session : m_former.sessions)
            text << session.id << " " << session.applied << "\n";
        return text.str();
    }

    SFormerState m_former;
    std::string m_said;
};

} // namespace

TEST_F(FormerState, WithoutAnythingIsEmpty)
{
    EXPECT_EQ(Found(), "");
    EXPECT_FALSE(m_former.sameBoot);
    EXPECT_EQ(m_former.latest, Core::Time());
    EXPECT_EQ(m_said,
              "faultkeeperd: info: the state store is switched off: what is applied counts as stored, "
              "and is acknowledged\n");
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

TEST_F(FormerState, OfAStoreThatAnOwnerReadButCouldNotWriteIsNotCountedTwice)
{
    LeaveStore("boot before", "c");
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(Database());
        owner.RestoreErrors({Error(kLinkSensor, false, 5, 5).entry});
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
        owner.RestoreErrors({Error(kLinkSensor, false, 5, 5).entry});
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
    StoreLater({Error(kLinkSensor, true, 2, 2), Error(kDataSensor, false, 1, 1)});
    LeaveNote("=");
    EXPECT_EQ(FoundReadOnly(), "Positioning:GPS:Communications:9 raised 2/2\nPositioning:Ublox:No Data:2 "
                               "clear 1/1\n");
    EXPECT_THAT(m_said, Not(HasSubstr("behind"))) << "it is not";
    EXPECT_EQ(m_former.contradicted, std::set<Id>()) << "its times are the later ones";
}

TEST_F(FormerState, OfAStoreThatCanOnlyBeReadIsWhatWasStoredThoughTheTableGotPartOfItLater)
{
    StoreLater({Error(kLinkSensor, false, 2, 2)});
    LeaveTable({kLinkSensor}, 2); // all but the clear
    LeaveNote("=");
    EXPECT_EQ(FoundReadOnly(), "Positioning:GPS:Communications:9 clear 2/2\n");
    EXPECT_EQ(m_former.contradicted, std::set<Id>{kLinkSensor}) << "displays have seen it raised";
}

TEST_F(FormerState, OfAStoreThatCanOnlyBeReadAndIsBehindIsTheTables)
{
    StoreLater({Error(kLinkSensor, false, 2, 2)});
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
    StoreLater({Error(kDataSensor, false, 1, 1)});
    LeaveTable({kLinkSensor, kDataSensor}, 3);
    StoreLater({Error(kLinkSensor, false, 4, 4)});
    LeaveNote(GetParam()); // the store failed after that, and the owner was killed
    EXPECT_EQ(Found(),
              "Positioning:GPS:Communications:9 clear 4/4\nPositioning:Ublox:No Data:2 raised 3/3\n");
    UseStore();
    EXPECT_EQ(Found(), "Positioning:GPS:Communications:9 clear 4/4\nPositioning:Ublox:No Data:2 raised 3/3\n")
        << "it is in the store at once";
}

TEST_P(StoreBehind, MayBeSoByMoreThanHalfOfWhatACounterHolds)
{
    StoreLater({Error(kLinkSensor, false, 5, 65536 + 5)});
    SErrorEntry later = Error(kLinkSensor, true, 40005, 0).entry;
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

class FutureTime : public FormerState, public testing::WithParamInterface<int>
{
protected:
    /// A store of this boot with a time that many hours ahead.
    SStoredError LeaveFuture()
    {
        LeaveStore("boot", "c");
        SStoredError error = Error(kLinkSensor, false, 5, 5);
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
