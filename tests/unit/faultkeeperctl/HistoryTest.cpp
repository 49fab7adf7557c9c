#include "faultkeeperctl/History.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
SErrorEntry Record(int code, int type, std::int64_t raisedNanoseconds)
{
    SErrorEntry record;
    record.problemCode = code;
    record.problemType = static_cast<std::int16_t>(type);
    record.counter1 = 1;
    record.counter2 = 1;
    record.raisedTime = Core::Time::FromNanoseconds(raisedNanoseconds);
    return record;
}

class HistoryTest : public testing::Test
{
protected:
    HistoryTest()
    {
        Support::CConfigurationBuilder().Leaf("Positioning:GPS:No Data:2").WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    std::vector<std::string> Names(const std::vector<SErrorEntry>& records) const
    {
        std::vector<std::string> names;
        for (const SHistoryEntry& entry : History(records, *m_database))
            names.push_back(entry.name);
        return names;
    }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
};
} // namespace

TEST_F(HistoryTest, ShowsTheNewestRaiseFirstAlsoWithinASecond)
{
    EXPECT_EQ(Names({Record(0x40C1B, 1, 5000000001), Record(0x40C1B, 2, 7000000000),
                     Record(0x40C1B, 3, 5000000002)}),
              (std::vector<std::string>{"Positioning:GPS:No Data:2", "Positioning:GPS:No Data:3",
                                        "Positioning:GPS:No Data:1"}));
}

TEST_F(HistoryTest, OrdersRaisesOfOneMomentByIdentifier)
{
    EXPECT_EQ(Names({Record(0x40C1B, 3, 5), Record(0x40C1B, 2, 5), Record(0x30C1B, 9, 5)}),
              (std::vector<std::string>{"Navigation And Control:GPS:No Data:9", "Positioning:GPS:No Data:2",
                                        "Positioning:GPS:No Data:3"}));
}

TEST_F(HistoryTest, LeavesOutWhatWasNeverRaised)
{
    SErrorEntry never = Record(0x40C1B, 2, 0);
    never.counter2 = 0;
    EXPECT_EQ(Names({never}), std::vector<std::string>());
}

TEST_F(HistoryTest, TakesTextsFromTheConfiguration)
{
    SErrorEntry record = Record(0x40C1B, 2, 5);
    record.flags = kRaisedFlag;
    const std::vector<SHistoryEntry> entries = History({record}, *m_database);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_TRUE(entries[0].raised);
    EXPECT_TRUE(entries[0].known);
    EXPECT_EQ(entries[0].title, "title of Positioning:GPS:No Data:2");
    EXPECT_EQ(entries[0].problem, "problem of Positioning:GPS:No Data:2");
    EXPECT_EQ(entries[0].solution, "solution of Positioning:GPS:No Data:2");
}

TEST_F(HistoryTest, KeepsErrorsThatTheConfigurationDoesNotDefine)
{
    const std::vector<SHistoryEntry> entries = History({Record(0x40C1B, 3, 5)}, *m_database);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_FALSE(entries[0].raised);
    EXPECT_FALSE(entries[0].known);
    EXPECT_EQ(entries[0].problem, "");
}
