#include "faultkeeperd/owner/OwnerClaim.h"

#include "support/FreshDirectory.h"
#include "system/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

using Faultkeeper::Apps::COwnerClaim;
using namespace Support;

namespace
{
class OwnerClaim : public testing::Test
{
protected:
    CFreshDirectory m_directory;
    CWorkingDirectory m_working{m_directory.Path()};
};
} // namespace

TEST_F(OwnerClaim, IsHadByOneAtATime)
{
    COwnerClaim second;
    {
        COwnerClaim first;
        EXPECT_TRUE(first.Take());
        EXPECT_FALSE(second.Take());
    }
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

TEST_F(OwnerClaim, LeavesNothingInTheDirectory)
{
    COwnerClaim claim;
    EXPECT_TRUE(claim.Take());
    EXPECT_TRUE(std::filesystem::is_empty(m_directory.Path()));
}
