#include "support/CapturedOutput.h"
#include "unit/Common/view/ReaderFixture.h"

using namespace Faultkeeper;
using NumberedErrors::Code;
using NumberedErrors::Id;
using Support::WarnedBy;

namespace
{

class ErrorDatabaseViewReaderTest : public ReaderFixture
{
};

TEST_F(ErrorDatabaseViewReaderTest, FirstReadySynchronisationReplaysRaisedRecordsOnly)
{
    m_owner.RaiseErrors({Id(1), Id(3)});
    Clear(1);
    m_database.RaiseError(Code(2), 2, true);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "3+[23] ");
    EXPECT_EQ(Active(), "23") << "cleared records are not replayed, so the local error stays";
}

TEST_F(ErrorDatabaseViewReaderTest, FirstReadySynchronisationOfAQuietTableReturns0)
{
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewReaderTest, FirstReadySynchronisationReplaysARaisedRecordWithoutAnyTime)
{
    Record(0).flags = kRaisedFlag;
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "0+[0] ");
}

TEST_F(ErrorDatabaseViewReaderTest, OneClearIsReplayedOnceAndReturns2)
{
    m_owner.RaiseErrors({Id(1), Id(2)});
    Synchronise();
    m_listener.Text();
    Clear(2);
    EXPECT_EQ(Synchronise(), 2);
    EXPECT_EQ(m_listener.Text(), "2-[1] ");
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewReaderTest, ARaiseAmongClearsReturns1)
{
    m_owner.RaiseErrors({Id(0), Id(3)});
    Synchronise();
    m_listener.Text();
    m_owner.ClearErrors({Id(0), Id(3)});
    Raise(1);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "0-[3] 1+[13] 3-[1] ");
}

TEST_F(ErrorDatabaseViewReaderTest, ChangesAreReplayedInTableOrderDatabaseBeforeListener)
{
    Synchronise();
    Raise(3);
    Raise(0);
    Raise(2);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "0+[0] 2+[02] 3+[023] ");
}

TEST_F(ErrorDatabaseViewReaderTest, TheDatabaseListsItsTopsAfterTheLastListenerCall)
{
    m_owner.RaiseErrors({Id(0), Id(2)});
    Synchronise();
    EXPECT_EQ(m_listener.Tops(), "00");
    EXPECT_EQ(Tops(), 2u);
}

TEST_F(ErrorDatabaseViewReaderTest, NothingReplayedLeavesTheListsOfTopsAsTheyAre)
{
    Synchronise();
    m_database.RaiseError(Code(2), 2, true);
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(Tops(), 0u);
    Raise(0);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(Tops(), 2u);
    m_database.RaiseError(Code(3), 3, true);
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(Tops(), 2u);
}

TEST_F(ErrorDatabaseViewReaderTest, AReplayedClearRebuildsTheListsOfTopsToo)
{
    Raise(0);
    Synchronise();
    Clear(0);
    EXPECT_EQ(Synchronise(), 2);
    EXPECT_EQ(Tops(), 0u);
}

TEST_F(ErrorDatabaseViewReaderTest, ReplayIsSilentSoParentsDoNotFollow)
{
    const Support::CFreshDirectory directory;
    Support::CConfigurationBuilder()
        .Leaf(NumberedErrors::Name(0))
        .Parent(NumberedErrors::Name(1), {NumberedErrors::Name(0)})
        .WriteTo(directory.Prefix());
    CErrorDatabase linked(directory.Prefix());
    Raise(0);
    EXPECT_EQ(m_reader.Synchronise(linked), 1);
    EXPECT_EQ(WritingListener::Active(linked), "0");
}

TEST_F(ErrorDatabaseViewReaderTest, RecordsUnknownToTheLocalDatabaseAreToldToTheListenerOnly)
{
    CErrorDatabase empty("no such directory/");
    Raise(1);
    EXPECT_EQ(m_reader.Synchronise(empty), 1);
    EXPECT_EQ(m_listener.Text(), "1+[] ");
}

TEST_F(ErrorDatabaseViewReaderTest, RaisedAndClearedInBetweenIsReplayedAsClear)
{
    Synchronise();
    Raise(1);
    Clear(1);
    EXPECT_EQ(Synchronise(), 2);
    EXPECT_EQ(m_listener.Text(), "1-[] ");
}

TEST_F(ErrorDatabaseViewReaderTest, ClearedAndRaisedInBetweenIsReplayedAsRaise)
{
    Raise(1);
    Synchronise();
    m_listener.Text();
    Clear(1);
    Raise(1);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "1+[1] ");
}

TEST_F(ErrorDatabaseViewReaderTest, EqualRaisedAndClearedTimesCountAsOneChange)
{
    Synchronise();
    Record(2).raisedTime = Record(2).clearedTime = Core::Time(1000);
    Header().lastRaiseTime = Core::Time(1000);
    EXPECT_EQ(Synchronise(), 2);
    EXPECT_EQ(Synchronise(), 0);
    Record(2).flags = kRaisedFlag;
    EXPECT_EQ(Synchronise(), 0) << "a flag without a later time is no change";
    Record(2).clearedTime = Core::Time(1001);
    EXPECT_EQ(Synchronise(), 1) << "the flag decides, not which of the times is later";
    EXPECT_EQ(m_listener.Text(), "2-[] 2+[2] ");
}

TEST_F(ErrorDatabaseViewReaderTest, AnEarlierTimeIsNoChange)
{
    Raise(1);
    Synchronise();
    m_listener.Text();
    Record(1).raisedTime = Core::Time(1000);
    Record(1).flags = 0;
    Raise(2);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "2+[12] ");
}

