#include "support/CapturedOutput.h"
#include "unit/Common/view/SystemCalls.h"
#include "unit/Common/view/ViewFixture.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <thread>

using namespace Faultkeeper;
using Support::WarnedBy;

namespace
{

/// The system calls of a number of attempts.
std::string Attempts(int number)
{
    std::string log;
    for (int i = 0; i < number; ++i)
        log += "semop 0 -1 SEM_UNDO|IPC_NOWAIT\n";
    return log;
}

/// Runs `action` in a process of its own that ends right after it.
/// @return what `action` returned
bool InOtherProcess(const std::function<bool()>& action)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(action() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class ErrorDatabaseViewLockTest : public ViewFixture
{
protected:
    /// Waits until a process or thread sleeps for the lock.
    void AwaitWaiter() const
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (semctl(m_directory.Semaphore(), 0, GETNCNT) == 0 && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
    }

    void RemoveSemaphore() const { ASSERT_EQ(semctl(m_directory.Semaphore(), 0, IPC_RMID), 0); }
};

TEST_F(ErrorDatabaseViewLockTest, IsTakenAndGivenBackByOneSemaphoreOperationEach)
{
    CErrorDatabaseView view(true, eViewOwner);
    const SystemCalls calls;
    EXPECT_TRUE(view.GetLock(false));
    EXPECT_TRUE(view.ReleaseLock());
    EXPECT_EQ(SystemCalls::Log(), "semop 0 -1 SEM_UNDO|IPC_NOWAIT\nsemop 0 1 SEM_UNDO\n");
}

TEST_F(ErrorDatabaseViewLockTest, MakesTheSemaphoreZeroWhileItIsHeld)
{
    CErrorDatabaseView view(true, eViewOwner);
    view.GetLock(false);
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
    view.ReleaseLock();
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(ErrorDatabaseViewLockTest, IsWaitedForWithoutTheNoWaitFlag)
{
    CErrorDatabaseView view(true, eViewOwner);
    const SystemCalls calls;
    EXPECT_TRUE(view.GetLock(true));
    EXPECT_EQ(SystemCalls::Log(), "semop 0 -1 SEM_UNDO\n");
    view.ReleaseLock();
}

TEST_F(ErrorDatabaseViewLockTest, BusyIsGivenUpAfterFiveAttemptsWithOneMessage)
{
    CErrorDatabaseView holder(true, eViewOwner);
    CErrorDatabaseView view(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    const SystemCalls calls;
    bool taken = true;
    EXPECT_EQ(WarnedBy([&] { taken = view.GetLock(false); }), "unable to obtain lock\n");
    EXPECT_FALSE(taken);
    EXPECT_EQ(SystemCalls::Log(), Attempts(5));
}

TEST_F(ErrorDatabaseViewLockTest, BusyLeavesTheViewUsable)
{
    CErrorDatabaseView holder(true, eViewOwner);
    CErrorDatabaseView view(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    WarnedBy([&] { view.GetLock(false); });
    EXPECT_FALSE(view.Failed());
    holder.ReleaseLock();
    EXPECT_TRUE(view.GetLock(false));
}

TEST_F(ErrorDatabaseViewLockTest, BusyIsReportedOnceForEachCall)
{
    CErrorDatabaseView holder(true, eViewOwner);
    CErrorDatabaseView view(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    EXPECT_EQ(WarnedBy(
                  [&]
                  {
                      view.FaultkeeperReady();
                      view.Synchronise(m_database);
                  }),
              "unable to obtain lock\nunable to obtain lock\n");
}

TEST_F(ErrorDatabaseViewLockTest, BusyFourTimesIsTakenAtTheFifthAttemptWithoutAMessage)
{
    CErrorDatabaseView view(true, eViewOwner);
    const SystemCalls calls;
    SystemCalls::Fail("semop", EAGAIN, 4);
    bool taken = false;
    EXPECT_EQ(WarnedBy([&] { taken = view.GetLock(false); }), "");
    EXPECT_TRUE(taken);
    EXPECT_EQ(SystemCalls::Log(), Attempts(5));
}

TEST_F(ErrorDatabaseViewLockTest, AnotherErrorAtALaterAttemptEndsTheAttempts)
{
    CErrorDatabaseView holder(true, eViewOwner);
    CErrorDatabaseView view(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    RemoveSemaphore();
    const SystemCalls calls;
    SystemCalls::Fail("semop", EAGAIN, 2);
    EXPECT_EQ(WarnedBy([&] { view.GetLock(false); }),
              "CErrorDatabaseView::GetLock semop: Invalid argument\n");
    EXPECT_EQ(SystemCalls::Log(), Attempts(3));
    EXPECT_TRUE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, ThatIsGoneFailsTheView)
{
    CErrorDatabaseView view(true, eViewOwner);
    RemoveSemaphore();
    bool taken = true;
    EXPECT_EQ(WarnedBy([&] { taken = view.GetLock(false); }),
              "CErrorDatabaseView::GetLock semop: Invalid argument\n");
    EXPECT_FALSE(taken);
    EXPECT_TRUE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, ThatIsGoneFailsTheViewThatWaits)
{
    CErrorDatabaseView view(true, eViewOwner);
    RemoveSemaphore();
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(view.GetLock(true)); }),
              "CErrorDatabaseView::GetLock semop: Invalid argument\n");
    EXPECT_TRUE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, AnInterruptedWaitFailsTheView)
{
    CErrorDatabaseView view(true, eViewOwner);
    const SystemCalls calls;
    SystemCalls::Fail("semop", EINTR);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(view.GetLock(true)); }),
              "CErrorDatabaseView::GetLock semop: Interrupted system call\n");
    EXPECT_TRUE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, AReleaseThatFailsFailsTheView)
{
    CErrorDatabaseView view(true, eViewOwner);
    ASSERT_TRUE(view.GetLock(false));
    RemoveSemaphore();
    bool released = true;
    EXPECT_EQ(WarnedBy([&] { released = view.ReleaseLock(); }),
              "CErrorDatabaseView::ReleaseLock semop: Invalid argument\n");
    EXPECT_FALSE(released);
    EXPECT_TRUE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, AReleaseIsTriedOnlyOnce)
{
    CErrorDatabaseView view(true, eViewOwner);
    ASSERT_TRUE(view.GetLock(false));
    const SystemCalls calls;
    SystemCalls::Fail("semop", EAGAIN);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(view.ReleaseLock()); }),
              "CErrorDatabaseView::ReleaseLock semop: Resource temporarily unavailable\n");
    EXPECT_EQ(SystemCalls::Log(), "semop 0 1 SEM_UNDO\n");
    EXPECT_TRUE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, HeldIsWaitedForUntilItIsGivenBack)
{
    CErrorDatabaseView holder(true, eViewOwner);
    CErrorDatabaseView view(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    bool taken = false;
    std::thread waiter([&] { taken = view.GetLock(true); });
    AwaitWaiter();
    EXPECT_TRUE(holder.ReleaseLock());
    waiter.join();
    EXPECT_TRUE(taken);
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
}

TEST_F(ErrorDatabaseViewLockTest, CannotBeTakenBeforeAnyViewHasCreatedTheTable)
{
    CErrorDatabaseView view(false, eViewReader);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(view.GetLock(false)); }), "unable to obtain lock\n");
    EXPECT_FALSE(view.Failed());
}

