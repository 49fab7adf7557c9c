#include "CtlFixture.h"

#include <gtest/gtest.h>

#include <sys/sem.h>
#include <sys/shm.h>

using namespace Support;

namespace
{
class TableCommand : public CtlTest
{
protected:
    bool TableExists() const
    {
        return shmget(m_directory.Key(), 0, 0) != -1 || semget(m_directory.Key(), 0, 0) != -1;
    }

    void LeaveTableBehind()
    {
        CChildProcess owner(
            [this]
            {
                StartOwner();
                return 0;
            });
        ASSERT_EQ(owner.Wait(), 0);
        ASSERT_TRUE(TableExists());
    }
};
} // namespace

TEST_F(TableCommand, IsRefusedWhileAnOwnerRuns)
{
    StartOwner();
    const SFinished finished = Ctl({"table", "--remove"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors, "faultkeeperctl: not removed: an owner runs in " + m_directory.Path() + "\n");
    EXPECT_TRUE(Owner().FaultkeeperReady());
}

TEST_F(TableCommand, IsRefusedWhileTheOwnerIsNotReadyOrTheLockIsKept)
{
    StartOwner();
    ASSERT_TRUE(Owner().FaultkeeperReady(false));
    EXPECT_EQ(Ctl({"table", "--remove"}).status, 1);
    ASSERT_TRUE(Owner().GetLock(false));
    EXPECT_EQ(Ctl({"table", "--remove"}).status, 1);
    ASSERT_TRUE(Owner().ReleaseLock());
    EXPECT_TRUE(TableExists());
}

TEST_F(TableCommand, RemovesWhatAnOwnerHasLeftBehind)
{
    LeaveTableBehind();
    const SFinished finished = Ctl({"table", "--remove"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "removed the table in " + m_directory.Path() + "\n");
    EXPECT_EQ(finished.errors, "");
    EXPECT_FALSE(TableExists());
}

TEST_F(TableCommand, RemovesALockThatStandsAlone)
{
    LeaveTableBehind();
    ASSERT_EQ(shmctl(shmget(m_directory.Key(), 0, 0), IPC_RMID, nullptr), 0);
    EXPECT_EQ(Ctl({"table", "--remove"}).status, 0);
    EXPECT_FALSE(TableExists());
}

TEST_F(TableCommand, SaysSoIfThereIsNone)
{
    const SFinished finished = Ctl({"table", "--remove"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "there is no table in " + m_directory.Path() + "\n");
}

TEST_F(TableCommand, LeavesSharedMemoryThatIsNoTable)
{
    ASSERT_NE(shmget(m_directory.Key(), 100, IPC_CREAT | 0600), -1);
    EXPECT_EQ(Ctl({"table", "--remove"}).status, 1);
    EXPECT_TRUE(TableExists());
}

TEST_F(TableCommand, GivesADocument)
{
    LeaveTableBehind();
    const Json document = Document({"table", "--remove"});
    EXPECT_EQ(KeysOf(document), "runDirectory removed message");
    EXPECT_EQ(document["removed"], true);
    EXPECT_EQ(Document({"table", "--remove"})["removed"], false);
}

TEST_F(TableCommand, DoesNothingUnlessToldToRemove)
{
    LeaveTableBehind();
    EXPECT_EQ(Ctl({"table"}).status, 2);
    EXPECT_TRUE(TableExists());
}
