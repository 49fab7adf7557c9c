#include "faultkeeperd/store/FormerTable.h"

#include "common/ConfigurationFingerprint.h"
#include "common/owner/TableCalls.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"
#include "system/ChildProcess.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <gtest/gtest.h>

#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <limits>
#include <memory>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{

class FormerTable : public Support::SharedTableTest
{
protected:
    FormerTable()
    {
        Support::CConfigurationBuilder()
            .Leaf("Positioning:GPS:No Data:1")
            .Leaf("Positioning:GPS:No Data:2")
            .WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    static SErrorEntry Record(int type)
    {
        SErrorEntry record;
        record.problemCode = 0x40C1B;
        record.problemType = static_cast<std::int16_t>(type);
        record.flags = kRaisedFlag;
        record.counter1 = 5;
        record.raisedTime = Core::Time(1000);
        return record;
    }

    /// What a dead owner has left, as far as it is of use.
    std::vector<SErrorEntry> Records()
    {
        const std::unique_ptr<SStatusTable> table = Faultkeeper::Apps::FormerTable();
        return table == nullptr ? std::vector<SErrorEntry>()
                                : UsableRecords(*table, *m_database, LatestPossible());
    }

    std::size_t Usable(const SErrorEntry& record)
    {
        const auto table = std::make_unique<SStatusTable>();
        table->header.count = 1;
        table->records[0] = record;
        return UsableRecords(*table, *m_database, LatestPossible()).size();
    }

    std::unique_ptr<CErrorDatabase> m_database;
};

TEST_F(FormerTable, WithoutATableThereIsNothing)
{
    EXPECT_TRUE(Records().empty());
}

TEST_F(FormerTable, WhatAnOwnerHasLeftIsRead)
{
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(*m_database);
        owner.FaultkeeperReady(true);
        owner.RaiseError(0x40C1B, 2);
    }
    const std::vector<SErrorEntry> records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].flags, 0);
    EXPECT_EQ(records[1].flags, kRaisedFlag);
    EXPECT_EQ(records[1].counter1, 1);
}

TEST_F(FormerTable, ARecordThatMakesSenseIsUsed)
{
    EXPECT_EQ(Usable(Record(1)), 1u);
}

TEST_F(FormerTable, ARecordThatMakesNoSenseIsNot)
{
    SErrorEntry record = Record(7);
    EXPECT_EQ(Usable(record), 0u) << "not of this configuration";
    record = Record(1);
    record.flags = 3;
    EXPECT_EQ(Usable(record), 0u) << "a flag that does not exist";
    record = Record(1);
    record.raisedTime = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + 90000000000000);
    EXPECT_EQ(Usable(record), 0u) << "raised tomorrow";
    record = Record(1);
    record.clearedTime = Core::Time(-1);
    EXPECT_EQ(Usable(record), 0u) << "cleared before time began";
}

TEST_F(FormerTable, AClockThatWasSetBackSpoilsNoRecord)
{
    SErrorEntry record = Record(1);
    record.raisedTime = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + 3600000000000);
    EXPECT_EQ(Usable(record), 1u);
}

TEST_F(FormerTable, OfAConfirmedTableAClockThatWasYearsAheadSpoilsNoRecord)
{
    SErrorEntry record = Record(1);
    record.raisedTime = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + 600000000000000000);
    EXPECT_EQ(Usable(record), 0u) << "nineteen years, in a table that nobody has confirmed";
    const CErrorDatabaseView owner(true, eViewOwner);
    ConfirmTable();
    EXPECT_EQ(Usable(record), 1u);
    constexpr std::int64_t kAlmostTwentyYears = 631000000000000000;
    record.raisedTime = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + kAlmostTwentyYears);
    EXPECT_EQ(Usable(record), 1u);
    constexpr std::int64_t kMoreThanTwentyYears = 632000000000000000;
    record.raisedTime = Core::Time::FromNanoseconds(Core::Time::Now().Nanoseconds() + kMoreThanTwentyYears);
    EXPECT_EQ(Usable(record), 0u);
}

TEST_F(FormerTable, ThePossibleTimesEndWhereTimesDo)
{
    constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kYear = 31557600000000000;
    EXPECT_LT(LatestPossible(Core::Time::FromNanoseconds(kLatest - kYear)).Nanoseconds(), kLatest);
    const CErrorDatabaseView owner(true, eViewOwner);
    ConfirmTable();
    EXPECT_EQ(LatestPossible(Core::Time::FromNanoseconds(kLatest - kYear)).Nanoseconds(), kLatest);
    EXPECT_EQ(LatestPossible(Core::Time::FromNanoseconds(kLatest)).Nanoseconds(), kLatest);
}

