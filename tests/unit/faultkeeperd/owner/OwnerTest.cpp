#include "faultkeeperd/owner/Owner.h"

#include "../OwnerFixture.h"
#include "support/CapturedOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

using namespace Support;
using Faultkeeper::Apps::COwner;
using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;

namespace
{
const COwner::Clock::time_point kStart{milliseconds(1000000)};

class Owner : public OwnerTest
{
};
} // namespace

TEST_F(Owner, KnowsNoErrorThatIsNotConfigured)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    EXPECT_FALSE(owner.Apply(0x40C1C, 2, true));
    EXPECT_FALSE(owner.Apply(kReceiver.first, 3, true));
    EXPECT_FALSE(
        owner.Apply(kReceiver.first, kReceiver.second + 65536, true)); // 16 bits of it would be right
    EXPECT_EQ(owner.Publisher().Waiting(), 0U);
}

TEST_F(Owner, PublishesWhatFollowsFromAReport)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    EXPECT_TRUE(owner.Apply(kDataSensor.first, kDataSensor.second, true));
    owner.Publish(kStart);
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
    EXPECT_TRUE(owner.Apply(kDataSensor.first, kDataSensor.second, false));
    owner.Publish(kStart);
    EXPECT_EQ(Raised(), std::vector<Id>());
}

TEST_F(Owner, IgnoresARepeatedReport)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(owner.Apply(kDataSensor.first, kDataSensor.second, true));
    owner.Publish(kStart);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
}

TEST_F(Owner, TriesABusyLockAgainOnlyAfterAPause)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    CBusyLock lock;
    EXPECT_EQ(owner.MillisecondsToPublish(kStart), 0);
    owner.Publish(kStart);
    EXPECT_EQ(owner.LockRetries(), 1U);
    EXPECT_EQ(owner.MillisecondsToPublish(kStart), 1);
    owner.Publish(kStart);
    EXPECT_EQ(owner.LockRetries(), 1U) << "too early: not even tried";
    owner.Publish(kStart + milliseconds(1));
    EXPECT_EQ(owner.LockRetries(), 2U);
    EXPECT_EQ(owner.MillisecondsToPublish(kStart + milliseconds(1)), 2);
    lock.Release();
    owner.Publish(kStart + milliseconds(3));
    EXPECT_EQ(owner.MillisecondsToPublish(kStart + milliseconds(3)), 1000) << "to look at the lock again";
    EXPECT_EQ(Table().header.ready, 1U);
}

TEST_F(Owner, AppliesReportsWhileTheLockIsBusy)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    owner.Publish(kStart);
    CBusyLock lock;
    owner.Apply(kDataSensor.first, kDataSensor.second, true);
    EXPECT_EQ(WarnedBy([&] { owner.Publish(kStart); }), "") << "the log is not filled with it";
    EXPECT_TRUE(Database().RetrieveError(kPosition.first, kPosition.second)->Active());
    EXPECT_EQ(Raised(), std::vector<Id>());
    lock.Release();
    owner.Publish(kStart + milliseconds(1));
    EXPECT_EQ(Raised(), (std::vector<Id>{kDataSensor, kReceiver, kPosition}));
}

TEST_F(Owner, FailsWhenTheLockIsTakenAway)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    owner.Publish(kStart);
    m_directory.RemoveTable();
    owner.Apply(kDataSensor.first, kDataSensor.second, true);
    EXPECT_FALSE(owner.Failed());
    EXPECT_NE(WarnedBy([&] { owner.Publish(kStart); }), "");
    EXPECT_TRUE(owner.Failed());
}

TEST_F(Owner, MakesTheLockAvailableToOneWhateverAFormerOwnerHasLeft)
{
    for (const int left : {0, 1, 2, 5})
    {
        const Faultkeeper::CErrorDatabaseView display(
            false, Faultkeeper::eViewReader); // makes table and lock if there are none
        const int semaphore = m_directory.Semaphore();
        union
        {
            int val;
            semid_ds* buf;
        } const value = {
            left}; // passed as the union that the call takes: some machines pass those by address
        ASSERT_EQ(semctl(semaphore, 0, SETVAL, value), 0);
        std::unique_ptr<COwner> owner;
        EXPECT_EQ(WarnedBy([&] { owner = NewOwner(); }),
                  left == 0 ? ""
                            : "faultkeeperd: info: a former owner had left the lock at " +
                                  std::to_string(left) + "\n");
        EXPECT_EQ(owner->LockWatch().Surplus(), left);
        EXPECT_EQ(m_directory.SemaphoreValue(), 1);
        m_directory.RemoveTable();
    }
}

TEST_F(Owner, NamesTheProcessThatKeepsTheLockOnceAndSaysOnceThatItIsFree)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    CBusyLock lock;
    const auto said = [&](int after)
    { return WarnedBy([&] { owner.Publish(kStart + milliseconds(after)); }); };
    const std::string told = "warning: the shared table is locked by process " + std::to_string(getpid());
    owner.Apply(kDataSensor.first, kDataSensor.second, true);
    EXPECT_EQ(said(0), "");
    EXPECT_EQ(said(4999), "");
    EXPECT_EQ(said(6000), "faultkeeperd: " + told + ", which does not let go; changes wait\n");
    EXPECT_EQ(said(8000), "");
    lock.Release();
    EXPECT_EQ(said(10000), "faultkeeperd: info: the shared table is free again; nothing waits\n");
    EXPECT_EQ(said(12000), "");
}

TEST_F(Owner, SaysSoIfTheFormerStateIsAllThatWaits)
{
    Faultkeeper::Apps::SFormerState former;
    former.errors.resize(1);
    former.errors[0].entry.problemCode = kDataSensor.first;
    former.errors[0].entry.problemType = static_cast<std::int16_t>(kDataSensor.second);
    COwner owner(Database(), Keeper(), former);
    CBusyLock lock;
    const auto said = [&](int after)
    { return WarnedBy([&] { owner.Publish(kStart + milliseconds(after)); }); };
    EXPECT_EQ(said(0), "");
    EXPECT_THAT(said(6000), HasSubstr(", which does not let go; the former state waits\n"));
    lock.Release();
    EXPECT_EQ(said(8000), "faultkeeperd: info: the shared table is free again; nothing waits\n");
}

TEST_F(Owner, SaysNothingOfChangesWhereTheLockIsAllThatItWaitsFor)
{
    const auto made = NewOwner();
    COwner& owner = *made;
    owner.Publish(kStart);
    CBusyLock lock;
    const auto said = [&](int after)
    { return WarnedBy([&] { owner.Publish(kStart + milliseconds(after)); }); };
    EXPECT_EQ(said(999), "");
    EXPECT_EQ(said(1000), "");
    EXPECT_EQ(owner.LockRetries(), 1U) << "it is time to look at the lock";
    EXPECT_EQ(said(6000), "faultkeeperd: warning: the shared table is locked by process " +
                              std::to_string(getpid()) + ", which does not let go\n");
    lock.Release();
    EXPECT_EQ(said(8000), "faultkeeperd: info: the shared table is free again\n");
}
