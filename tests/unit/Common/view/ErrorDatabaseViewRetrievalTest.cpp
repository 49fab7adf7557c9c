#include "unit/Common/view/ReaderFixture.h"

using namespace Faultkeeper;
using NumberedErrors::Code;

namespace
{

class ErrorDatabaseViewRetrievalTest : public ReaderFixture
{
};

TEST_F(ErrorDatabaseViewRetrievalTest, InitialisingByHandTakesTheSnapshotAnew)
{
    Synchronise();
    Raise(3);
    Synchronise();
    m_reader.Initialise();
    Restore(1, Core::Time(1000), Core::Time(2000));
    m_listener.Text();
    EXPECT_EQ(Synchronise(), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewRetrievalTest, InitialisingByHandTakesTheCopiedTimesAsSeen)
{
    Synchronise();
    Header().ready = 0;
    Raise(1);
    Synchronise(); // copies, replays nothing
    m_reader.Initialise();
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, false), 0);
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, true), 1);
    EXPECT_EQ(m_listener.Text(), "1+[1] ");
}

TEST_F(ErrorDatabaseViewRetrievalTest, InitialisingByHandTakesTheTimesOfEveryRecord)
{
    Synchronise();
    Header().ready = 0;
    for (const int number : {0, 1, 2, 3})
        Raise(number);
    Synchronise();
    m_reader.Initialise();
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, false), 0);
    EXPECT_EQ(m_listener.Text(), "");
}

TEST_F(ErrorDatabaseViewRetrievalTest, AllRecordsMayHaveOtherIdentifiersAfterTheNextCopy)
{
    Synchronise();
    EXPECT_EQ(m_reader.RetrieveErrorIndex(NumberedErrors::Code(0), NumberedErrors::Type(0)), 0);
    for (const int number : {0, 1, 2, 3})
        Record(number).problemType = static_cast<std::int16_t>(10 + number);
    Synchronise();
    for (const int number : {0, 1, 2, 3})
        EXPECT_EQ(m_reader.RetrieveErrorIndex(NumberedErrors::Code(number), 10 + number), number);
}

TEST_F(ErrorDatabaseViewRetrievalTest, AnyRecordMayHaveAnotherIdentifierAfterTheNextCopy)
{
    for (int number = 0; number < 4; ++number)
    {
        Synchronise();
        EXPECT_EQ(m_reader.RetrieveErrorIndex(NumberedErrors::Code(number), NumberedErrors::Type(number)),
                  number);
        Record(number).problemType = 20;
        Synchronise();
        EXPECT_EQ(m_reader.RetrieveErrorIndex(NumberedErrors::Code(number), 20), number);
        EXPECT_EQ(m_reader.RetrieveErrorIndex(NumberedErrors::Code(number), NumberedErrors::Type(number)),
                  -1);
        Record(number).problemType = static_cast<std::int16_t>(NumberedErrors::Type(number));
    }
}

TEST_F(ErrorDatabaseViewRetrievalTest, UpdatingReplaysTheCopyAndNotTheTable)
{
    Synchronise();
    Raise(1);
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, false), 0);
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, true), 0);
    EXPECT_EQ(Active(), "");
}

TEST_F(ErrorDatabaseViewRetrievalTest, UpdatingByHandDoesNotRebuildTheListsOfTops)
{
    Raise(1);
    Synchronise();
    m_database.RaiseError(Code(2), 2, true);
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, true), 1);
    EXPECT_EQ(Tops(), 1u);
}

TEST_F(ErrorDatabaseViewRetrievalTest, UpdatingBeforeAnySynchronisationFindsNothing)
{
    Raise(1);
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, true), 0);
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, false), 0);
}

TEST_F(ErrorDatabaseViewRetrievalTest, AnOwnersInitialiseDoesNothing)
{
    Raise(1);
    const std::string bytes = Bytes();
    m_owner.Initialise();
    EXPECT_EQ(Bytes(), bytes);
    EXPECT_FALSE(m_owner.Failed());
    EXPECT_EQ(m_owner.Synchronise(m_database), 0);
}

