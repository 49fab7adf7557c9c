#include "CtlFixture.h"

#include <gtest/gtest.h>

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <ctime>

using namespace Support;

namespace
{
const char* const kDisplays[] = {"list", "history", "active", "watch"};

class OwnerStates : public CtlTest
{
protected:
    void ExpectAllEnd(int status, const std::string& message) const
    {
        for (const char* const command : kDisplays)
        {
            const SFinished finished = Ctl({command});
            EXPECT_EQ(finished.status, status) << command;
            EXPECT_EQ(finished.output, "") << command;
            EXPECT_EQ(WithoutTime(finished.errors), "faultkeeperctl: " + message + "\n") << command;
        }
        const SFinished finished = Ctl({"status"});
        EXPECT_EQ(finished.status, status);
        EXPECT_EQ(WithoutTime(finished.errors), "faultkeeperctl: " + message + "\n");
    }

    /// The text with the word TIME for what follows "last seen ".
    static std::string WithoutTime(const std::string& text)
    {
        const std::string before = "last seen ";
        const std::size_t at = text.find(before);
        return at == std::string::npos ? text : text.substr(0, at + before.size()) + "TIME\n";
    }

    Json StatusDocument(int status) const
    {
        const SFinished finished = Ctl({"status", "--json"});
        EXPECT_EQ(finished.status, status);
        return Json::parse(finished.output);
    }
};
} // namespace

TEST_F(OwnerStates, DisplaysSayThatThereIsNoTableAndMakeNone)
{
    ExpectAllEnd(3, "no owner: there is no table in " + m_directory.Path());
    EXPECT_EQ(shmget(m_directory.Key(), 0, 0), -1);
    EXPECT_EQ(semget(m_directory.Key(), 0, 0), -1);
    const Json document = StatusDocument(3);
    EXPECT_EQ(KeysOf(document), "runDirectory key state owner ready message");
    EXPECT_EQ(document["state"], "absent");
    EXPECT_EQ(document["owner"], false);
}

TEST_F(OwnerStates, DisplaysTellATableThatItsOwnerHasLeftBehind)
{
    CChildProcess owner(
        [this]
        {
            StartOwner();
            return 0;
        });
    ASSERT_EQ(owner.Wait(), 0);
    ExpectAllEnd(3, "no owner: the table in " + m_directory.Path() +
                        " is left over from an owner that has ended, last seen TIME");
    const Json document = StatusDocument(3);
    EXPECT_EQ(document["state"], "ownerGone");
    EXPECT_EQ(KeysOf(document), "runDirectory key state owner ready message lastSeenTime lastSeenSeconds");
    EXPECT_LE(document["lastSeenSeconds"], std::time(nullptr));
    EXPECT_GT(document["lastSeenSeconds"], std::time(nullptr) - 3600);
}

TEST_F(OwnerStates, DisplaysTellATableThatIsNotReady)
{
    StartOwner();
    ASSERT_TRUE(Owner().FaultkeeperReady(false));
    ExpectAllEnd(3,
                 "the table in " + m_directory.Path() + " is not ready: its owner is starting or stopping");
    const Json document = StatusDocument(3);
    EXPECT_EQ(document["state"], "notReady");
    EXPECT_EQ(document["owner"], true);
    EXPECT_EQ(document["ready"], false);
    EXPECT_EQ(document["records"], 5);
}

TEST_F(OwnerStates, DisplaysNameTheProcessThatDoesNotLetGoOfTheLock)
{
    StartOwner();
    ASSERT_TRUE(Owner().GetLock(false));
    ExpectAllEnd(1, "the table in " + m_directory.Path() + " is locked by process " +
                        std::to_string(getpid()) + ", which does not let go");
    EXPECT_TRUE(Owner().ReleaseLock());
}

TEST_F(OwnerStates, DisplaysWaitForALockThatIsBusyForAMoment)
{
    StartOwner();
    Raise(kSound);
    ASSERT_TRUE(Owner().GetLock(false));
    const std::unique_ptr<CProgram> list = Start({"list", "--json"});
    usleep(50000); // long enough for it to have met the lock, most of the time; the result is the same if not
    ASSERT_TRUE(Owner().ReleaseLock());
    EXPECT_EQ(list->Wait(), 0);
    EXPECT_EQ(list->Errors(), "");
    EXPECT_EQ(Json::parse(list->Output())["trees"].size(), 1U);
}

TEST_F(OwnerStates, DisplaysRefuseSharedMemoryThatIsNoTable)
{
    ASSERT_NE(shmget(m_directory.Key(), 100, IPC_CREAT | 0600), -1);
    ExpectAllEnd(1, "the shared memory under the key of " + m_directory.Path() + " is not a table of faults");
    EXPECT_TRUE(StatusDocument(1)["owner"].is_null()); // there may be one that uses the memory otherwise
    EXPECT_NE(Ctl({"status"}).output.find("    Owner      unknown\n"), std::string::npos);
}

TEST_F(OwnerStates, ARunDirectoryThatIsNotThereHasNoOwner)
{
    const SFinished finished = Bare({"--run-dir", m_directory.File("none"), "status"});
    EXPECT_EQ(finished.status, 3);
    EXPECT_EQ(finished.errors, "faultkeeperctl: no owner: cannot enter " + m_directory.File("none") +
                                   ": No such file or directory\n");
}

TEST_F(OwnerStates, TheEnvironmentNamesConfigurationAndRunDirectory)
{
    StartOwner();
    const CVariable configuration("FAULTKEEPER_CONFIG", Configuration());
    EXPECT_EQ(Bare({"--run-dir", ".", "list"}).output, "No active faults.\n");
    const CVariable runDirectory("FAULTKEEPER_RUN_DIR", m_directory.Path());
    const CWorkingDirectory elsewhere("/");
    EXPECT_EQ(Bare({"list"}).output, "No active faults.\n");
}

TEST_F(OwnerStates, PathsAreMeantFromWhereTheProgramWasStarted)
{
    StartOwner();
    const CWorkingDirectory elsewhere(Configuration());
    EXPECT_EQ(Bare({"--run-dir", m_directory.Path(), "--config", ".", "list"}).output, "No active faults.\n");
}
