#include "support/CapturedOutput.h"
#include "unit/Common/view/ReaderFixture.h"

using namespace Faultkeeper;
using NumberedErrors::Code;
using NumberedErrors::Id;
using NumberedErrors::Type;
using Support::WarnedBy;

// What an owner does with many records at once: bring a former state back, and publish a batch of changes.

namespace
{

class ErrorDatabaseViewRestoreTest : public ViewFixture
{
protected:
    ErrorDatabaseViewRestoreTest() { EXPECT_TRUE(m_owner.LoadErrors(m_database)); }

    static SErrorEntry Former(int number, bool raised, int raisedSeconds, int clearedSeconds)
    {
        SErrorEntry entry;
        entry.problemCode = Code(number);
        entry.problemType = static_cast<std::int16_t>(Type(number));
        entry.flags = static_cast<std::uint16_t>(0xFF00 | (raised ? kRaisedFlag : 0));
        entry.counter1 = 65535;
        entry.counter2 = 7;
        entry.raisedTime = Core::Time(raisedSeconds);
        entry.clearedTime = Core::Time(clearedSeconds);
        return entry;
    }

    std::string Shown(int index)
    {
        const SErrorEntry& record = Record(index);
        return std::to_string(record.flags) + " " + std::to_string(record.counter1) + " " +
               std::to_string(record.counter2) + " " + Seconds(record.raisedTime) + " " +
               Seconds(record.clearedTime);
    }

    static std::string Seconds(const Core::Time& time)
    {
        return std::to_string(time.Nanoseconds() / 1000000000);
    }