TEST_F(FormerTable, ASetOfSeveralSemaphoresIsAnotherPrograms)
{
    EXPECT_FALSE(ForeignLock()) << "there is none";
    const int set = semget(m_directory.Key(), 3, IPC_CREAT | IPC_EXCL | 0600);
    EXPECT_TRUE(ForeignLock());
    semctl(set, 0, IPC_RMID);
    const CErrorDatabaseView owner(true, eViewOwner);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
    EXPECT_FALSE(ForeignLock());
}

TEST_F(FormerTable, OfADirectoryThatHadTheSameNumberIsNotRead)
{
    {
        CErrorDatabaseView owner(true, eViewOwner);
        owner.LoadErrors(*m_database);
    }
    ASSERT_EQ(Records().size(), 2u);
    // Some file systems give a directory that is made anew the number of the one before, and some do not.
    std::int64_t birth = 0;
    ASSERT_TRUE(DirectoryBirth(birth));
    SSegmentFacts facts;
    ASSERT_TRUE(ReadSegmentFacts(FindSegment(m_directory.Key()), facts));
    EXPECT_GE(facts.changed, birth);
    const int segment = FindSegment(m_directory.Key());
    EXPECT_FALSE(MadeBefore(segment, facts, facts.changed));
    EXPECT_TRUE(MadeBefore(segment, facts, facts.changed + 1));
}

TEST_F(FormerTable, CountsAsItsOwnersOnceConfirmed)
{
    const CErrorDatabaseView owner(true, eViewOwner);
    const int segment = FindSegment(m_directory.Key());
    SSegmentFacts before;
    ASSERT_TRUE(ReadSegmentFacts(segment, before));
    SSegmentFacts after;
    const auto later = [&]
    {
        ConfirmTable();
        return ReadSegmentFacts(segment, after) && after.changed > before.changed;
    };
    EXPECT_TRUE(Support::WaitUntil(later));
    EXPECT_EQ(after.user, before.user);
    EXPECT_EQ(after.mode, before.mode);
}

TEST_F(FormerTable, IsTheDirectorysHoweverTheClockIsSetAfterItWasConfirmed)
{
    const CErrorDatabaseView owner(true, eViewOwner);
    const int segment = FindSegment(m_directory.Key());
    SSegmentFacts facts;
    ASSERT_TRUE(ReadSegmentFacts(segment, facts));
    EXPECT_TRUE(MadeBefore(segment, facts, facts.changed + 1000000));
    ConfirmTable();
    EXPECT_FALSE(MadeBefore(segment, facts, facts.changed + 1000000));
    EXPECT_TRUE(MadeBefore(segment + 1, facts, facts.changed + 1000000)) << "one that was made after it";
}

TEST_F(FormerTable, IsConfirmedWithoutWaitingForAPipe)
{
    const CErrorDatabaseView owner(true, eViewOwner);
    ASSERT_EQ(mkfifo(m_directory.File("faultkeeper.segment").c_str(), 0600), 0);
    ConfirmTable();
    SSegmentFacts facts;
    ASSERT_TRUE(ReadSegmentFacts(FindSegment(m_directory.Key()), facts));
    EXPECT_TRUE(MadeBefore(FindSegment(m_directory.Key()), facts, facts.changed + 2));
}

TEST_F(FormerTable, OfAnotherSizeIsAnotherProgramsAndNotRead)
{
    EXPECT_FALSE(ForeignSegment()) << "there is none";
    const int segment = shmget(m_directory.Key(), 20000, IPC_CREAT | IPC_EXCL | 0600);
    ASSERT_NE(segment, -1);
    EXPECT_TRUE(ForeignSegment());
    EXPECT_EQ(Faultkeeper::Apps::FormerTable(), nullptr);
    shmctl(segment, IPC_RMID, nullptr);
    const CErrorDatabaseView owner(true, eViewOwner);
    EXPECT_FALSE(ForeignSegment());
}

TEST_F(FormerTable, ACountOutOfRangeIsBroughtIntoIt)
{
    const auto table = std::make_unique<SStatusTable>();
    table->header.count = 1000000;
    table->records[399] = Record(2);
    table->records[398] = Record(2);
    EXPECT_EQ(UsableRecords(*table, *m_database, LatestPossible()).size(), 1u) << "the first of two";
    table->header.count = -5;
    EXPECT_EQ(UsableRecords(*table, *m_database, LatestPossible()).size(), 0u);
}

TEST_F(FormerTable, TheFingerprintTellsConfigurationsApart)
{
    const std::string one = ConfigurationFingerprint(*m_database);
    EXPECT_EQ(one.size(), 16u);
    EXPECT_EQ(ConfigurationFingerprint(CErrorDatabase(m_directory.Prefix())), one);
    Support::CConfigurationBuilder()
        .Leaf("Positioning:GPS:No Data:2")
        .Leaf("Positioning:GPS:No Data:1")
        .WriteTo(m_directory.Prefix());
    EXPECT_NE(ConfigurationFingerprint(CErrorDatabase(m_directory.Prefix())), one);
}

} // namespace
