#include "common/owner/OwnerClaim.h"

#include "common/owner/TableCalls.h"
#include "support/FreshDirectory.h"
#include "support/SharedTable.h"
#include "system/ChildProcess.h"

#include <Faultkeeper/ErrorDatabaseView.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

using Faultkeeper::Apps::COwnerClaim;
using Faultkeeper::Apps::OwnerClaimLeft;
using namespace Support;

namespace
{
class OwnerClaim : public testing::Test
{
protected:
    CFreshDirectory m_directory;
    CWorkingDirectory m_working{m_directory.Path()};
};

class OwnerClaimOfATable : public SharedTableTest
{
};
} // namespace

TEST_F(OwnerClaim, IsHadByOneAtATime)
{
    COwnerClaim second;
    EXPECT_FALSE(Faultkeeper::Apps::OwnerClaimMade());
    {
        COwnerClaim first;
        EXPECT_TRUE(first.Take());
        EXPECT_FALSE(second.Take());
    }
    EXPECT_TRUE(Faultkeeper::Apps::OwnerClaimMade()) << "it shows that there was one";
    COwnerClaim third;
    EXPECT_TRUE(third.Take());
}

TEST_F(OwnerClaim, EndsWithAProcessThatIsKilled)
{
    CGate taken;
    CGate never;
    CChildProcess owner(
        [&]
        {
            COwnerClaim claim;
            if (claim.Take())
                taken.Open();
            return never.Pass() ? 1 : 0;
        });
    ASSERT_TRUE(taken.Pass());
    COwnerClaim refused;
    EXPECT_FALSE(refused.Take());
    owner.Signal(SIGKILL);
    EXPECT_EQ(owner.Wait(), 128 + SIGKILL);
    COwnerClaim claim;
    EXPECT_TRUE(claim.Take());
}

TEST_F(OwnerClaim, LeavesAFileThatNobodyElseCanHold)
{
    {
        COwnerClaim claim;
        EXPECT_TRUE(claim.Take());
    }
    const std::filesystem::path file = m_directory.File("faultkeeper.owner");
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(*std::filesystem::directory_iterator(m_directory.Path()),
              std::filesystem::directory_entry(file));
}

TEST_F(OwnerClaim, CannotBeHeldThroughTheDirectory)
{
    const int directory = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(flock(directory, LOCK_SH | LOCK_NB), 0); // as any user can
    COwnerClaim claim;
    EXPECT_TRUE(claim.Take());
    close(directory);
}

TEST_F(OwnerClaimOfATable, StaysMarkedWhereASuccessorEndsBeforeItHasTakenOver)
{
    const Faultkeeper::CErrorDatabaseView table(true, Faultkeeper::eViewOwner);
    const int semaphore = Faultkeeper::Apps::FindSemaphore(m_directory.Key());
    {
        COwnerClaim killed;
        EXPECT_TRUE(killed.Take());
        killed.Mark();
        EXPECT_FALSE(OwnerClaimLeft(semaphore)) << "it runs";
    }
    EXPECT_TRUE(OwnerClaimLeft(semaphore));
    {
        COwnerClaim successor;
        EXPECT_TRUE(successor.Take()); // and a rule of the configuration is broken
    }
    EXPECT_TRUE(OwnerClaimLeft(semaphore));
    {
        COwnerClaim successor;
        EXPECT_TRUE(successor.Take());
        successor.Unmark();
    }
    EXPECT_FALSE(OwnerClaimLeft(semaphore));
}

TEST_F(OwnerClaim, NamesItsHolder)
{
    COwnerClaim first;
    EXPECT_TRUE(first.Take());
    COwnerClaim second;
    EXPECT_FALSE(second.Take());
    EXPECT_EQ(second.Holder(), getpid());
}

TEST_F(OwnerClaim, IsOfTheDirectoryWhereItsFileCannotBeHad)
{
    std::filesystem::create_directory(m_directory.File("faultkeeper.owner"));
    COwnerClaim first;
    EXPECT_TRUE(first.Take());
    COwnerClaim second;
    EXPECT_FALSE(second.Take());
    EXPECT_EQ(second.Holder(), 0);
    first.Mark();
    EXPECT_FALSE(OwnerClaimLeft(0));
}
