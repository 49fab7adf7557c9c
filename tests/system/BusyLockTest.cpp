#include "SystemFixture.h"

#include "support/FileSizeLimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/sem.h>

#include <csignal>

using namespace Support;
using namespace Faultkeeper;
using testing::HasSubstr;

namespace
{

/// A process that takes the table's lock, keeps it until told, and gives it back.
class CLockHolder
{
public:
    /// It takes the lock at once.
    CLockHolder() : m_process([this] { return HoldLock(false); }) { EXPECT_TRUE(Holds()); }

    /// It waits for an owner and takes the lock before that one does.
    explicit CLockHolder(const CSharedTableDirectory& directory)
        : m_process([this] { return HoldLock(true); })
    {
        EXPECT_TRUE(WaitUntil([&] { return semctl(directory.Semaphore(), 0, GETNCNT) == 1; }));
    }

    /// Waits until it has the lock.
    bool Holds() const { return m_held.Pass(); }

    /// @return true if the lock was given back as it should be
    bool Release()
    {
        m_release.Open();
        return m_process.Wait() == 0;
    }

    CChildProcess& Process() { return m_process; }

private:
    int HoldLock(bool waits) const
    {
        CErrorDatabaseView view(false, eViewReader);
        if (!WaitUntil([&] { return view.GetLock(waits); }))
            return 1;
        m_held.Open();
        return m_release.Pass() && view.ReleaseLock() ? 0 : 1;
    }

    CGate m_held;
    CGate m_release;
    CChildProcess m_process; // last: it uses the gates
};

class BusyLock : public SystemTest
{
protected:
    /// Kills an owner without a store that waits for the lock and was told of the link sensor's fault, and
    /// sees that the next one gets it from its reporter.
    /// @param waiting  what the owner says that waits
    void ExpectSentAgain(CProgram& owner, const std::string& waiting, CLockHolder& holder, CProgram& reporter)
    {
        ASSERT_TRUE(owner.SaysInTime("which does not let go; " + waiting + "\n"));
        Kill(owner);
        EXPECT_TRUE(holder.Release());
        const auto next = StartOwner({"--state", "none"});
        EXPECT_EQ(reporter.Wait(), 0) << "it sends again what was not acknowledged";
        EXPECT_EQ(Record(kLinkSensor).flags, kRaisedFlag);
    }

    /// Kills an owner and starts the next one, which finds the lock held.
    std::unique_ptr<CProgram> HoldUp(const std::vector<std::string>& more)
    {
        std::vector<std::string> arguments = {"--config", Configuration(), "--run-dir", m_directory.Path()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto former = StartOwner(more);
        Report("confirm raise 0x40C09 9");
        Kill(*former);
        m_holder = std::make_unique<CLockHolder>(m_directory);
        auto next = RunOwner(arguments);
        EXPECT_TRUE(m_holder->Holds());
        return next;
    }

    std::unique_ptr<CLockHolder> m_holder;
};

} // namespace

TEST_F(BusyLock, LosesNoReportHoweverLongItIsHeld)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    Report("confirm repeat 100 raise 0x40C09 9 clear 0x40C09 9 then raise 0x4281B 2");
    ASSERT_TRUE(owner->SaysInTime("which does not let go; changes wait\n"));
    EXPECT_EQ(Record(kLinkSensor).counter1, 0);

    EXPECT_TRUE(holder.Release());
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kDataSensor, kReceiver, kPosition}));
    EXPECT_EQ(Record(kLinkSensor).counter1, 100);
    EXPECT_EQ(Record(kLinkSensor).counter2, 100);
    EXPECT_EQ(Record(kReceiver).counter1, 101);
    EXPECT_EQ(Record(kDataSensor).counter1, 1);
}

TEST_F(BusyLock, WithoutAStoreNothingIsAcknowledgedThatIsNotInTheTable)
{
    const auto owner = StartOwner({"--state", "none"});
    CLockHolder holder;
    ExpectSentAgain(*owner, "changes wait", holder, *StartReporter("confirm raise 0x40C09 9"));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1);
}

TEST_F(BusyLock, WithoutAStoreNothingIsAcknowledgedBeforeTheTableHasTheFormerState)
{
    auto owner = StartOwner({"--state", "none"});
    Report("confirm raise 0x40C09 9");
    Kill(*owner);
    CLockHolder holder(m_directory);
    owner = RunOwner({"--config", Configuration(), "--run-dir", m_directory.Path(), "--state", "none"});
    ASSERT_TRUE(holder.Holds());
    ExpectSentAgain(*owner, "the former state waits", holder,
                    *StartReporter("confirm raise 0x40C09 9")); // changes nothing
}

