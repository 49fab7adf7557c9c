#include "SystemFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

using namespace Support;
using namespace Faultkeeper;
using testing::HasSubstr;

namespace
{

class Restart : public SystemTest
{
protected:
    /// The records, whatever else is in the table.
    std::vector<SErrorEntry> Records()
    {
        const SStatusTable table = Table();
        return std::vector<SErrorEntry>(table.records, table.records + table.header.count);
    }

    static void ExpectSame(const std::vector<SErrorEntry>& left, const std::vector<SErrorEntry>& right)
    {
        ASSERT_EQ(left.size(), right.size());
        for (std::size_t i = 0; i < left.size(); ++i)
        {
            EXPECT_EQ(left[i].flags, right[i].flags) << i;
            EXPECT_EQ(left[i].counter1, right[i].counter1) << i;
            EXPECT_EQ(left[i].counter2, right[i].counter2) << i;
            EXPECT_EQ(left[i].raisedTime, right[i].raisedTime) << i;
            EXPECT_EQ(left[i].clearedTime, right[i].clearedTime) << i;
        }
    }
};

} // namespace

TEST_F(Restart, AfterAKillLeavesNoTraceInTheTable)
{
    const auto first = StartOwner();
    Report("confirm raise 0x40C09 9 clear 0x40C09 9 raise 0x4281B 2");
    Kill(*first);
    const std::vector<SErrorEntry> before = Records();
    EXPECT_EQ(before.at(0).counter1, 1);
    const auto second = StartOwner();
    ExpectSame(before, Records());
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(Restart, AfterATerminationLeavesNoTraceInTheTable)
{
    const auto first = StartOwner();
    Report("raise 0x40C09 9 clear 0x40C09 9 raise 0x4281B 2");
    ASSERT_TRUE(WaitUntil([&] { return Record(kDataSensor).counter1 == 1; }));
    first->Process().Signal(SIGTERM);
    ASSERT_EQ(first->Wait(), 0);
    const std::vector<SErrorEntry> before = Records();
    const auto second = StartOwner();
    ExpectSame(before, Records());
}

TEST_F(Restart, WithoutAStoreTakesWhatTheDeadOwnersTableSays)
{
    const auto first = StartOwner({"--state", "none"});
    Report("confirm raise 0x40C09 9 clear 0x40C09 9 raise 0x4281B 2");
    ASSERT_TRUE(WaitUntil([&] { return Record(kDataSensor).counter1 == 1; }));
    Kill(*first);
    const std::vector<SErrorEntry> before = Records();
    const auto second = StartOwner({"--state", "none"});
    EXPECT_THAT(second->Errors(), HasSubstr("starting from the table of a former owner"));
    ExpectSame(before, Records());
    Report("confirm clear 0x4281B 2");
    EXPECT_TRUE(WaitUntil([&] { return Record(kPosition).flags == 0; }));
}

TEST_F(Restart, IsNotNoticedByADisplayThatIsThereAllAlong)
{
    CDisplay display(Configuration());
    auto owner = StartOwner();
    Report("confirm raise 0x40C09 9");
    ASSERT_TRUE(display.ShowsInTime({kLinkSensor, kReceiver, kPosition}));
    Kill(*owner);
    owner = StartOwner();
    EXPECT_EQ(display.Active(), (Ids{kLinkSensor, kReceiver, kPosition}));
    Report("confirm clear 0x40C09 9");
    EXPECT_TRUE(display.ShowsInTime({}));
}

TEST_F(Restart, LetsADisplaySeeWhatWasClearedWhileItLookedAway)
{
    CDisplay display(Configuration());
    auto owner = StartOwner();
    Report("confirm raise 0x40C09 9");
    ASSERT_TRUE(display.ShowsInTime({kLinkSensor, kReceiver, kPosition}));
    Report("confirm clear 0x40C09 9 raise 0x4281B 2");
    Kill(*owner);
    owner = StartOwner();
    EXPECT_TRUE(display.ShowsInTime({kDataSensor, kReceiver, kPosition}));
}

TEST_F(Restart, CostsALivingReporterNothing)
{
    auto owner = StartOwner();
    const auto reporter =
        StartReporter("confirm repeat 20000 raise 0x40C09 9 clear 0x40C09 9 then raise 0x4281B 2");
    for (int kill = 1; kill <= 5; ++kill)
    {
        ASSERT_TRUE(WaitUntil([&] { return Record(kLinkSensor).counter1 > kill * 100; }));
        Kill(*owner);
        owner = StartOwner();
    }
    EXPECT_EQ(reporter->Wait(), 0) << reporter->Errors();
    EXPECT_TRUE(WaitUntil([&] { return Record(kPosition).flags == kRaisedFlag; }));
    EXPECT_EQ(Record(kLinkSensor).counter1, 20000);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kPosition).counter1, 20001);
}

TEST_F(Restart, GoesWellWithTheStoreOutsideOfTheRunDirectory)
{
    const CFreshDirectory elsewhere;
    const std::vector<std::string> state = {"--state", elsewhere.File("state.db"), "--sync"};
    const auto first = StartOwner(state);
    Report("confirm raise 0x4281B 2");
    Kill(*first);
    m_directory.RemoveTable();
    const auto second = StartOwner(state);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
}
