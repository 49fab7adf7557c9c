#include "faultkeeperctl/PrivateTable.h"

#include "common/owner/TableCalls.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

#include <filesystem>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
class PrivateTableTest : public Support::SharedTableTest
{
protected:
    PrivateTableTest()
    {
        Support::CConfigurationBuilder()
            .Leaf("Positioning:GPS:No Data:2")
            .Leaf("Audio:None:Cannot Open:11")
            .WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    std::unique_ptr<CErrorDatabase> m_database;
};

bool Blocked(int number)
{
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    return sigismember(&blocked, number) == 1;
}
} // namespace

TEST_F(PrivateTableTest, HoldsTheErrorsInTheOrderOfTheConfiguration)
{
    CPrivateTable table(*m_database);
    int code = 0;
    int type = 0;
    EXPECT_EQ(table.View().RetrieveErrorFromIndex(1, code, type), 1);
    EXPECT_EQ(code, 0x81F06);
    EXPECT_EQ(type, 11);
    EXPECT_EQ(table.View().RetrieveErrorFromIndex(2, code, type), -1);
}

TEST_F(PrivateTableTest, LeavesNothingBehind)
{
    std::string directory;
    key_t key = -1;
    {
        const CPrivateTable table(*m_database);
        directory = std::filesystem::current_path().string();
        ASSERT_TRUE(TableKey(key));
        EXPECT_NE(FindSemaphore(key), -1);
        EXPECT_NE(directory, m_directory.Path());
    }
    EXPECT_FALSE(std::filesystem::exists(directory));
    EXPECT_EQ(FindSegment(key), -1);
    EXPECT_EQ(FindSemaphore(key), -1);
    EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::current_path(), m_directory.Path()));
}

TEST_F(PrivateTableTest, TouchesNoTableOfTheRunDirectory)
{
    const CPrivateTable table(*m_database);
    EXPECT_EQ(FindSegment(m_directory.Key()), -1);
    EXPECT_EQ(FindSemaphore(m_directory.Key()), -1);
}

TEST_F(PrivateTableTest, KeepsSignalsThatWouldEndTheProcessWaiting)
{
    {
        const CPrivateTable table(*m_database);
        EXPECT_TRUE(Blocked(SIGINT));
        EXPECT_TRUE(Blocked(SIGTERM));
        EXPECT_TRUE(Blocked(SIGPIPE));
    }
    EXPECT_FALSE(Blocked(SIGINT));
    EXPECT_FALSE(Blocked(SIGTERM));
    EXPECT_FALSE(Blocked(SIGPIPE));
}