TEST_F(BusyLock, WhatWasStoredMeanwhileComesBackThoughTheNextOwnerCannotWriteTheStore)
{
    auto owner = StartOwner();
    Report("confirm raise 0x40C09 9 clear 0x40C09 9");
    {
        CLockHolder holder;
        Report("confirm raise 0x40C09 9");
        Kill(*owner);
        EXPECT_TRUE(holder.Release());
    }
    EXPECT_EQ(Record(kLinkSensor).counter1, 1) << "the table has not had it";
    {
        const CFileSizeLimit enoughForTheLog(4096);
        owner = StartOwner();
    }
    EXPECT_NE(owner->Errors().find("cannot be used: "), std::string::npos);
    EXPECT_EQ(Record(kLinkSensor).flags, kRaisedFlag);
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
    Kill(*owner);
    owner = StartOwner();
    EXPECT_EQ(Record(kLinkSensor).flags, kRaisedFlag);
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
}

TEST_F(BusyLock, LosesNoReportWhileDisplaysCopyWithoutAPause)
{
    const auto owner = StartOwner();
    const CGate end;
    const auto copy = [&]
    {
        std::freopen("/dev/null", "w", stderr); // the lock is busy often enough, and says so
        CDisplay display(Configuration());
        while (!end.Opened())
            display.Active();
        return 0;
    };
    CChildProcess first(copy);
    CChildProcess second(copy);
    Report("repeat 1000 raise 0x40C09 9 clear 0x40C09 9 then raise 0x4281B 2");
    EXPECT_TRUE(WaitUntil([&] { return Record(kDataSensor).counter1 == 1; }));
    EXPECT_EQ(Record(kLinkSensor).counter1, 1000);
    EXPECT_EQ(Record(kReceiver).counter1, 1001);
    end.Open();
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
}

TEST_F(BusyLock, IsFreeAgainWhenItsHolderIsKilled)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    Report("confirm raise 0x40C09 9");
    holder.Process().Signal(SIGKILL);
    EXPECT_EQ(holder.Process().Wait(), 128 + SIGKILL);
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kLinkSensor, kReceiver, kPosition}));
}

TEST_F(BusyLock, DoesNotKeepTheOwnerFromPublishingBeforeItEnds)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    Report("confirm raise 0x40C09 9");
    owner->Process().Signal(SIGTERM);
    EXPECT_TRUE(holder.Release());
    EXPECT_EQ(owner->Wait(), 0) << owner->Errors();
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
    EXPECT_EQ(Table().header.ready, 0U);
}

TEST_F(BusyLock, ThatIsNeverGivenBackDoesNotKeepTheOwnerFromEnding)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    Report("confirm raise 0x40C09 9");
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 1);
    EXPECT_NE(owner->Errors().find("faultkeeperd: error: ended with 3 changes not published\n"),
              std::string::npos)
        << owner->Errors();
    EXPECT_TRUE(holder.Release());
}

TEST_F(BusyLock, ThatIsNeverGivenBackIsNoFailureWhereNothingWaits)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 0);
    EXPECT_NE(
        owner->Errors().find("faultkeeperd: warning: the lock stays busy: the shared table could not be "
                             "declared not ready\nfaultkeeperd: info: ended\n"),
        std::string::npos)
        << owner->Errors();
    EXPECT_TRUE(holder.Release());
}

TEST_F(BusyLock, IsNotWaitedForAnyLongerByAnOwnerThatIsToldTwiceToEnd)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    owner->Process().Signal(SIGTERM);
    owner->Process().Signal(SIGINT);
    EXPECT_EQ(owner->Wait(), 0);
    EXPECT_THAT(owner->Errors(),
                HasSubstr("faultkeeperd: info: told to end once more; the lock is not "
                          "waited for any longer\nfaultkeeperd: warning: the lock stays busy"));
    EXPECT_TRUE(holder.Release());
}

TEST_F(BusyLock, ThatIsFreeAgainIsTakenOnceMoreByAnOwnerThatIsToldTwiceToEnd)
{
    const auto owner = StartOwner({"--state", "none"});
    CLockHolder holder;
    const auto reporter = StartReporter("confirm raise 0x40C09 9");
    ASSERT_TRUE(owner->SaysInTime("which does not let go; changes wait\n"));
    owner->Process().Signal(SIGSTOP);
    EXPECT_TRUE(holder.Release());
    for (const int signal : {SIGTERM, SIGINT, SIGCONT})
        owner->Process().Signal(signal);
    EXPECT_EQ(owner->Wait(), 0);
    EXPECT_EQ(Record(kLinkSensor).flags, kRaisedFlag);
}

