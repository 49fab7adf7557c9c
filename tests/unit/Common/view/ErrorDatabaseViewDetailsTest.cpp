#include "support/CapturedOutput.h"
#include "unit/Common/view/ViewFixture.h"

#include <algorithm>

using namespace Faultkeeper;
using NumberedErrors::Code;
using Support::WarnedBy;

namespace
{

/// What an owner puts into its table before it is ready: identifiers, and what it remembers of them.
class ErrorDatabaseViewDetailsTest : public ReadyTableFixture
{
protected:
    static SErrorEntry Remembered(int number, const Core::Time& raised, const Core::Time& cleared)
    {
        SErrorEntry entry;
        entry.problemCode = Code(number);
        entry.problemType = static_cast<std::int16_t>(NumberedErrors::Type(number));
        entry.counter1 = 17;
        entry.counter2 = 18;
        entry.raisedTime = raised;
        entry.clearedTime = cleared;
        return entry;
    }

    /// The time that the library's next look at the clock will give, an hour ahead of now.
    static Core::Time NextReading()
    {
        const std::int64_t ahead = Core::Time::Now().Nanoseconds() + 3600'000'000'000;
        Core::Time::NotBefore(Core::Time::FromNanoseconds(ahead - 1));
        return Core::Time::FromNanoseconds(ahead);
    }

    static Core::Time Later(const Core::Time& time)
    {
        return Core::Time::FromNanoseconds(time.Nanoseconds() + 1);
    }

    /// "counters 17 18 times 1000 2000", times in whole seconds
    std::string Shown(int index)
    {
        const SErrorEntry& record = Record(index);
        return "counters " + std::to_string(record.counter1) + " " + std::to_string(record.counter2) +
               " times " + std::to_string(record.raisedTime.Nanoseconds() / 1000000000) + " " +
               std::to_string(record.clearedTime.Nanoseconds() / 1000000000);
    }
};

TEST_F(ErrorDatabaseViewDetailsTest, RestoringCopiesCountersAndTimes)
{
    EXPECT_TRUE(m_owner.UpdateErrorDetails({Remembered(2, Core::Time(1000), Core::Time(2000))}));
    EXPECT_EQ(Shown(2), "counters 17 18 times 1000 2000");
    EXPECT_EQ(Shown(1), "counters 0 0 times 0 0");
}

TEST_F(ErrorDatabaseViewDetailsTest, RestoringTouchesNeitherFlagsNorTheHeadersTimes)
{
    Raise(1);
    const std::string header = Bytes().substr(0, 8) + Bytes().substr(12, 20);
    SErrorEntry raised = Remembered(0, Core::Time(1000), Core::Time(2000));
    raised.flags = kRaisedFlag;
    m_owner.UpdateErrorDetails({raised, Remembered(1, Core::Time(1000), Core::Time(2000))});
    EXPECT_EQ(Record(0).flags, 0);
    EXPECT_EQ(Record(1).flags, 1);
    EXPECT_EQ(Shown(1), "counters 17 18 times 1000 2000");
    EXPECT_EQ(Bytes().substr(0, 8) + Bytes().substr(12, 20), header);
}

TEST_F(ErrorDatabaseViewDetailsTest, RestoringWorksBeforeTheTableIsReady)
{
    m_owner.FaultkeeperReady(false);
    EXPECT_TRUE(m_owner.UpdateErrorDetails({Remembered(2, Core::Time(1000), Core::Time(2000))}));
    EXPECT_EQ(Shown(2), "counters 17 18 times 1000 2000");
}

TEST_F(ErrorDatabaseViewDetailsTest, RestoringSkipsUnknownErrors)
{
    const std::string bytes = Bytes();
    EXPECT_TRUE(m_owner.UpdateErrorDetails({Remembered(9, Core::Time(1000), Core::Time(2000))}));
    EXPECT_EQ(Bytes(), bytes);
    m_owner.UpdateErrorDetails(
        {Remembered(9, Core::Time(1), Core::Time(2)), Remembered(3, Core::Time(1000), Core::Time(2000))});
    EXPECT_EQ(Shown(3), "counters 17 18 times 1000 2000");
}

TEST_F(ErrorDatabaseViewDetailsTest, RestoringOneTwiceKeepsTheLater)
{
    m_owner.UpdateErrorDetails({Remembered(3, Core::Time(1000), Core::Time(2000)),
                                Remembered(3, Core::Time(3000), Core::Time(4000))});
    EXPECT_EQ(Shown(3), "counters 17 18 times 3000 4000");
}

TEST_F(ErrorDatabaseViewDetailsTest, RestoringMeansTheFirstRecordOfAnIdentifier)
{
    Record(3).problemType = 1;
    m_owner.UpdateErrorDetails({Remembered(1, Core::Time(1000), Core::Time(2000))});
    EXPECT_EQ(Shown(1), "counters 17 18 times 1000 2000");
    EXPECT_EQ(Shown(3), "counters 0 0 times 0 0");
}

TEST_F(ErrorDatabaseViewDetailsTest, ARaisedTimeOneSecondInTheFutureZeroesBothTimesButKeepsTheCounters)
{
    Record(0).raisedTime = Record(0).clearedTime = Core::Time(500);
    const Core::Time future = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + 1000000000);
    m_owner.UpdateErrorDetails({Remembered(0, future, Core::Time(2000))});
    EXPECT_EQ(Shown(0), "counters 17 18 times 0 0");
    EXPECT_EQ(RecordBytes(0).substr(12), std::string(24, '\0'));
}

