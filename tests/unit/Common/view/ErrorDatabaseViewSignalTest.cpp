#include "support/CapturedOutput.h"
#include "unit/Common/view/ReaderFixture.h"

#include "Common/view/TableSignal.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <future>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

using namespace Faultkeeper;
using NumberedErrors::Code;
using NumberedErrors::Id;
using NumberedErrors::Type;

// Displays sleep until the owner has published something.

namespace
{

constexpr int kLongMilliseconds = 30000; // much longer than anything here takes

class ErrorDatabaseViewSignalTest : public ReaderFixture
{
protected:
    std::uint32_t& Changes() { return *reinterpret_cast<std::uint32_t*>(&Header().lastRaiseTime); }

    /// How often the table was counted on by `action`.
    std::uint32_t CountedBy(const std::function<void()>& action)
    {
        const std::uint32_t before = Changes();
        action();
        return Changes() - before;
    }

    /// The lock may be busy while a display copies.
    static void Until(const std::function<bool()>& done)
    {
        while (!done())
            std::this_thread::yield();
    }

    SErrorEntry Entry(int number) const
    {
        SErrorEntry entry;
        entry.problemCode = Code(number);
        entry.problemType = static_cast<std::int16_t>(Type(number));
        return entry;
    }
};

// ---- The count of changes

TEST_F(ErrorDatabaseViewSignalTest, EveryOperationThatChangesTheTableCountsOne)
{
    EXPECT_EQ(CountedBy([&] { Raise(1); }), 1u);
    EXPECT_EQ(CountedBy([&] { Clear(1); }), 1u);
    EXPECT_EQ(CountedBy([&] { m_owner.RaiseErrors({Id(1), Id(2), Id(3)}); }), 1u);
    EXPECT_EQ(CountedBy([&] { m_owner.ClearErrors({Id(1), Id(2)}); }), 1u);
    EXPECT_EQ(CountedBy(
                  [&] {
                      m_owner.ApplyChanges({{Code(1), Type(1), true}, {Code(2), Type(2), true}});
                  }),
              1u);
    EXPECT_EQ(CountedBy([&] { m_owner.UpdateErrorDetails({Entry(1)}); }), 1u);
    EXPECT_EQ(CountedBy([&] { m_owner.FaultkeeperReady(false); }), 1u);
    EXPECT_EQ(CountedBy([&] { m_owner.RestoreErrors({Entry(1)}); }), 1u);
    EXPECT_EQ(CountedBy([&] { m_owner.LoadErrors(m_database); }), 1u);
}

TEST_F(ErrorDatabaseViewSignalTest, WhatChangesNothingIsNotCounted)
{
    Raise(1);
    EXPECT_EQ(CountedBy([&] { Raise(1); }), 0u);
    EXPECT_EQ(CountedBy([&] { Clear(2); }), 0u);
    EXPECT_EQ(CountedBy([&] { Raise(99); }), 0u);
    EXPECT_EQ(CountedBy([&] { m_owner.RaiseErrors({Id(1), Id(99)}); }), 0u);
    EXPECT_EQ(CountedBy([&] { m_owner.ClearErrors({}); }), 0u);
    EXPECT_EQ(CountedBy([&] { m_owner.ApplyChanges({{Code(1), Type(1), true}}); }), 0u);
    EXPECT_EQ(CountedBy([&] { m_owner.UpdateErrorDetails({Entry(99)}); }), 0u);
    m_owner.FaultkeeperReady(false);
    EXPECT_EQ(CountedBy([&] { m_owner.RestoreErrors({Entry(99)}); }), 0u);
}

TEST_F(ErrorDatabaseViewSignalTest, AnOwnerLooksAnewWhereErrorsStandOnceAnotherHasCounted)
{
    Raise(3);
    Clear(3);
    Support::CConfigurationBuilder builder;
    for (const int number : {3, 1, 2, 3})
        builder.Leaf(NumberedErrors::Name(number));
    const Support::CFreshDirectory directory;
    builder.WriteTo(directory.Prefix());
    CErrorDatabaseView another(false, eViewOwner);
    ASSERT_TRUE(another.LoadErrors(CErrorDatabase(directory.Prefix())));
    ASSERT_TRUE(Raise(3));
    EXPECT_EQ(Record(0).flags, kRaisedFlag) << "the first of two records with this identifier";
    EXPECT_EQ(Record(3).flags, 0);
}

TEST_F(ErrorDatabaseViewSignalTest, ANewOwnersTableStartsFromZero)
{
    const CErrorDatabaseView another(true, eViewOwner);
    EXPECT_EQ(Changes(), 0u);
}

TEST_F(ErrorDatabaseViewSignalTest, TheCountGoesOnFromZeroAfterItsLargestValue)
{
    *reinterpret_cast<std::uint32_t*>(&Header().lastRaiseTime) = UINT32_MAX;
    Raise(1);
    EXPECT_EQ(Changes(), 0u);
}

// ---- Looking without waiting

TEST_F(ErrorDatabaseViewSignalTest, BeforeTheFirstCopyThereIsSomethingToCopy)
{
    EXPECT_TRUE(m_reader.WaitForChange(0));
}

TEST_F(ErrorDatabaseViewSignalTest, AfterACopyThereIsNothingUntilTheNextChange)
{
    Synchronise();
    EXPECT_FALSE(m_reader.WaitForChange(0));
    EXPECT_FALSE(m_reader.WaitForChange(5));
    Raise(1);
    EXPECT_TRUE(m_reader.WaitForChange(0));
    Synchronise();
    EXPECT_FALSE(m_reader.WaitForChange(0));
}

TEST_F(ErrorDatabaseViewSignalTest, RestoredDetailsAreAChangeThoughNoTimeOfTheHeaderMoves)
{
    Synchronise();
    m_owner.UpdateErrorDetails({Entry(1)});
    EXPECT_TRUE(m_reader.WaitForChange(0));
}

TEST_F(ErrorDatabaseViewSignalTest, ANewOwnerThatHasCountedAsFarIsNoticed)
{
    Raise(1);
    Synchronise();
    CErrorDatabaseView another(true, eViewOwner);
    another.LoadErrors(m_database);
    another.FaultkeeperReady(true);
    another.RaiseError(Code(1), Type(1));
    EXPECT_TRUE(m_reader.WaitForChange(0));
}

TEST_F(ErrorDatabaseViewSignalTest, LookingNeedsNoLock)
{
    Synchronise();
    Raise(1);
    ASSERT_TRUE(m_owner.GetLock(false));
    EXPECT_TRUE(m_reader.WaitForChange(0));
    EXPECT_TRUE(m_owner.ReleaseLock());
}

TEST_F(ErrorDatabaseViewSignalTest, AnOwningViewIsRefused)
{
    EXPECT_FALSE(m_owner.WaitForChange(0));
    EXPECT_FALSE(m_owner.WaitForChange(-1));
}

// ---- Sleeping

TEST(TableSignalTest, WhoHasMissedAChangeDoesNotSleep)
{
    SStatusTable table = {};
    TableSignal::Count(table);
    EXPECT_TRUE(TableSignal::Sleep(table, 0, -1)) << "it would be for ever";
    EXPECT_FALSE(TableSignal::Sleep(table, TableSignal::Changes(table), 1)) << "the time is over";
}

const std::string kSleeps = "voluntary_ctxt_switches:";

/// A line of what the system tells of a thread of this process; "" once it has ended.
std::string Status(const std::string& thread, const std::string& name)
{
    std::ifstream file("/proc/self/task/" + thread + "/status");
    for (std::string line; std::getline(file, line);)
    {
        if (line.compare(0, name.size(), name) == 0)
            return line;
    }
    return "";
}

TEST_F(ErrorDatabaseViewSignalTest, TheShortestWaitIsSpentAsleep)
{
    Synchronise();
    const std::string thread = std::to_string(syscall(SYS_gettid));
    const std::string sleeps = Status(thread, kSleeps);
    Until(
        [&]
        {
            EXPECT_FALSE(m_reader.WaitForChange(1));
            return Status(thread, kSleeps) != sleeps;
        });
}

/// A reader that waits without end in a thread of its own, and is asleep when a test begins.
class SleepingReaderTest : public ErrorDatabaseViewSignalTest
{
protected:
    SleepingReaderTest() { FallAsleep(); }

