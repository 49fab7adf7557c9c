#include "faultkeeperd/owner/Owner.h"

#include "RestoredOwnerFixture.h"

#include "support/CapturedOutput.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <gtest/gtest.h>

using namespace Support;
using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{

void ExpectSame(const SErrorEntry& left, const SErrorEntry& right)
{
    EXPECT_EQ(left.flags, right.flags);
    EXPECT_EQ(left.counter1, right.counter1);
    EXPECT_EQ(left.counter2, right.counter2);
    EXPECT_EQ(left.raisedTime, right.raisedTime);
    EXPECT_EQ(left.clearedTime, right.clearedTime);
}

} // namespace

TEST_F(RestoredOwner, HasTheSameTableToTheNanosecond)
{
    Report(kLinkSensor, true);
    Report(kLinkSensor, false);
    Report(kDataSensor, true);
    const SStatusTable before = Table();
    Start("boot");
    const SStatusTable after = Table();
    EXPECT_EQ(after.header.ready, 1U);
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    for (int i = 0; i < after.header.count; ++i)
        ExpectSame(before.records[i], after.records[i]);
}

TEST_F(RestoredOwner, CountsNothingAgainAndGoesOnCounting)
{
    Report(kDataSensor, true);
    Start("boot");
    EXPECT_TRUE(Active(kDataSensor));
    EXPECT_TRUE(Active(kPosition));
    Report(kDataSensor, true);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    Report(kDataSensor, false);
    EXPECT_EQ(Raised(), std::vector<Id>()) << "parents follow as if nothing had happened";
    Report(kDataSensor, true);
    EXPECT_EQ(Record(kDataSensor).counter1, 2);
    EXPECT_EQ(Record(kPosition).counter1, 2);
    EXPECT_EQ(Keeper().JournalLength(), 9u);
}

TEST_F(RestoredOwner, GivesTimesThatDisplaysTakeForNew)
{
    Report(kDataSensor, true);
    const Core::Time seen = Record(kPosition).raisedTime;
    Start("boot");
    Report(kDataSensor, false);
    EXPECT_GT(Record(kDataSensor).clearedTime, seen);
}

TEST_F(RestoredOwner, AfterARebootHasCountersAndTimesOnly)
{
    Report(kDataSensor, true);
    const SErrorEntry before = Record(kDataSensor);
    m_directory.RemoveTable(); // it does not outlive the machine
    Start("next boot");
    EXPECT_EQ(Raised(), std::vector<Id>());
    EXPECT_FALSE(Active(kDataSensor));
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kDataSensor).raisedTime, before.raisedTime);
    Report(kDataSensor, true);
    EXPECT_EQ(Record(kDataSensor).counter1, 2);
}