TEST_F(ErrorDatabaseViewDetailsTest, AClearedTimeInTheFutureZeroesBothTimesToo)
{
    const Core::Time future = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + 1000000000);
    m_owner.UpdateErrorDetails({Remembered(0, Core::Time(1000), future)});
    EXPECT_EQ(Shown(0), "counters 17 18 times 0 0");
}

TEST_F(ErrorDatabaseViewDetailsTest, ATimeThatIsNowIsNotInTheFuture)
{
    Core::Time now = NextReading();
    m_owner.UpdateErrorDetails({Remembered(0, now, Core::Time(2000))});
    EXPECT_EQ(Record(0).raisedTime, now);
    now = NextReading();
    m_owner.UpdateErrorDetails({Remembered(1, Core::Time(1000), now)});
    EXPECT_EQ(Record(1).clearedTime, now);
}

TEST_F(ErrorDatabaseViewDetailsTest, TheNextMomentIsInTheFuture)
{
    m_owner.UpdateErrorDetails({Remembered(0, Later(NextReading()), Core::Time(2000))});
    m_owner.UpdateErrorDetails({Remembered(1, Core::Time(1000), Later(NextReading()))});
    EXPECT_EQ(Shown(0), "counters 17 18 times 0 0");
    EXPECT_EQ(Shown(1), "counters 17 18 times 0 0");
}

TEST_F(ErrorDatabaseViewDetailsTest, OneReadingOfTheClockServesAllEntries)
{
    const Core::Time now = NextReading();
    m_owner.UpdateErrorDetails({Remembered(0, now, Core::Time()), Remembered(1, Later(now), Core::Time())});
    EXPECT_EQ(Record(0).raisedTime, now);
    EXPECT_EQ(Shown(1), "counters 17 18 times 0 0");
}

TEST_F(ErrorDatabaseViewDetailsTest, LoadingWritesIdentifiersAndLeavesFlagsCountersAndTimes)
{
    for (int index = 0; index < 4; ++index)
        std::memset(static_cast<void*>(&Record(index)), 0xA5, sizeof(SErrorEntry));
    EXPECT_TRUE(m_owner.LoadErrors(m_database));
    for (int index = 0; index < 4; ++index)
    {
        EXPECT_EQ(Record(index).problemCode, Code(index));
        EXPECT_EQ(Record(index).problemType, index);
        EXPECT_EQ(RecordBytes(index).substr(6), std::string(30, '\xA5'));
    }
}