    void FallAsleep()
    {
        Synchronise();
        m_thread = 0;
        m_woken = std::async(std::launch::async,
                             [this]
                             {
                                 m_thread = static_cast<pid_t>(syscall(SYS_gettid));
                                 return m_reader.WaitForChange(-1);
                             });
        Until([this] { return Asleep(); });
    }

    std::string Sleeps() const { return Status(std::to_string(m_thread), kSleeps); }
    bool Asleep() const
    {
        return m_thread != 0 && Status(std::to_string(m_thread), "State:").find('S', 6) != std::string::npos;
    }

    bool Awake(int timeoutMilliseconds) const
    {
        return m_woken.wait_for(std::chrono::milliseconds(timeoutMilliseconds)) == std::future_status::ready;
    }

    void WakeForNothing() { syscall(SYS_futex, &Header().lastRaiseTime, FUTEX_WAKE, 1, nullptr, nullptr, 0); }

    void LetGo()
    {
        ++Changes();
        WakeForNothing();
    }

    std::future<bool> m_woken;
    std::atomic<pid_t> m_thread{0};
};

TEST_F(SleepingReaderTest, IsWokenByEveryOperationThatChangesTheTable)
{
    const std::vector<std::pair<std::string, std::function<void()>>> operations = {
        {"RaiseError", [this] { Raise(2); }},
        {"ClearError", [this] { Clear(2); }},
        {"RaiseErrors",
         [this] {
             m_owner.RaiseErrors({Id(1), Id(2)});
         }},
        {"ClearErrors",
         [this] {
             m_owner.ClearErrors({Id(1), Id(2)});
         }},
        {"ApplyChanges",
         [this] {
             m_owner.ApplyChanges({{Code(1), Type(1), true}});
         }},
        {"UpdateErrorDetails", [this] { m_owner.UpdateErrorDetails({Entry(1)}); }},
        {"LoadErrors", [this] { m_owner.LoadErrors(m_database); }},
        {"FaultkeeperReady", [this] { m_owner.FaultkeeperReady(false); }},
        {"RestoreErrors", [this] { m_owner.RestoreErrors({Entry(1)}); }},
        {"another owner", [] { const CErrorDatabaseView another(true, eViewOwner); }},
    };
    for (const auto& [name, change] : operations)
    {
        SCOPED_TRACE(name);
        change();
        EXPECT_TRUE(Awake(kLongMilliseconds));
        LetGo(); // or a test that fails would never end
        EXPECT_TRUE(m_woken.get());
        FallAsleep();
    }
    LetGo();
}

TEST_F(SleepingReaderTest, SleepsOnWhenItIsWokenForNothing)
{
    const std::string sleeps = Sleeps();
    WakeForNothing();
    Until([&] { return Awake(0) || (Asleep() && Sleeps() != sleeps); });
    EXPECT_FALSE(Awake(0));
    Raise(2);
    EXPECT_TRUE(m_woken.get());
}

TEST_F(ErrorDatabaseViewSignalTest, AReaderThatSleepsBetweenItsCopiesGetsTheLastWord)
{
    constexpr int kRounds = 200;
    Synchronise();
    int sleptInVain = 0;
    std::thread display(
        [&]
        {
            while (Active() != "3")
            {
                sleptInVain += m_reader.WaitForChange(kLongMilliseconds) ? 0 : 1;
                Synchronise();
            }
        });
    for (int round = 0; round < kRounds; ++round)
    {
        Until([&] { return Raise(1); });
        Until([&] { return Clear(1); });
    }
    Until([&] { return Raise(3); });
    display.join();
    EXPECT_EQ(sleptInVain, 0);
}

extern "C" void IgnoreSignal(int) {}

TEST_F(ErrorDatabaseViewSignalTest, ASignalEndsTheWait)
{
    Synchronise();
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = &IgnoreSignal; // without SA_RESTART
    sigaction(SIGUSR1, &action, &before);
    std::atomic<bool> ended(false);
    bool woken = true;
    std::thread display(
        [&]
        {
            woken = m_reader.WaitForChange(kLongMilliseconds);
            ended = true;
        });
    const pthread_t thread = display.native_handle();
    while (!ended)
    {
        pthread_kill(thread, SIGUSR1); // one that comes before the sleep is lost, so more than one
        usleep(1000);
    }
    display.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_FALSE(woken);
}

} // namespace
