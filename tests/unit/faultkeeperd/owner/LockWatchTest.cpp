#include "faultkeeperd/owner/LockWatch.h"

#include "../OwnerFixture.h"
#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/sem.h>

#include <ctime>

using namespace Support;
using Faultkeeper::Apps::CLockWatch;
using std::chrono::milliseconds;

namespace
{
const CLockWatch::Clock::time_point kStart{milliseconds(1000000)};
int s_sleeps = 0;

class LockWatch : public OwnerTest
{
protected:
    /// Puts one too much into the lock, as the release of a reader does whose owner was killed meanwhile.
    void AddOne()
    {
        struct sembuf operation = {0, 1, 0};
        ASSERT_EQ(semop(m_directory.Semaphore(), &operation, 1), 0);
    }

    std::string Audited(int after)
    {
        return WarnedBy([&] { m_result = m_watch.Audit(m_view, kStart + milliseconds(after)); });
    }

    CLockWatch m_watch;
    Faultkeeper::CErrorDatabaseView m_view{true, Faultkeeper::eViewOwner};
    bool m_result = false;
};
} // namespace

/// Takes the place of the system's for this program, and counts.
extern "C" int nanosleep(const timespec* duration, timespec* left)
{
    using Function = int (*)(const timespec*, timespec*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "nanosleep"));
    ++s_sleeps;
    return next(duration, left);
}

TEST_F(LockWatch, LeavesALockAloneThatIsRight)
{
    EXPECT_EQ(Audited(0), "");
    EXPECT_TRUE(m_result);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
    EXPECT_EQ(m_watch.Surplus(), 0);
}

TEST_F(LockWatch, TakesOutWhatIsTooMuchAndSaysSo)
{
    AddOne();
    AddOne();
    EXPECT_EQ(Audited(0),
              "faultkeeperd: warning: the lock of the shared table was too high by 2, which admits "
              "several processes at once; mended\n");
    EXPECT_TRUE(m_result);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
    EXPECT_EQ(m_watch.Surplus(), 2);
}

TEST_F(LockWatch, LooksOnceASecond)
{
    EXPECT_EQ(m_watch.MillisecondsToAudit(kStart), 0);
    Audited(0);
    EXPECT_EQ(m_watch.MillisecondsToAudit(kStart), 1000);
    AddOne();
    EXPECT_EQ(Audited(999), "");
    EXPECT_EQ(m_directory.SemaphoreValue(), 2);
    EXPECT_NE(Audited(1000), "");
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

TEST_F(LockWatch, LooksAgainSoonWhenTheLockWasBusy)
{
    CBusyLock lock;
    EXPECT_EQ(Audited(0), "unable to obtain lock\n");
    EXPECT_FALSE(m_result);
    EXPECT_EQ(m_watch.MillisecondsToAudit(kStart), 0);
    lock.Release();
    EXPECT_EQ(Audited(1), "");
    EXPECT_TRUE(m_result);
}

TEST_F(LockWatch, TellsThatTheLockIsHeldWithoutWaitingForIt)
{
    EXPECT_FALSE(m_watch.Held());
    const CBusyLock lock;
    const int before = s_sleeps;
    EXPECT_TRUE(m_watch.Held());
    EXPECT_EQ(s_sleeps, before);
}

TEST_F(OwnerTest, LockWatchTakesDownALockWithoutATableToo)
{
    const int set = semget(m_directory.Key(), 1, IPC_CREAT | IPC_EXCL | 0600);
    struct sembuf more = {0, 7, 0};
    ASSERT_EQ(semop(set, &more, 1), 0);
    WarnedBy([] { EXPECT_EQ(CLockWatch().Surplus(), 7); });
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
}