TEST_F(ErrorDatabaseViewDetailsTest, LoadingTouchesOnlyTheCountsOfTheHeader)
{
    std::memset(static_cast<void*>(&Header()), 0x5A, sizeof(SStatusHeader));
    m_owner.LoadErrors(m_database);
    EXPECT_EQ(Header().count, 4);
    EXPECT_EQ(Bytes().substr(0, 4), std::string(4, '\x5A'));
    EXPECT_EQ(Bytes().substr(12, 20), std::string(20, '\x5A'));
}

TEST_F(ErrorDatabaseViewDetailsTest, LoadingFollowsTheOrderOfTheFilesNotOfTheIdentifiers)
{
    const Support::CFreshDirectory directory;
    Support::CConfigurationBuilder()
        .Leaf("System:GPS:No Data:3")
        .Leaf("System:GPS:No Data:1")
        .Leaf("GPS:GPS:No Data:2")
        .Leaf("System:GPS:No Data:3")
        .WriteTo(directory.Prefix());
    m_owner.LoadErrors(CErrorDatabase(directory.Prefix()));
    std::string shown;
    for (int index = 0; index < Header().count; ++index)
        shown +=
            std::to_string(Record(index).problemCode) + ":" + std::to_string(Record(index).problemType) + " ";
    EXPECT_EQ(shown, "658459:3 658459:1 68635:2 658459:3 ");
}

TEST_F(ErrorDatabaseViewDetailsTest, LoadingFewerErrorsLeavesTheRecordsBehindThem)
{
    const std::string third = RecordBytes(2) + RecordBytes(3);
    const Support::CFreshDirectory directory;
    m_owner.LoadErrors(CErrorDatabase(NumberedErrors::Written(directory.Prefix(), 2)));
    EXPECT_EQ(Header().count, 2);
    EXPECT_EQ(RecordBytes(2) + RecordBytes(3), third);
}

TEST_F(ErrorDatabaseViewDetailsTest, LoadingNoErrorsMakesTheCountZero)
{
    EXPECT_TRUE(m_owner.LoadErrors(CErrorDatabase("no such directory/")));
    EXPECT_EQ(Header().count, 0);
}

TEST_F(ErrorDatabaseViewDetailsTest, AFailureModeThatIsNotKnownIsLoadedAs21)
{
    const Support::CFreshDirectory directory;
    Support::CConfigurationBuilder().Leaf("System:GPS:No Data:99").WriteTo(directory.Prefix());
    m_owner.LoadErrors(CErrorDatabase(directory.Prefix()));
    EXPECT_EQ(Record(0).problemType, 21);
}

class ErrorDatabaseViewCapacityTest : public Support::SharedTableTest, public testing::WithParamInterface<int>
{
};

TEST_P(ErrorDatabaseViewCapacityTest, AtMost400ErrorsAreLoadedAndTheRestIsCountedInAWarning)
{
    const int errors = GetParam();
    const CErrorDatabase database(NumberedErrors::Written(m_directory.Prefix(), errors));
    CErrorDatabaseView owner(true, eViewOwner);
    bool loaded = false;
    const std::string warning = WarnedBy([&] { loaded = owner.LoadErrors(database); });
    EXPECT_TRUE(loaded);
    const auto& table = *reinterpret_cast<const SStatusTable*>(m_directory.Table());
    const int written = std::min(errors, 400);
    EXPECT_EQ(table.header.count, written);
    EXPECT_EQ(table.records[written - 1].problemCode, NumberedErrors::Code(written - 1));
    EXPECT_EQ(table.records[written - 1].problemType, NumberedErrors::Type(written - 1));
    if (errors <= 400)
        EXPECT_EQ(warning, "");
    else
        EXPECT_NE(warning.find(std::to_string(errors - 400)), std::string::npos) << warning;
    // The segment's last page is longer than the table, so a record too many would show.
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(m_directory.Table()) + 14432, 36),
              std::string(36, '\0'));
}

INSTANTIATE_TEST_SUITE_P(Errors, ErrorDatabaseViewCapacityTest, testing::Values(1, 399, 400, 401, 437));

} // namespace