TEST_F(ErrorDatabaseViewReaderTest, TimesWithoutAHeaderChangeAreNotSeenBeforeTheFirstRaiseOrClear)
{
    Synchronise();
    Restore(1, Core::Time(1000), Core::Time(2000));
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
    SErrorEntry entry;
    m_reader.RetrieveErrorDetails(Code(1), 1, entry);
    EXPECT_EQ(entry.counter1, 9) << "the copy is up to date all the same";
    Raise(3);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "1-[] 3+[3] ");
}

TEST_F(ErrorDatabaseViewReaderTest, TimesWithoutAHeaderChangeAreSeenOnceAnythingWasRaised)
{
    Synchronise();
    Raise(3);
    Synchronise();
    m_listener.Text();
    Restore(1, Core::Time(1000), Core::Time(2000));
    EXPECT_EQ(Synchronise(), 2);
    EXPECT_EQ(m_listener.Text(), "1-[3] ");
}

TEST_F(ErrorDatabaseViewReaderTest, TimesWithoutAHeaderChangeAreSeenOnceAnythingWasCleared)
{
    Raise(3);
    Synchronise();
    Clear(3);
    Synchronise();
    m_listener.Text();
    Restore(1, Core::Time(1000), Core::Time(2000));
    EXPECT_EQ(Synchronise(), 2);
    EXPECT_EQ(m_listener.Text(), "1-[] ");
}

TEST_F(ErrorDatabaseViewReaderTest, ATableThatIsNotReadyIsCopiedButNotReplayed)
{
    Raise(1);
    m_owner.FaultkeeperReady(false);
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
    EXPECT_EQ(Active(), "");
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(2), 2), 2);
}

TEST_F(ErrorDatabaseViewReaderTest, AReadyWordOtherThanOneIsNotReady)
{
    Raise(1);
    Header().ready = 2;
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewReaderTest, ReadyAgainReplaysEveryRaisedRecordAgain)
{
    m_owner.RaiseErrors({Id(1), Id(2)});
    Synchronise();
    m_owner.FaultkeeperReady(false);
    EXPECT_EQ(Synchronise(), 0);
    m_owner.FaultkeeperReady(true);
    Clear(2);
    m_listener.Text();
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "1+[12] ");
    EXPECT_EQ(Active(), "12") << "what was cleared meanwhile is taken as seen";
}

TEST_F(ErrorDatabaseViewReaderTest, ReadyAgainTakesTheSnapshotAnew)
{
    Synchronise();
    Raise(3);
    Synchronise();
    m_owner.FaultkeeperReady(false);
    Synchronise();
    m_owner.FaultkeeperReady(true);
    Synchronise();
    m_listener.Text();
    Restore(1, Core::Time(1000), Core::Time(2000));
    EXPECT_EQ(Synchronise(), 0) << "the header is the one of the snapshot";
}

TEST_F(ErrorDatabaseViewReaderTest, NotReadyThatNobodyLookedAtChangesNothing)
{
    Raise(1);
    Synchronise();
    m_listener.Text();
    m_owner.FaultkeeperReady(false);
    m_owner.FaultkeeperReady(true);
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewReaderTest, ABusyLockLeavesTheCopyAndIsTriedAgain)
{
    Synchronise();
    Raise(1);
    ASSERT_TRUE(m_owner.GetLock(false));
    EXPECT_EQ(WarnedBy([&] { EXPECT_EQ(Synchronise(), 0); }), "unable to obtain lock\n");
    SErrorEntry entry;
    m_reader.RetrieveErrorDetails(Code(1), 1, entry);
    EXPECT_EQ(entry.counter1, 0);
    m_owner.ReleaseLock();
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "1+[1] ");
}

TEST_F(ErrorDatabaseViewReaderTest, ABusyLockDoesNotMakeTheTableNotReady)
{
    Raise(1);
    Synchronise();
    m_listener.Text();
    ASSERT_TRUE(m_owner.GetLock(false));
    WarnedBy([&] { Synchronise(); });
    m_owner.ReleaseLock();
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewReaderTest, AListenerThatWasRemovedHearsNothing)
{
    m_reader.SetCallback(nullptr);
    Raise(1);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "");
    EXPECT_EQ(Active(), "1");
}

TEST_F(ErrorDatabaseViewReaderTest, TheListenerIsGivenTheWholeRecord)
{
    class CopyingListener : public CErrorDbViewChanged
    {
    public:
        void ErrorEntryChanged(const SErrorEntry& entry) override { copy = entry; }
        SErrorEntry copy;
    } listener;
    m_reader.SetCallback(&listener);
    Raise(2);
    Clear(2);
    Raise(2);
    Synchronise();
    EXPECT_EQ(std::memcmp(&listener.copy, &Record(2), sizeof(SErrorEntry)), 0);
}

TEST_F(ErrorDatabaseViewReaderTest, RecordsThatComeBehindTheFirstCountAreReplayedFromTheirFirstTime)
{
    Header().count = 2;
    Synchronise();
    Raise(0);
    Header().count = 4;
    Raise(3);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(m_listener.Text(), "0+[0] 3+[03] ");
}

TEST_F(ErrorDatabaseViewReaderTest, TwoReadersReplayEachForItself)
{
    CErrorDatabase other(m_directory.Prefix());
    CErrorDatabaseView second(false, eViewReader);
    Raise(1);
    EXPECT_EQ(Synchronise(), 1);
    EXPECT_EQ(second.Synchronise(other), 1);
    Clear(1);
    EXPECT_EQ(second.Synchronise(other), 2);
    EXPECT_EQ(Synchronise(), 2);
}

} // namespace
