#include "SystemFixture.h"

#include "support/FileSizeLimit.h"
#include "support/FreshDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <csignal>

using namespace Support;
using namespace Faultkeeper;
using testing::HasSubstr;

namespace
{

/// How often a text is in another one.
int CountOf(const std::string& text, const std::string& all)
{
    int count = 0;
    for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + 1))
        ++count;
    return count;
}

// Whatever the store does, faults are raised and displayed.
class StoreTrouble : public SystemTest
{
protected:
    /// Starts an owner without root's privileges over others' memory, and sees that it stops and says that
    /// this may not be "used", or "written".
    void ExpectRefused(const std::string& what, const std::string& done)
    {
        CChildProcess user(
            [&]
            {
                prctl(PR_CAPBSET_DROP, CAP_IPC_OWNER, 0, 0, 0); // what root may and others may not anyway
                const auto owner = RunOwner(
                    {"--config", Configuration(), "--run-dir", m_directory.Path(), "--state", "none"});
                const bool refused = owner->Wait() == 1;
                const bool told = owner->Errors() == "faultkeeperd: error: the " + what +
                                                         " under the key of " + m_directory.Path() +
                                                         " may not be " + done +
                                                         " by this user, and left as it is\n";
                return refused && told ? 0 : 1;
            });
        EXPECT_EQ(user.Wait(), 0);
    }
};

} // namespace

TEST_F(StoreTrouble, ADamagedStoreIsMovedAsideAndTheTableIsUsedInItsPlace)
{
    const auto first = StartOwner();
    Report("confirm raise 0x4281B 2");
    Kill(*first);
    const std::string store = m_directory.File("faultkeeper.db");
    WriteFile(store,
              "not a database at all, and longer than the head of one so that nobody takes it for empty");
    const auto second = StartOwner();
    EXPECT_THAT(second->Errors(), HasSubstr("error: the state store " + store + " is damaged"));
    EXPECT_THAT(ReadFile(store + ".damaged-1"), HasSubstr("not a database at all"));
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
}

TEST_F(StoreTrouble, AStoreThatCannotBeWrittenStopsNoReportAndIsUsedAsSoonAsItCan)
{
    const CFreshDirectory elsewhere;
    const std::string store = elsewhere.File("missing/state.db");
    auto owner = StartOwner({"--state", store});
    const std::string complaint = "faultkeeperd: error: the state store " + store + " cannot be used: ";
    EXPECT_THAT(owner->Errors(), HasSubstr(complaint));
    Report("confirm repeat 10 raise 0x40C09 9 clear 0x40C09 9 then raise 0x4281B 2");
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kDataSensor, kReceiver, kPosition}));
    ASSERT_EQ(mkdir(elsewhere.File("missing").c_str(), 0700), 0);
    Report("confirm clear 0x4281B 2");
    ASSERT_TRUE(owner->SaysInTime("info: the state store " + store + " works again\n"));
    EXPECT_EQ(CountOf(complaint, owner->Errors()), 1);

    Kill(*owner);
    m_directory.RemoveTable();
    owner = StartOwner({"--state", store});
    EXPECT_EQ(Record(kLinkSensor).counter1, 10);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
    EXPECT_EQ(Record(kDataSensor).flags, 0);
}

TEST_F(StoreTrouble, WhatCouldNotBeStoredComesBackFromTheTable)
{
    std::unique_ptr<CProgram> owner;
    {
        const CFileSizeLimit little(61440);
        owner = StartOwner();
    }
    Report("confirm repeat 1500 raise 0x40C09 9 clear 0x40C09 9 then raise 0x4281B 2");
    ASSERT_TRUE(owner->SaysInTime("cannot be used: ")) << "its log may not grow that far";
    Kill(*owner);
    owner = StartOwner();
    EXPECT_THAT(owner->Errors(), HasSubstr("info: the state store is behind"));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1500);
    EXPECT_EQ(Record(kLinkSensor).flags, 0);
    EXPECT_EQ(Record(kDataSensor).flags, kRaisedFlag);
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
    Kill(*owner);
    m_directory.RemoveTable();
    owner = StartOwner();
    EXPECT_EQ(Record(kLinkSensor).counter1, 1500) << "from the store";
    EXPECT_EQ(Record(kDataSensor).flags, kRaisedFlag);
}

TEST_F(StoreTrouble, WhatWasReportedWhileNothingCouldBeWrittenComesBackFromTheTable)
{
    auto owner = StartOwner();
    owner->Process().Signal(SIGTERM);
    ASSERT_EQ(owner->Wait(), 0);
    {
        const CFileSizeLimit nothing(0);
        owner = RunOwner({"--config", Configuration(), "--run-dir", m_directory.Path()});
        ASSERT_TRUE(WaitUntil([this] { return Table().header.ready == 1; }));
    }
    Report("confirm raise 0x4281B 2");
    Kill(*owner);
    owner = StartOwner();
    EXPECT_EQ(Record(kDataSensor).flags, kRaisedFlag);
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
}

