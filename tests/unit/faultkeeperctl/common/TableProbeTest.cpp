#include "common/owner/TableProbe.h"

#include "common/owner/OwnerClaim.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"
#include "system/ChildProcess.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

// Stands in front of the system's, which nothing but a lack of memory would make fail.
static bool attachFails = false;

extern "C" void* shmat(int segment, const void* address, int flags) noexcept
{
    using Attach = void* (*)(int, const void*, int);
    static const Attach theSystems = reinterpret_cast<Attach>(dlsym(RTLD_NEXT, "shmat"));
    if (!attachFails)
        return theSystems(segment, address, flags);
    errno = ENOMEM;
    return reinterpret_cast<void*>(-1);
}

namespace
{
class TableProbe : public Support::SharedTableTest
{
protected:
    TableProbe()
    {
        Support::CConfigurationBuilder().Leaf("Positioning:GPS:No Data:2").WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    std::unique_ptr<CErrorDatabaseView> Owner(bool ready) const
    {
        auto view = std::make_unique<CErrorDatabaseView>(true, eViewOwner);
        EXPECT_TRUE(view->LoadErrors(*m_database));
        EXPECT_TRUE(view->FaultkeeperReady(ready));
        return view;
    }

    /// Kills an owner with a claim while this process, which is attached as displays are, holds the lock, and
    /// gives the lock back. It can be had then, as if there were an owner.
    void KillOwnerUnderTheLock() const
    {
        Support::CGate made;
        Support::CGate never;
        Support::CChildProcess owner(
            [&]
            {
                COwnerClaim claim;
                const bool taken = claim.Take();
                const auto view = Owner(true);
                claim.Mark();
                made.Open();
                return taken && never.Pass() ? 0 : 1;
            });
        ASSERT_TRUE(made.Pass());
        EXPECT_EQ(ProbeTable().state, etsReady);
        const int semaphore = FindSemaphore(m_directory.Key());
        ASSERT_EQ(TryLock(semaphore), elaTaken);
        owner.Signal(SIGKILL);
        EXPECT_EQ(owner.Wait(), 128 + SIGKILL);
        ASSERT_TRUE(Unlock(semaphore));
        ASSERT_EQ(LockValue(semaphore), 1);
    }

    std::unique_ptr<CErrorDatabase> m_database;
};

std::string Said(ETableState state)
{
    STableFacts facts;
    facts.state = state;
    facts.holder = 77;
    facts.details.user = getuid();
    facts.userKnown = true;
    facts.error = ENOMEM;
    return Describe(facts, "/run/x");
}
} // namespace

TEST_F(TableProbe, FindsNothingWhereNothingIsAndMakesNothing)
{
    const STableFacts facts = ProbeTable();
    EXPECT_EQ(facts.state, etsAbsent);
    EXPECT_EQ(facts.key, m_directory.Key());
    EXPECT_EQ(FindSegment(m_directory.Key()), -1);
    EXPECT_EQ(FindSemaphore(m_directory.Key()), -1);
}

TEST_F(TableProbe, CopiesATableThatIsReadyAndGivesTheLockBack)
{
    const auto owner = Owner(true);
    ASSERT_TRUE(owner->RaiseError(0x40C1B, 2));
    const STableFacts facts = ProbeTable();
    ASSERT_EQ(facts.state, etsReady);
    ASSERT_EQ(RecordCount(facts.table), 1);
    EXPECT_EQ(facts.table.records[0].problemCode, 0x40C1B);
    EXPECT_EQ(facts.table.records[0].flags, kRaisedFlag);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(TableProbe, TellsATableThatIsNotReady)
{
    const auto owner = Owner(false);
    EXPECT_EQ(ProbeTable().state, etsNotReady);
}

TEST_F(TableProbe, TellsATableWhoseOwnerHasEnded)
{
    Support::CChildProcess owner([this] { return Owner(true)->Failed() ? 1 : 0; });
    ASSERT_EQ(owner.Wait(), 0);
    EXPECT_EQ(ProbeTable().state, etsOwnerGone);
}

TEST_F(TableProbe, TellsAnOwnerThatHasEndedWhileDisplaysAreAttached)
{
    Support::CChildProcess owner([this] { return Owner(true)->Failed() ? 1 : 0; });
    ASSERT_EQ(owner.Wait(), 0);
    const CErrorDatabaseView display(false, eViewReader);
    EXPECT_EQ(ProbeTable().state, etsOwnerGone);                                 // by the lock
    EXPECT_EQ(ProbeTable({FindSegment(m_directory.Key())}).state, etsOwnerGone); // by the attachments
}

TEST_F(TableProbe, TellsAnOwnerThatHasEndedAndWasNotCollectedByItsParent)
{
    const CErrorDatabaseView display(false, eViewReader);
    Support::CGate made;
    Support::CChildProcess owner(
        [&]
        {
            const auto view = Owner(true);
            made.Open();
            return 0;
        });
    ASSERT_TRUE(made.Pass());
    EXPECT_TRUE(Support::WaitUntil([] { return ProbeTable().state == etsOwnerGone; }));
}

TEST_F(TableProbe, TellsAnOwnerThatWasKilledWhileADisplayHeldTheLock)
{
    const CErrorDatabaseView display(false, eViewReader);
    KillOwnerUnderTheLock();
    EXPECT_EQ(ProbeTable().state, etsOwnerGone);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1) << "nothing was touched";
}

TEST_F(TableProbe, CountsAClaimForNothingOnceAnotherLockWasMade)
{
    KillOwnerUnderTheLock();
    m_directory.RemoveTable();
    const auto owner = Owner(true); // one that claims nothing
    EXPECT_EQ(ProbeTable().state, etsReady);
}

TEST_F(TableProbe, CountsAClaimForNothingThatWasUnmarkedInTheEnd)
{
    {
        COwnerClaim claim;
        ASSERT_TRUE(claim.Take());
        const auto former = Owner(true);
        claim.Mark();
        claim.Unmark();
    }
    const auto owner = Owner(true);
    EXPECT_EQ(ProbeTable().state, etsReady);
}

TEST_F(TableProbe, CountsNoAttachmentsToOtherSegments)
{
    const auto owner = Owner(true);
    EXPECT_EQ(ProbeTable({FindSegment(m_directory.Key()) + 1}).state, etsReady);
}

TEST_F(TableProbe, NamesTheProcessThatKeepsTheLock)
{
    const auto owner = Owner(true);
    ASSERT_TRUE(owner->GetLock(false));
    const STableFacts facts = ProbeTable();
    EXPECT_EQ(facts.state, etsBusy);
    EXPECT_EQ(facts.holder, getpid());
    EXPECT_TRUE(owner->ReleaseLock());
    EXPECT_EQ(ProbeTable().state, etsReady);
}

TEST_F(TableProbe, TellsSharedMemoryThatIsNoTable)
{
    ASSERT_NE(shmget(m_directory.Key(), 100, IPC_CREAT | 0600), -1);
    EXPECT_EQ(ProbeTable().state, etsForeign);
    m_directory.RemoveTable();
    ASSERT_NE(shmget(m_directory.Key(), kStatusTableBytes + 1, IPC_CREAT | 0600), -1);
    EXPECT_EQ(ProbeTable().state, etsForeign);
}

TEST_F(TableProbe, NamesTheUserOfATableThatMayNotBeRead)
{
    const auto owner = Owner(true);
    ASSERT_EQ(chmod(m_directory.Path().c_str(), 0755), 0);
    struct shmid_ds description = {};
    ASSERT_EQ(shmctl(FindSegment(m_directory.Key()), IPC_STAT, &description), 0);
    description.shm_perm.mode = 0;
    ASSERT_EQ(shmctl(FindSegment(m_directory.Key()), IPC_SET, &description), 0);
    const uid_t user = geteuid();
    Support::CChildProcess stranger(
        [user]
        {
            if (user == 0 && setuid(65534) != 0) // to whom the mode says nothing
                return 2;
            const STableFacts facts = ProbeTable();
            return facts.state == etsRefused && facts.details.user == user ? 0 : 1;
        });
    EXPECT_EQ(stranger.Wait(), 0);
}

TEST_F(TableProbe, NamesNoUserThatItDoesNotKnow)
{
    STableFacts facts;
    facts.state = etsRefused;
    EXPECT_EQ(Describe(facts, "/run/x"), "the table in /run/x may not be read");
}

TEST_F(TableProbe, TellsAFailureOfTheSystemFromATableThatIsNotThere)
{
    const auto owner = Owner(true);
    attachFails = true;
    const STableFacts facts = ProbeTable();
    attachFails = false;
    EXPECT_EQ(facts.state, etsFailed);
    EXPECT_EQ(facts.error, ENOMEM);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(TableProbe, DoesNotCallATableLeftOverWhoseLockNobodyHasTouched)
{
    const CErrorDatabaseView starting(false, eViewReader); // an owner does the same first
    EXPECT_EQ(ProbeTable().state, etsNotReady);
}

TEST_F(TableProbe, TakesDownALockWithoutForgettingItsHolder)
{
    const int semaphore = semget(m_directory.Key(), 1, IPC_CREAT | 0600);
    union
    {
        int val;
        semid_ds* buf;
    } const three = {3}; // passed as the union that the call takes: some machines pass those by address
    ASSERT_EQ(semctl(semaphore, 0, SETVAL, three), 0);
    Support::CGate held;
    Support::CGate end;
    Support::CChildProcess holder(
        [&]
        {
            const bool taken = TryLock(semaphore) == elaTaken;
            held.Open();
            return taken && end.Pass() ? 0 : 1;
        });
    ASSERT_TRUE(held.Pass());
    EXPECT_EQ(TakeDownLock(semaphore), 2);
    EXPECT_EQ(LockValue(semaphore), 0);
    end.Open();
    EXPECT_EQ(holder.Wait(), 0);
    EXPECT_EQ(LockValue(semaphore), 1); // what the system owed to the holder
    EXPECT_EQ(TakeDownLock(semaphore), 1);
    EXPECT_EQ(TakeDownLock(-1), 0);
}

TEST_F(TableProbe, ReadsNoMoreRecordsThanThereCanBe)
{
    SStatusTable table;
    table.header.count = 100000;
    EXPECT_EQ(RecordCount(table), 400);
    table.header.count = -1;
    EXPECT_EQ(RecordCount(table), 0);
    table.header.count = 243;
    EXPECT_EQ(RecordCount(table), 243);
}

TEST_F(TableProbe, RemovesSegmentAndLock)
{
    {
        const auto owner = Owner(true);
    }
    std::string problem = "untouched";
    EXPECT_TRUE(RemoveTable(ProbeTable(), problem));
    EXPECT_EQ(problem, "untouched");
    EXPECT_EQ(FindSegment(m_directory.Key()), -1);
    EXPECT_EQ(FindSemaphore(m_directory.Key()), -1);
    EXPECT_TRUE(RemoveTable(ProbeTable(), problem)); // nothing there is nothing wrong
}

TEST_F(TableProbe, SaysHowThingsStand)
{
    EXPECT_EQ(Said(etsAbsent), "no owner: there is no table in /run/x");
    EXPECT_EQ(Said(etsForeign), "the shared memory under the key of /run/x is not a table of faults");
    EXPECT_EQ(Said(etsRefused),
              "the table in /run/x belongs to user " + UserName(getuid()) + ", and may not be read");
    EXPECT_EQ(Said(etsFailed), "looking at the table in /run/x failed: Cannot allocate memory");
    EXPECT_EQ(Said(etsOwnerGone), "no owner: the table in /run/x is left over from an owner that has ended");
    EXPECT_EQ(Said(etsBusy), "the table in /run/x is locked by process 77, which does not let go");
    EXPECT_EQ(Said(etsNotReady), "the table in /run/x is not ready: its owner is starting or stopping");
    EXPECT_EQ(Said(etsReady), "the table in /run/x is ready");
}

TEST_F(TableProbe, CountsALockThatIsKeptAsAnOwner)
{
    EXPECT_TRUE(OwnerPresent(etsBusy));
    EXPECT_TRUE(OwnerPresent(etsNotReady));
    EXPECT_TRUE(OwnerPresent(etsReady));
    EXPECT_FALSE(OwnerPresent(etsAbsent));
    EXPECT_FALSE(OwnerPresent(etsForeign));
    EXPECT_FALSE(OwnerPresent(etsRefused));
    EXPECT_FALSE(OwnerPresent(etsOwnerGone));
}