    CErrorDatabaseView m_owner{true, eViewOwner};
};

TEST_F(ErrorDatabaseViewRestoreTest, BringsRaisedBitsCountersAndTimesBack)
{
    EXPECT_TRUE(m_owner.RestoreErrors({Former(2, true, 1000, 900), Former(0, false, 500, 700)}));
    EXPECT_EQ(Shown(0), "0 65535 7 500 700");
    EXPECT_EQ(Shown(1), "0 0 0 0 0");
    EXPECT_EQ(Shown(2), "1 65535 7 1000 900");
}

TEST_F(ErrorDatabaseViewRestoreTest, TheHeadersTimesBecomeTheLatestOfThem)
{
    m_owner.RestoreErrors({Former(2, true, 1000, 100), Former(0, false, 500, 700), Former(1, false, 20, 30)});
    EXPECT_EQ(Seconds(Header().lastRaiseTime), "1000");
    EXPECT_EQ(Seconds(Header().lastClearTime), "700");
}

TEST_F(ErrorDatabaseViewRestoreTest, TimesOfRecordsThatAreNotThereDoNotReachTheHeader)
{
    EXPECT_TRUE(m_owner.RestoreErrors({Former(99, true, 5000, 6000), Former(0, true, 500, 400)}));
    EXPECT_EQ(Seconds(Header().lastRaiseTime), "500");
    EXPECT_EQ(Seconds(Header().lastClearTime), "400");
}

TEST_F(ErrorDatabaseViewRestoreTest, ALaterEntryOfTheSameErrorWins)
{
    m_owner.RestoreErrors({Former(2, true, 1000, 900), Former(2, false, 1000, 1100)});
    EXPECT_EQ(Shown(2), "0 65535 7 1000 1100");
}

TEST_F(ErrorDatabaseViewRestoreTest, IsRefusedOnceTheTableIsReadyAndAgainAllowedWhenItIsNot)
{
    m_owner.FaultkeeperReady(true);
    const std::string before = Bytes();
    EXPECT_FALSE(m_owner.RestoreErrors({Former(2, true, 1000, 900)}));
    EXPECT_EQ(Bytes(), before);
    m_owner.FaultkeeperReady(false);
    EXPECT_TRUE(m_owner.RestoreErrors({Former(2, true, 1000, 900)}));
}

TEST_F(ErrorDatabaseViewRestoreTest, IsRefusedToAReader)
{
    CErrorDatabaseView reader(false, eViewReader);
    const std::string before = Bytes();
    EXPECT_FALSE(reader.RestoreErrors({Former(2, true, 1000, 900)}));
    EXPECT_EQ(Bytes(), before);
}

TEST_F(ErrorDatabaseViewRestoreTest, DoesNothingWhileTheLockIsBusy)
{
    const std::string before = Bytes();
    ASSERT_TRUE(m_owner.GetLock(false));
    bool done = true;
    EXPECT_EQ(WarnedBy([&] { done = m_owner.RestoreErrors({Former(2, true, 1000, 900)}); }),
              "unable to obtain lock\n");
    EXPECT_FALSE(done);
    EXPECT_TRUE(m_owner.ReleaseLock());
    EXPECT_EQ(Bytes(), before);
}

TEST_F(ErrorDatabaseViewRestoreTest, AReaderReplaysWhatWasRestoredAsRaised)
{
    m_owner.RestoreErrors({Former(2, true, 1000, 900), Former(1, false, 500, 700)});
    m_owner.FaultkeeperReady(true);
    CErrorDatabaseView reader(false, eViewReader);
    EXPECT_EQ(reader.Synchronise(m_database), 1);
    EXPECT_EQ(WritingListener::Active(m_database), "2");
}

// ---- A batch of changes

class ErrorDatabaseViewBatchTest : public ReadyTableFixture
{
protected:
    static SErrorChange Change(int number, bool raised) { return {Code(number), Type(number), raised}; }
};

TEST_F(ErrorDatabaseViewBatchTest, RaisesAndClearsInTheGivenOrder)
{
    EXPECT_TRUE(m_owner.ApplyChanges(
        {Change(1, true), Change(1, false), Change(1, true), Change(2, true), Change(2, false)}));
    EXPECT_EQ(Record(1).flags, 1);
    EXPECT_EQ(Record(1).counter1, 2);
    EXPECT_EQ(Record(2).flags, 0);
    EXPECT_EQ(Record(2).counter1, 1);
    EXPECT_LT(Record(1).clearedTime, Record(1).raisedTime);
    EXPECT_LT(Record(1).raisedTime, Record(2).raisedTime);
    EXPECT_LT(Record(2).raisedTime, Record(2).clearedTime);
    EXPECT_LT(Header().lastRaiseTime, Record(2).raisedTime); // read first, as for a single raise
    EXPECT_EQ(Header().lastClearTime, Record(2).clearedTime);
}

TEST_F(ErrorDatabaseViewBatchTest, PassesOverWhatIsSoAlreadyAndWhatIsUnknown)
{
    Raise(1);
    const std::string before = Bytes();
    EXPECT_TRUE(m_owner.ApplyChanges({Change(1, true), Change(2, false), Change(99, true)}));
    EXPECT_EQ(Bytes(), before);
}

TEST_F(ErrorDatabaseViewBatchTest, AnEmptyBatchIsDone)
{
    EXPECT_TRUE(m_owner.ApplyChanges({}));
}

TEST_F(ErrorDatabaseViewBatchTest, IsRefusedBeforeTheTableIsReadyAndToAReader)
{
    m_owner.FaultkeeperReady(false);
    CErrorDatabaseView reader(false, eViewReader);
    const std::string before = Bytes();
    EXPECT_FALSE(m_owner.ApplyChanges({Change(1, true)}));
    EXPECT_FALSE(reader.ApplyChanges({Change(1, true)}));
    EXPECT_EQ(Bytes(), before);
}

TEST_F(ErrorDatabaseViewBatchTest, DoesNothingWhileTheLockIsBusy)
{
    const std::string before = Bytes();
    ASSERT_TRUE(m_owner.GetLock(false));
    bool done = true;
    WarnedBy([&] { done = m_owner.ApplyChanges({Change(1, true)}); });
    EXPECT_FALSE(done);
    EXPECT_TRUE(m_owner.ReleaseLock());
    EXPECT_EQ(Bytes(), before);
}

// ---- Finding records

TEST_F(ErrorDatabaseViewBatchTest, OfTwoRecordsWithOneIdentifierTheFirstIsRaised)
{
    Record(3).problemCode = Code(1); // by somebody who counts no change
    Record(3).problemType = static_cast<std::int16_t>(Type(1));
    Raise(1);
    EXPECT_EQ(Record(1).flags, 1);
    EXPECT_EQ(Record(3).flags, 0);
}

TEST_F(ErrorDatabaseViewBatchTest, ARecordThatWasRenamedUnderTheOwnersFeetIsFoundByItsNewName)
{
    Raise(1);
    Record(2).problemCode = Code(50);
    Record(2).problemType = static_cast<std::int16_t>(Type(50));
    Raise(50);
    EXPECT_EQ(Record(2).flags, 1);
    Raise(2);
    EXPECT_EQ(Record(2).counter1, 1) << "its old name is gone";
}

TEST_F(ErrorDatabaseViewBatchTest, ManyAreFoundFirstToLastThoughSomebodyRenamesRecordsWithoutCounting)
{
    const std::vector<std::pair<int, int>> all = {Id(0), Id(1), Id(2), Id(3), Id(3), Id(3)};
    EXPECT_TRUE(m_owner.RaiseErrors(all));
    EXPECT_TRUE(m_owner.ClearErrors(all));
    Record(1).problemCode = Code(3);
    Record(1).problemType = static_cast<std::int16_t>(Type(3));
    EXPECT_TRUE(m_owner.RaiseErrors(all));
    EXPECT_EQ(Record(1).flags, 1) << "the first of two";
    EXPECT_EQ(Record(3).flags, 0);
    EXPECT_EQ(Record(1).counter1, 2);
    Record(1).problemType = 77;
    EXPECT_TRUE(m_owner.ApplyChanges(
        {Change(3, true), Change(1, true), Change(0, false), Change(2, false), Change(2, true)}));
    EXPECT_EQ(Record(3).flags, 1);
    EXPECT_EQ(Record(3).counter1, 2);
    EXPECT_EQ(Record(1).counter1, 2) << "its old name is gone";
}

TEST_F(ErrorDatabaseViewBatchTest, OneIsFoundFirstThoughSomebodyRenamesARecordBeforeIt)
{
    Raise(3);
    Clear(3);
    Record(0).problemCode = Code(3);
    Record(0).problemType = static_cast<std::int16_t>(Type(3));
    Raise(3);
    EXPECT_EQ(Record(0).flags, 1);
    EXPECT_EQ(Record(3).flags, 0);
}

TEST_F(ErrorDatabaseViewBatchTest, RecordsPastTheCountAreNotFoundThoughTheyWereBefore)
{
    Raise(3);
    Header().count = 3;
    Clear(3);
    EXPECT_EQ(Record(3).flags, 1);
}

TEST_F(ErrorDatabaseViewBatchTest, AReaderFindsWhatTheNewCopyHoldsAfterTheErrorsWereLoadedAnew)
{
    CErrorDatabaseView reader(false, eViewReader);
    reader.Synchronise(m_database);
    EXPECT_EQ(reader.RetrieveErrorIndex(Code(3), Type(3)), 3);
    std::swap(Record(0).problemType, Record(3).problemType);
    EXPECT_EQ(reader.RetrieveErrorIndex(Code(3), Type(3)), 3) << "the copy is as it was";
    reader.Synchronise(m_database);
    EXPECT_EQ(reader.RetrieveErrorIndex(Code(3), Type(3)), 0);
    EXPECT_EQ(reader.RetrieveErrorIndex(Code(0), Type(0)), 3);
}

TEST_F(ErrorDatabaseViewBatchTest, OnlySixteenBitsOfAModeAreLookedAt)
{
    m_owner.RaiseError(Code(2), Type(2) + 0x10000);
    EXPECT_EQ(Record(2).flags, 1);
}

} // namespace
