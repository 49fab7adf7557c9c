#include "support/CapturedOutput.h"
#include "unit/Common/view/ViewFixture.h"

#include <limits>

using namespace Faultkeeper;
using NumberedErrors::Code;
using NumberedErrors::Id;
using NumberedErrors::Type;
using Support::WarnedBy;

namespace
{

constexpr std::uint16_t kUnusedFlag = 0x8000;

class ErrorDatabaseViewOwnerTest : public ReadyTableFixture
{
protected:
    /// Expects that `action` leaves every byte of the segment as it is.
    template <typename Action> void ExpectUntouched(const Action& action)
    {
        const std::string bytes = Bytes();
        EXPECT_TRUE(action());
        EXPECT_EQ(Bytes(), bytes);
    }

    /// All twelve bytes are zero, the type word included.
    static bool IsZero(const Core::Time& time)
    {
        return std::string(reinterpret_cast<const char*>(&time), sizeof time) == std::string(12, '\0');
    }
};

TEST_F(ErrorDatabaseViewOwnerTest, RaisingCountsAndStampsTheRecordAndTheHeader)
{
    const Core::Time before = Core::Time::Now();
    EXPECT_TRUE(Raise(2));
    const Core::Time after = Core::Time::Now();
    EXPECT_EQ(Record(2).flags, 1);
    EXPECT_EQ(Record(2).counter1, 1);
    EXPECT_EQ(Record(2).counter2, 1);
    EXPECT_LT(before, Header().lastRaiseTime);
    EXPECT_LT(Record(2).raisedTime, after);
    EXPECT_TRUE(IsZero(Record(2).clearedTime));
    EXPECT_TRUE(IsZero(Header().lastClearTime));
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingReadsTheClockForTheHeaderFirstAndForTheRecordAfterIt)
{
    Raise(2);
    EXPECT_LT(Header().lastRaiseTime, Record(2).raisedTime);
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingTouchesNoOtherRecord)
{
    const std::string before = RecordBytes(0) + RecordBytes(1) + RecordBytes(3) + RecordBytes(4);
    Raise(2);
    EXPECT_EQ(RecordBytes(0) + RecordBytes(1) + RecordBytes(3) + RecordBytes(4), before);
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingWhatIsRaisedChangesNothing)
{
    Raise(2);
    ExpectUntouched([&] { return Raise(2); });
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingAfterAClearAddsOneToBothCounters)
{
    Raise(2);
    Clear(2);
    const Core::Time cleared = Record(2).clearedTime;
    Raise(2);
    EXPECT_EQ(Record(2).counter1, 2);
    EXPECT_EQ(Record(2).counter2, 2);
    EXPECT_EQ(Record(2).flags, 1);
    EXPECT_EQ(Record(2).clearedTime, cleared);
    EXPECT_LT(cleared, Record(2).raisedTime);
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingAnUnknownErrorChangesNothing)
{
    ExpectUntouched([&] { return m_owner.RaiseError(Code(2), 4); });
    ExpectUntouched([&] { return m_owner.RaiseError(Code(2) + 1, 2); });
    ExpectUntouched([&] { return m_owner.RaiseError(0, 0); });
}

TEST_F(ErrorDatabaseViewOwnerTest, CountersWrapAt65536EachForItself)
{
    Record(0).counter1 = 65535;
    Record(0).counter2 = 7;
    Raise(0);
    EXPECT_EQ(Record(0).counter1, 0);
    EXPECT_EQ(Record(0).counter2, 8);
}

TEST_F(ErrorDatabaseViewOwnerTest, ClearingStampsRecordAndHeaderWithOneTime)
{
    Raise(1);
    const Core::Time raised = Record(1).raisedTime;
    const Core::Time before = Core::Time::Now();
    EXPECT_TRUE(Clear(1));
    EXPECT_EQ(Record(1).flags, 0);
    EXPECT_EQ(Record(1).counter1, 1);
    EXPECT_EQ(Record(1).counter2, 1);
    EXPECT_EQ(Record(1).raisedTime, raised);
    EXPECT_LT(before, Record(1).clearedTime);
    EXPECT_EQ(Record(1).clearedTime, Header().lastClearTime);
}

TEST_F(ErrorDatabaseViewOwnerTest, ClearingWhatIsNotRaisedChangesNothing)
{
    ExpectUntouched([&] { return Clear(1); });
    Raise(1);
    Clear(1);
    ExpectUntouched([&] { return Clear(1); });
}

TEST_F(ErrorDatabaseViewOwnerTest, ClearingAnUnknownErrorChangesNothing)
{
    Raise(1);
    ExpectUntouched([&] { return m_owner.ClearError(Code(1), 9); });
}

TEST_F(ErrorDatabaseViewOwnerTest, OtherFlagBitsStay)
{
    Record(1).flags = kUnusedFlag;
    Raise(1);
    EXPECT_EQ(Record(1).flags, kUnusedFlag | kRaisedFlag);
    Clear(1);
    EXPECT_EQ(Record(1).flags, kUnusedFlag);
}

TEST_F(ErrorDatabaseViewOwnerTest, ProblemTypesAreComparedAs16Bits)
{
    m_owner.RaiseError(Code(2), 65536 + 2);
    EXPECT_EQ(Record(2).flags, 1);
    m_owner.ClearError(Code(2), 2 - 65536);
    EXPECT_EQ(Record(2).flags, 0);
    m_owner.RaiseErrors({{Code(1), 65536 + 1}});
    EXPECT_EQ(Record(1).flags, 1);
    m_owner.ClearErrors({{Code(1), 1 - 65536}});
    EXPECT_EQ(Record(1).flags, 0);
}

TEST_F(ErrorDatabaseViewOwnerTest, ANegativeProblemTypeFindsTheRecordThatHoldsIt)
{
    Record(3).problemType = -5;
    m_owner.RaiseError(Code(3), -5);
    EXPECT_EQ(Record(3).flags, 1);
    m_owner.ClearError(Code(3), 65536 - 5);
    EXPECT_EQ(Record(3).flags, 0);
}

TEST_F(ErrorDatabaseViewOwnerTest, TheFirstOfTwoRecordsWithOneIdentifierIsMeant)
{
    Record(3).problemType = 1;
    const std::string second = RecordBytes(3);
    Raise(1);
    EXPECT_EQ(Record(1).flags, 1);
    EXPECT_EQ(RecordBytes(3), second);
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingSeveralUsesOneTimeForAll)
{
    const Core::Time before = Core::Time::Now();
    EXPECT_TRUE(m_owner.RaiseErrors({Id(3), Id(0), {1, 1}, Id(2)}));
    EXPECT_LT(before, Header().lastRaiseTime);
    for (const int index : {0, 2, 3})
    {
        EXPECT_EQ(Record(index).raisedTime, Header().lastRaiseTime) << index;
        EXPECT_EQ(Record(index).flags, 1) << index;
        EXPECT_EQ(Record(index).counter1, 1) << index;
        EXPECT_EQ(Record(index).counter2, 1) << index;
    }
    EXPECT_EQ(Record(1).flags, 0);
    EXPECT_TRUE(IsZero(Record(1).raisedTime));
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingSeveralLeavesTheRaisedOnesAlone)
{
    Raise(0);
    const std::string raised = RecordBytes(0);
    m_owner.RaiseErrors({Id(0), Id(1)});
    EXPECT_EQ(RecordBytes(0), raised);
    EXPECT_EQ(Record(1).raisedTime, Header().lastRaiseTime);
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingOneTwiceInOneCallCountsItOnce)
{
    m_owner.RaiseErrors({Id(1), Id(1)});
    EXPECT_EQ(Record(1).counter1, 1);
}

TEST_F(ErrorDatabaseViewOwnerTest, RaisingNothingNewChangesNotEvenTheHeader)
{
    Raise(0);
    ExpectUntouched([&] { return m_owner.RaiseErrors({}); });
    ExpectUntouched([&] { return m_owner.RaiseErrors({Id(0)}); });
    ExpectUntouched([&] { return m_owner.RaiseErrors({{1, 1}}); });
}

TEST_F(ErrorDatabaseViewOwnerTest, ClearingSeveralUsesOneTimeForAll)
{
    m_owner.RaiseErrors({Id(0), Id(1), Id(3)});
    const Core::Time before = Core::Time::Now();
    EXPECT_TRUE(m_owner.ClearErrors({Id(3), Id(2), Id(0)}));
    EXPECT_LT(before, Header().lastClearTime);
    EXPECT_EQ(Record(0).clearedTime, Header().lastClearTime);
    EXPECT_EQ(Record(3).clearedTime, Header().lastClearTime);
    EXPECT_EQ(Record(0).flags, 0);
    EXPECT_EQ(Record(1).flags, 1);
    EXPECT_EQ(Record(3).flags, 0);
    EXPECT_TRUE(IsZero(Record(2).clearedTime)) << "was not raised";
    EXPECT_EQ(Record(0).counter1, 1);
}

TEST_F(ErrorDatabaseViewOwnerTest, ClearingNothingRaisedChangesNotEvenTheHeader)
{
    ExpectUntouched([&] { return m_owner.ClearErrors({}); });
    ExpectUntouched([&] { return m_owner.ClearErrors({Id(0), {1, 1}}); });
}

TEST_F(ErrorDatabaseViewOwnerTest, AnUnbelievableCountIsTakenAsTheNearestPossibleOne)
{
    for (const std::int32_t count : {-5, std::numeric_limits<std::int32_t>::min()})
    {
        Header().count = count;
        ExpectUntouched([&] { return Raise(0); });
        ExpectUntouched([&] { return m_owner.RaiseErrors({Id(0)}); });
    }
    Record(399).problemCode = 4711;
    for (const std::int32_t count : {400, 401, 100000, std::numeric_limits<std::int32_t>::max()})
    {
        Header().count = count;
        m_owner.RaiseErrors({{4711, 0}});
        EXPECT_EQ(Record(399).flags, 1) << count;
        EXPECT_TRUE(m_owner.RaiseError(4712, 0));
        m_owner.ClearErrors({{4711, 0}});
        EXPECT_EQ(Record(399).flags, 0) << count;
    }
}

TEST_F(ErrorDatabaseViewOwnerTest, OnlyRecordsBelowTheCountAreFound)
{
    Header().count = 2;
    ExpectUntouched([&] { return Raise(2); });
    Header().count = 3;
    Raise(2);
    EXPECT_EQ(Record(2).flags, 1);
}

TEST_F(ErrorDatabaseViewOwnerTest, DeclaringReadyWritesOneAndNotReadyZero)
{
    m_owner.FaultkeeperReady(false);
    EXPECT_EQ(Header().ready, 0u);
    EXPECT_FALSE(m_owner.FaultkeeperReady());
    m_owner.FaultkeeperReady(true);
    EXPECT_EQ(Header().ready, 1u);
    EXPECT_TRUE(m_owner.FaultkeeperReady());
}

TEST_F(ErrorDatabaseViewOwnerTest, OnlyOneMeansReady)
{
    CErrorDatabaseView reader(false, eViewReader);
    for (const std::uint32_t word : {0u, 2u, 0xFFFFFFFFu})
    {
        Header().ready = word;
        EXPECT_FALSE(m_owner.FaultkeeperReady()) << word;
        EXPECT_FALSE(reader.FaultkeeperReady()) << word;
    }
}

TEST_F(ErrorDatabaseViewOwnerTest, NotReadyRefusesRaisesUntilReadyAgain)
{
    m_owner.FaultkeeperReady(false);
    EXPECT_FALSE(Raise(0));
    EXPECT_EQ(Record(0).flags, 0);
    m_owner.FaultkeeperReady(true);
    EXPECT_TRUE(Raise(0));
    EXPECT_EQ(Record(0).flags, 1);
}

TEST_F(ErrorDatabaseViewOwnerTest, ReadyIsWhatTheOwnerSaidAndNotWhatTheTableSays)
{
    Header().ready = 0;
    EXPECT_TRUE(Raise(0));
    EXPECT_EQ(Record(0).flags, 1);
    CErrorDatabaseView second(false, eViewOwner);
    Header().ready = 1;
    EXPECT_FALSE(second.RaiseError(Code(1), 1));
    EXPECT_EQ(Record(1).flags, 0);
}

TEST_F(ErrorDatabaseViewOwnerTest, ASecondOwnerThatSynchronisesWithAReadyTableMayRaise)
{
    CErrorDatabaseView second(false, eViewOwner);
    EXPECT_EQ(second.Synchronise(m_database), 0);
    EXPECT_TRUE(second.RaiseError(Code(1), 1));
    EXPECT_EQ(Record(1).flags, 1);
}

TEST_F(ErrorDatabaseViewOwnerTest, AnOwnerThatSynchronisesWithATableThatIsNotReadyMayNotRaise)
{
    Header().ready = 0;
    EXPECT_EQ(m_owner.Synchronise(m_database), 0);
    EXPECT_FALSE(Raise(1));
    EXPECT_EQ(Record(1).flags, 0);
}

TEST_F(ErrorDatabaseViewOwnerTest, SynchronisingAnOwnerReplaysNothing)
{
    Raise(1);
    EXPECT_EQ(m_owner.Synchronise(m_database), 0);
    Raise(2);
    EXPECT_EQ(m_owner.Synchronise(m_database), 0);
    EXPECT_FALSE(m_database.RetrieveError(Code(1), 1)->Active());
    EXPECT_FALSE(m_database.RetrieveError(Code(2), 2)->Active());
    EXPECT_TRUE(m_database.ActiveErrors(false).empty());
}

TEST_F(ErrorDatabaseViewOwnerTest, OnlyReadersLookUpIndexAndDetails)
{
    m_owner.Synchronise(m_database);
    EXPECT_EQ(m_owner.RetrieveErrorIndex(Code(1), 1), -1);
    SErrorEntry entry;
    entry.counter2 = 4711;
    m_owner.RetrieveErrorDetails(Code(1), 1, entry);
    EXPECT_EQ(entry.counter2, 4711);
    EXPECT_EQ(entry.problemCode, 0);
}

} // namespace
