#include "unit/Common/limits/FakeClock.h"
#include "unit/Common/view/ViewFixture.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <random>
#include <tuple>

// The clock may have been set back while the owner was away. A new owner's process knows nothing of the times
// that the one before has given out, except from the records that it puts back.

namespace
{

using namespace Faultkeeper;

constexpr int kErrors = 5;

/// What an owner brings back from the life before.
enum ERemembered
{
    erDetails, ///< counters and times
    erState    ///< these and what was raised
};

/// The owner in a process of its own, which does what it is told.
class OwnerProcess
{
public:
    OwnerProcess(const CErrorDatabase& database, ERemembered what, const std::vector<SErrorEntry>& remembered,
                 std::int64_t clock)
    {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends), 0);
        m_process = fork();
        EXPECT_NE(m_process, -1);
        if (m_process == 0)
            Own(database, what, remembered, clock);
        close(m_ends[1]);
        Expect('!');
    }

    ~OwnerProcess()
    {
        close(m_ends[0]); // the process reads an end and leaves
        int status = 0;
        EXPECT_EQ(waitpid(m_process, &status, 0), m_process);
        EXPECT_EQ(status, 0);
    }

    OwnerProcess(const OwnerProcess&) = delete;
    OwnerProcess& operator=(const OwnerProcess&) = delete;

    void Raise(int number) { Tell('A' + number); }
    void Clear(int number) { Tell('a' + number); }

private:
    void Tell(int order)
    {
        const char byte = static_cast<char>(order);
        EXPECT_EQ(write(m_ends[0], &byte, 1), 1);
        Expect(byte);
    }

    void Expect(char answer)
    {
        char byte = 0;
        EXPECT_EQ(read(m_ends[0], &byte, 1), 1);
        EXPECT_EQ(byte, answer);
    }

    [[noreturn]] void Own(const CErrorDatabase& database, ERemembered what,
                          const std::vector<SErrorEntry>& remembered, std::int64_t clock)
    {
        close(m_ends[0]);
        const FakeClock standing(clock);
        CErrorDatabaseView owner(true, eViewOwner);
        bool good =
            owner.LoadErrors(database) && BringBack(owner, what, remembered) && owner.FaultkeeperReady(true);
        for (char byte = '!'; good && write(m_ends[1], &byte, 1) == 1 && read(m_ends[1], &byte, 1) == 1;)
        {
            const int number = byte >= 'a' ? byte - 'a' : byte - 'A';
            const int code = NumberedErrors::Code(number);
            good = byte >= 'a' ? owner.ClearError(code, number) : owner.RaiseError(code, number);
        }
        _exit(good ? 0 : 1);
    }

    static bool BringBack(CErrorDatabaseView& owner, ERemembered what,
                          const std::vector<SErrorEntry>& remembered)
    {
        if (what == erDetails)
            return owner.UpdateErrorDetails(remembered); // drops what lies in the future
        for (const SErrorEntry& entry : remembered)
            Core::Time::NotBefore(std::max(entry.raisedTime, entry.clearedTime));
        return owner.RestoreErrors(remembered);
    }

    int m_ends[2] = {-1, -1};
    pid_t m_process = -1;
};

/// The parameters are how far the clock is set on and back, and a seed.
class ViewRestartTest : public ViewFixture,
                        public testing::WithParamInterface<std::tuple<std::int64_t, unsigned>>
{
protected:
    ViewRestartTest() : ViewFixture(kErrors), m_random(std::get<1>(GetParam())) {}

    /// The state of a display, which must be the table's.
    void CheckDisplay(CErrorDatabaseView& view, CErrorDatabase& database)
    {
        view.Synchronise(database);
        for (int number = 0; number < kErrors; ++number)
            ASSERT_EQ(database.GetErrorList()[static_cast<std::size_t>(number)].Active(),
                      (Record(number).flags & kRaisedFlag) != 0)
                << number;
    }

    /// One life of the owner, watched by a display that starts with it.
    /// @return what is worth remembering
    std::vector<SErrorEntry> Live(ERemembered what, const std::vector<SErrorEntry>& remembered,
                                  std::int64_t clock)
    {
        OwnerProcess owner(m_database, what, remembered, clock);
        CErrorDatabase database(m_directory.Prefix());
        CErrorDatabaseView view(false, eViewReader);
        CheckDisplay(view, database);
        for (int change = 0; change < 40; ++change)
        {
            const int number = static_cast<int>(m_random() % kErrors);
            if (m_random() % 2 == 0)
                owner.Raise(number);
            else
                owner.Clear(number);
            CheckDisplay(view, database);
        }
        std::vector<SErrorEntry> entries;
        view.RetrieveAllErrors(entries);
        return entries;
    }

    /// The clock is set on, back, and farther back between the lives.
    void LiveFourTimes(ERemembered what)
    {
        const std::int64_t today = 1790000000;
        const std::int64_t seconds = std::get<0>(GetParam());
        std::vector<SErrorEntry> remembered;
        for (const std::int64_t clock : {today, today + seconds, today, today - seconds})
        {
            remembered = Live(what, remembered, clock);
            if (HasFatalFailure())
                return;
        }
    }

    std::mt19937 m_random;
};

TEST_P(ViewRestartTest, DisplaysOfANewOwnerShowItsTableHoweverTheClockWasSet)
{
    LiveFourTimes(erDetails);
}

TEST_P(ViewRestartTest, DisplaysOfAnOwnerThatGoesOnWhereItWasShowItsTableHoweverTheClockWasSet)
{
    LiveFourTimes(erState);
}

INSTANTIATE_TEST_SUITE_P(SecondsAndSeeds, ViewRestartTest,
                         testing::Combine(testing::Values(0, 1, 3600, 315532800,
                                                          1789999999), // up to 56 years
                                          testing::Range(0u, 3u)));

} // namespace