TEST_F(ErrorDatabaseViewRetrievalTest, UpdatingACopyThatWasNeverInitialisedIsSafe)
{
    Raise(1);
    Header().ready = 0;
    Synchronise();
    EXPECT_EQ(m_reader.UpdateErrorStatus(m_database, false), 1);
    EXPECT_EQ(m_listener.Text(), "1+[1] ");
}

TEST_F(ErrorDatabaseViewRetrievalTest, RetrievalsTellTheLastSynchronisation)
{
    std::vector<SErrorEntry> entries;
    m_reader.RetrieveAllErrors(entries);
    EXPECT_TRUE(entries.empty());
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(3), 3), -1);
    Raise(3);
    Synchronise();
    Clear(3);
    m_reader.RetrieveAllErrors(entries);
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[3].flags, 1);
    m_reader.RetrieveAllErrors(entries);
    EXPECT_EQ(entries.size(), 8u) << "appended to";
    SErrorEntry entry;
    m_reader.RetrieveErrorDetails(Code(3), 3, entry);
    EXPECT_EQ(entry.flags, 1);
    EXPECT_EQ(entry.problemCode, Code(3));
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(3), 3), 3);
}

TEST_F(ErrorDatabaseViewRetrievalTest, RetrievingAnUnknownErrorLeavesTheOutputUntouched)
{
    Synchronise();
    SErrorEntry entry;
    entry.counter1 = 4711;
    m_reader.RetrieveErrorDetails(Code(3), 4, entry);
    EXPECT_EQ(entry.counter1, 4711);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(3), 4), -1);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(0, 0), -1);
}

TEST_F(ErrorDatabaseViewRetrievalTest, ProblemTypesAreComparedAs16Bits)
{
    Synchronise();
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(2), 65536 + 2), 2);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(2), 2 - 65536), 2);
    SErrorEntry entry;
    m_reader.RetrieveErrorDetails(Code(2), 65536 + 2, entry);
    EXPECT_EQ(entry.problemType, 2);
}

TEST_F(ErrorDatabaseViewRetrievalTest, TheFirstOfTwoRecordsWithOneIdentifierIsFound)
{
    Record(3).problemType = 1;
    Record(1).counter1 = 5;
    Synchronise();
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(1), 1), 1);
    SErrorEntry entry;
    m_reader.RetrieveErrorDetails(Code(1), 1, entry);
    EXPECT_EQ(entry.counter1, 5);
}

TEST_F(ErrorDatabaseViewRetrievalTest, TheIdentifierAtAnIndexIsReadFromTheTableItself)
{
    int code = 0;
    int type = 0;
    EXPECT_EQ(m_reader.RetrieveErrorFromIndex(2, code, type), 1) << "without any synchronisation";
    EXPECT_EQ(code, Code(2));
    EXPECT_EQ(type, 2);
}

TEST_F(ErrorDatabaseViewRetrievalTest, AnUnbelievableCountIsTakenAsTheNearestPossibleOne)
{
    std::vector<SErrorEntry> entries;
    Raise(1);
    Header().count = -5;
    EXPECT_EQ(Synchronise(), 0);
    m_reader.RetrieveAllErrors(entries);
    EXPECT_EQ(entries.size(), 0u);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(Code(1), 1), -1);
    Header().count = 100000;
    Record(399).problemCode = 4711;
    Record(399).flags = kRaisedFlag;
    Record(399).raisedTime = Header().lastRaiseTime = Core::Time::Now();
    EXPECT_EQ(Synchronise(), 1);
    m_reader.RetrieveAllErrors(entries);
    EXPECT_EQ(entries.size(), 400u);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(4711, 0), 399);
    EXPECT_EQ(m_reader.RetrieveErrorIndex(4712, 0), -1);
}

} // namespace