TEST_F(StoreTrouble, APipeInPlaceOfAStoreIsNotWaitedFor)
{
    const std::string pipe = m_directory.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto owner = StartOwner({"--state", pipe});
    EXPECT_THAT(owner->Errors(), HasSubstr("cannot be used: it is not a regular file"));
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 0);
}

TEST_F(StoreTrouble, AnotherProgramsSharedMemoryIsLeftAsItIs)
{
    const int segment = shmget(m_directory.Key(), 20000, IPC_CREAT | IPC_EXCL | 0600);
    ASSERT_NE(segment, -1);
    auto* const bytes = static_cast<unsigned char*>(shmat(segment, nullptr, 0));
    bytes[0] = 77;
    const auto owner = RunOwner({"--config", Configuration(), "--run-dir", m_directory.Path()});
    EXPECT_EQ(owner->Wait(), 1);
    EXPECT_EQ(owner->Errors(), "faultkeeperd: error: the shared memory under the key of " +
                                   m_directory.Path() + " is not a table of faults, and left as it is\n");
    EXPECT_EQ(bytes[0], 77);
    shmdt(bytes);
}

TEST_F(StoreTrouble, AnotherProgramsSemaphoreIsLeftAsItIs)
{
    const auto first = StartOwner();
    Report("confirm raise 0x4281B 2");
    Kill(*first);
    semctl(m_directory.Semaphore(), 0, IPC_RMID);
    const int semaphore = semget(m_directory.Key(), 2, IPC_CREAT | IPC_EXCL | 0600);
    ASSERT_NE(semaphore, -1);
    struct sembuf more = {0, 7, 0};
    ASSERT_EQ(semop(semaphore, &more, 1), 0);
    const auto owner = RunOwner({"--config", Configuration(), "--run-dir", m_directory.Path()});
    EXPECT_EQ(owner->Wait(), 1);
    EXPECT_EQ(owner->Errors(), "faultkeeperd: error: the semaphore set under the key of " +
                                   m_directory.Path() +
                                   " is not the lock of a table of faults, and left as it is\n");
    EXPECT_EQ(m_directory.SemaphoreValue(), 7);
    EXPECT_EQ(Record(kDataSensor).flags, kRaisedFlag);
}

TEST_F(StoreTrouble, TheLockOfATableThatSomebodyHasRemovedServesTheNextOne)
{
    const auto first = StartOwner();
    Report("confirm raise 0x4281B 2");
    Kill(*first);
    ASSERT_EQ(shmctl(shmget(m_directory.Key(), 0, 0), IPC_RMID, nullptr), 0);
    const auto owner = StartOwner();
    EXPECT_TRUE(WaitUntil([&] { return m_directory.SemaphoreValue() == 1; }));
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kDataSensor, kReceiver, kPosition}));
}

TEST_F(StoreTrouble, AStoreThatAnotherOwnerHasIsLeftAlone)
{
    const auto owner = StartOwner();
    Report("confirm raise 0x4281B 2");
    const CSharedTableDirectory elsewhere;
    const auto other = RunOwner({"--config", Configuration(), "--run-dir", elsewhere.Path(), "--port", "0",
                                 "--state", m_directory.File("faultkeeper.db")});
    EXPECT_TRUE(other->SaysInTime("cannot be used: database is locked"));
    EXPECT_TRUE(other->SaysInTime("info: ready"));
    Report("confirm clear 0x4281B 2");
    EXPECT_EQ(CountOf("state store", owner->Errors()), 0);
}

TEST_F(StoreTrouble, AnotherUsersTableAndWhatBelongsToItAreLeftAsTheyAre)
{
    const auto first = StartOwner();
    Report("confirm raise 0x4281B 2");
    Kill(*first);
    const int segment = shmget(m_directory.Key(), 0, 0);
    struct shmid_ds facts = {};
    ASSERT_EQ(shmctl(segment, IPC_STAT, &facts), 0);
    facts.shm_perm.mode = 0444;
    ASSERT_EQ(shmctl(segment, IPC_SET, &facts), 0);
    const std::string note = ReadFile(m_directory.File("faultkeeper.note"));
    ExpectRefused("shared memory", "written");
    EXPECT_EQ(ReadFile(m_directory.File("faultkeeper.note")), note);
    EXPECT_EQ(Record(kDataSensor).flags, kRaisedFlag);
}

TEST_F(StoreTrouble, ALockThatThisUserMayNotUseIsLeftAsItIsAndSoIsTheTable)
{
    const auto first = StartOwner({"--state", "none"});
    Report("confirm raise 0x4281B 2");
    Kill(*first);
    for (const int mode : {0444, 0}) // may be looked at, and not even that
    {
        semctl(m_directory.Semaphore(), 0, IPC_RMID);
        ASSERT_NE(semget(m_directory.Key(), 1, IPC_CREAT | IPC_EXCL | mode), -1);
        ExpectRefused("lock", "used");
        EXPECT_EQ(m_directory.SemaphoreValue(), 0);
        EXPECT_EQ(Record(kDataSensor).flags, kRaisedFlag);
    }
}