TEST_F(ErrorDatabaseViewLockTest, CannotBeTakenOnceTheCreatingProcessHasEnded)
{
    CErrorDatabaseView reader(false, eViewReader);
    EXPECT_TRUE(InOtherProcess(
        [&]
        {
            CErrorDatabaseView creator(true, eViewOwner);
            return creator.FaultkeeperReady(true) && reader.FaultkeeperReady(); // while the creator lives
        }));
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(reader.GetLock(false)); }), "unable to obtain lock\n");
    EXPECT_FALSE(reader.Failed());
    EXPECT_EQ(Header().ready, 1u) << "the table itself outlives its creator";
}

TEST_F(ErrorDatabaseViewLockTest, IsAvailableAgainOnceThereIsAnotherCreator)
{
    CErrorDatabaseView reader(false, eViewReader);
    InOtherProcess([] { return !CErrorDatabaseView(true, eViewOwner).Failed(); });
    const CErrorDatabaseView next(true, eViewOwner);
    EXPECT_TRUE(reader.GetLock(false));
    reader.ReleaseLock();
}

TEST_F(ErrorDatabaseViewLockTest, IsNoDifferentAfterAReaderThatTookItOftenHasEnded)
{
    const CErrorDatabaseView creator(true, eViewOwner);
    EXPECT_TRUE(InOtherProcess(
        []
        {
            CErrorDatabaseView reader(false, eViewReader);
            bool taken = true;
            for (int i = 0; i < 10; ++i)
                taken = reader.GetLock(false) && reader.ReleaseLock() && taken;
            return taken;
        }));
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(ErrorDatabaseViewLockTest, IsGivenBackByTheSystemWhenItsHolderEnds)
{
    const CErrorDatabaseView creator(true, eViewOwner);
    EXPECT_TRUE(InOtherProcess([] { return CErrorDatabaseView(false, eViewReader).GetLock(false); }));
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(ErrorDatabaseViewLockTest, IsTakenOnceForAVectorOfErrors)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    owner.FaultkeeperReady(true);
    const std::vector<std::pair<int, int>> ids = {NumberedErrors::Id(0), NumberedErrors::Id(1), {1, 1}};
    const std::string once = "semop 0 -1 SEM_UNDO|IPC_NOWAIT\nsemop 0 1 SEM_UNDO\n";
    const SystemCalls calls;
    owner.RaiseErrors(ids);
    EXPECT_EQ(SystemCalls::Log(), once);
    owner.ClearErrors(ids);
    EXPECT_EQ(SystemCalls::Log(), once);
    owner.UpdateErrorDetails(std::vector<SErrorEntry>(3));
    EXPECT_EQ(SystemCalls::Log(), once);
}

class ListenerThatLooksAtTheLock : public CErrorDbViewChanged
{
public:
    explicit ListenerThatLooksAtTheLock(const Support::CSharedTableDirectory& directory)
        : m_directory(directory)
    {
    }
    void ErrorEntryChanged(const SErrorEntry&) override { m_values.push_back(m_directory.SemaphoreValue()); }
    const std::vector<int>& Values() const { return m_values; }

private:
    const Support::CSharedTableDirectory& m_directory;
    std::vector<int> m_values;
};

TEST_F(ErrorDatabaseViewLockTest, IsFreeWhenListenersAreCalled)
{
    CErrorDatabaseView owner(true, eViewOwner);
    owner.LoadErrors(m_database);
    owner.FaultkeeperReady(true);
    owner.RaiseErrors({NumberedErrors::Id(0), NumberedErrors::Id(2)});
    CErrorDatabaseView reader(false, eViewReader);
    ListenerThatLooksAtTheLock listener(m_directory);
    reader.SetCallback(&listener);
    EXPECT_EQ(reader.Synchronise(m_database), 1);
    EXPECT_EQ(listener.Values(), (std::vector<int>{1, 1}));
}

} // namespace