TEST_F(BusyLock, ThatIsHeldFromTheStartIsNoMatterWhereThereIsNoFormerState)
{
    {
        const auto former = StartOwner({"--state", "none"});
        former->Process().Signal(SIGTERM);
        EXPECT_EQ(former->Wait(), 0);
    }
    CLockHolder holder(m_directory);
    const auto owner =
        RunOwner({"--config", Configuration(), "--run-dir", m_directory.Path(), "--state", "none"});
    ASSERT_TRUE(holder.Holds());
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 0);
    EXPECT_THAT(owner->Errors(), Not(HasSubstr("warning")));
    EXPECT_TRUE(holder.Release());
}

TEST_F(BusyLock, ThatIsHeldFromTheStartLeavesTheFormerStateInTheStore)
{
    const auto owner = HoldUp({});
    ASSERT_TRUE(owner->SaysInTime("which does not let go; the former state waits\n"));
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 0);
    EXPECT_THAT(
        owner->Errors(),
        HasSubstr("faultkeeperd: warning: the lock stays busy: the shared table is empty and was never "
                  "declared ready; the former state stays in the store\nfaultkeeperd: info: ended\n"));
    EXPECT_TRUE(m_holder->Release());
    const auto next = StartOwner();
    EXPECT_EQ(Record(kPosition).flags, kRaisedFlag);
}

TEST_F(BusyLock, ThatIsHeldFromTheStartLosesTheFormerStateWhereThereIsNoStore)
{
    const auto owner = HoldUp({"--state", "none"});
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 1);
    EXPECT_THAT(owner->Errors(),
                HasSubstr("faultkeeperd: error: ended with 3 errors of the former state not published; the "
                          "shared table was never declared ready\n"));
    EXPECT_TRUE(m_holder->Release());
}

TEST_F(BusyLock, AdmitsOneAtATimeAfterAnOwnerWasKilledWhileItWasHeld)
{
    const auto killed = StartOwner();
    const CDisplay display(Configuration()); // stays attached all along
    CLockHolder holder;
    killed->Process().Signal(SIGKILL);
    EXPECT_EQ(killed->Wait(), 128 + SIGKILL);
    EXPECT_TRUE(holder.Release());
    EXPECT_EQ(m_directory.SemaphoreValue(), 1); // although there is no owner

    const auto owner = StartOwner();
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
    owner->Process().Signal(SIGTERM);
    EXPECT_EQ(owner->Wait(), 0);
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
}

TEST_F(BusyLock, IsNamedWithItsHolderInTheLog)
{
    const auto owner = StartOwner();
    CLockHolder holder;
    Report("raise 0x40C09 9");
    ASSERT_TRUE(owner->SaysInTime("warning: the shared table is locked by process "));
    EXPECT_TRUE(holder.Release());
    EXPECT_TRUE(owner->SaysInTime("info: the shared table is free again"));
}

TEST_F(BusyLock, AdmitsOneAtATimeWithAReaderStoppedWhileOwnersComeAndGo)
{
    auto owner = StartOwner();
    CLockHolder reader;
    reader.Process().Signal(SIGSTOP);
    for (int round = 1; round <= 3; ++round)
    {
        Report("confirm raise 0x40C09 9 clear 0x40C09 9");
        Kill(*owner);
        owner = StartOwner();
        EXPECT_EQ(Record(kLinkSensor).counter1, round);
    }
    reader.Process().Signal(SIGCONT);
    EXPECT_TRUE(reader.Release()); // one too much
    EXPECT_TRUE(owner->SaysInTime("warning: the lock of the shared table was too high by 1"));
    EXPECT_TRUE(WaitUntil([&] { return m_directory.SemaphoreValue() == 1; }));
    CLockHolder another; // keeps everybody else out again
    EXPECT_EQ(m_directory.SemaphoreValue(), 0);
    Report("confirm raise 0x4281B 2");
    EXPECT_EQ(Record(kDataSensor).flags, 0);
    EXPECT_TRUE(another.Release());
    EXPECT_TRUE(WaitUntil([&] { return Record(kDataSensor).flags == kRaisedFlag; }));
}