TEST_F(RestoredOwner, WithoutAStoreStartsFromTheDeadOwnersTable)
{
    m_stored = false;
    Report(kDataSensor, true);
    Report(kDataSensor, false);
    Report(kLinkSensor, true);
    const SStatusTable before = Table();
    UseStore();
    std::remove(m_directory.File("state.db").c_str());
    std::remove(m_directory.File("state.db-wal").c_str());
    WarnedBy([&] { Start("boot"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    for (int i = 0; i < 4; ++i)
        ExpectSame(before.records[i], Table().records[i]);
}

TEST_F(RestoredOwner, StoresWhatIsNotInTheTableYet)
{
    m_owner->Publish(kStart);
    {
        const CBusyLock lock;
        m_owner->Apply(kDataSensor.first, kDataSensor.second, true, "a");
        m_owner->Publish(kStart);
        EXPECT_GT(m_owner->Publisher().Waiting(), 0U);
        Keeper().CommitAtOnce(CStateKeeper::Clock::now());
        EXPECT_EQ(Raised(), std::vector<Id>());
    }
    Start("boot");
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
}

TEST_F(RestoredOwner, LetsDisplaysSeeThatWhatWasNotStoredHasNotHappened)
{
    CErrorDatabase shown(m_directory.Prefix());
    CErrorDatabaseView display(false, eViewReader);
    const auto active = [&shown](const Id& id) { return shown.RetrieveError(id.first, id.second)->Active(); };
    Report(kLinkSensor, true);
    display.Synchronise(shown);
    m_owner->Apply(kLinkSensor.first, kLinkSensor.second, false, "a");
    m_owner->Apply(kDataSensor.first, kDataSensor.second, true, "a");
    m_owner->Publish(kStart);
    display.Synchronise(shown);
    EXPECT_FALSE(active(kLinkSensor));
    EXPECT_TRUE(active(kDataSensor));
    Start("boot"); // the display does not notice that the table was not ready for a moment
    display.Synchronise(shown);
    EXPECT_TRUE(active(kLinkSensor));
    EXPECT_FALSE(active(kDataSensor));
    EXPECT_TRUE(active(kPosition));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    EXPECT_EQ(Record(kDataSensor).counter1, 0);
}

TEST_F(RestoredOwner, KnowsWhatHappenedWhileNothingWasStored)
{
    Report(kLinkSensor, true);
    m_stored = false;
    WarnedBy([&] { Start("boot"); });
    for (int round = 0; round < 5; ++round)
    {
        Report(kLinkSensor, false);
        Report(kLinkSensor, true);
    }
    Report(kLinkSensor, false);
    Report(kDataSensor, true);
    m_stored = true;
    WarnedBy([&] { Start("boot"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 6);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    Start("boot");
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 6) << "from the store now";
}

TEST_F(RestoredOwner, ShowsNoTimeOfAnEarlierBootThatLiesInTheFuture)
{
    Report(kLinkSensor, true);
    m_owner.reset();
    SStoredError future;
    future.entry = Record(kLinkSensor);
    future.raises = 1;
    const Core::Time ahead =
        Core::Time::FromNanoseconds(future.entry.raisedTime.Nanoseconds() + 100000000000000000);
    future.entry.raisedTime = ahead;
    Keeper().Keep(future);
    Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    m_directory.RemoveTable();
    Start("next boot");
    EXPECT_EQ(Record(kLinkSensor).raisedTime, Core::Time());
    Start("next boot");
    EXPECT_EQ(Record(kLinkSensor).raisedTime, Core::Time());
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    Report(kDataSensor, true);
    EXPECT_LT(Record(kDataSensor).raisedTime, ahead);
    EXPECT_GT(Record(kDataSensor).raisedTime, Core::Time());
    Report(kLinkSensor, true);
    EXPECT_LT(Record(kLinkSensor).raisedTime, ahead);
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
}

TEST_F(RestoredOwner, HasTheParentsOfAnErrorWhoseRowWasDamaged)
{
    Report(kLinkSensor, true);
    m_owner.reset();
    UseStore(SStoreSettings());
    CSqlite(m_directory.File("state.db")).Run("UPDATE errors SET counter2 = 9 WHERE type = 9");
    WarnedBy([&] { Start("boot"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
    Report(kLinkSensor, false);
    EXPECT_EQ(Raised(), std::vector<Id>());
}

TEST_F(RestoredOwner, ClearsWhatFollowedFromAnErrorThatHasNothingToDoWithItAnyMore)
{
    Report(kLinkSensor, true);
    ASSERT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    CConfigurationBuilder builder;
    builder.Leaf("Positioning:GPS:Communications:9").Leaf("Positioning:Ublox:No Data:2");
    builder.Parent("Positioning:GPS:No Data:2", {"Positioning:Ublox:No Data:2"});
    builder.Parent("System:Position:No Data:2", {"Positioning:GPS:No Data:2"});
    builder.WriteTo(m_directory.Prefix());
    WarnedBy([&] { Start("boot", "d"); });
    EXPECT_EQ(Raised(), std::vector<Id>{kLinkSensor});
    EXPECT_EQ(Record(kPosition).counter1, 1);
    Keeper().CommitAtOnce(CStateKeeper::Clock::now());
    EXPECT_EQ(Keeper().JournalLength(), 5u) << "three raises, two clears";
}

TEST_F(RestoredOwner, KeepsWhatFollowsByAnotherConfigurationAsWell)
{
    Report(kLinkSensor, true);
    Report(kReceiver, false);
    Report(kReceiver, true); // by somebody who reports it: not for us to clear
    CConfigurationBuilder builder;
    builder.Leaf("Positioning:GPS:Communications:9").Leaf("Positioning:GPS:No Data:2");
    builder.Parent("System:Position:No Data:2", {"Positioning:GPS:Communications:9"});
    builder.WriteTo(m_directory.Prefix());
    WarnedBy([&] { Start("boot", "d"); });
    EXPECT_EQ(Raised(), (std::vector<Id>{kLinkSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kPosition).counter1, 2);
}
