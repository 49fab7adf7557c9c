#include "unit/Common/view/ViewFixture.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>

using namespace Faultkeeper;
using NumberedErrors::Code;

// Views in processes of their own, as in the field.

namespace
{

/// A process that does `action` and ends; both sides can wait for each other.
class ChildProcess
{
public:
    explicit ChildProcess(const std::function<bool(ChildProcess&)>& action)
    {
        if (pipe(m_toChild.data()) != 0 || pipe(m_toParent.data()) != 0)
            throw std::runtime_error("no pipe");
        m_child = fork();
        if (m_child == 0)
        {
            m_inChild = true;
            close(m_toChild[1]); // so that the end of the parent is seen
            close(m_toParent[0]);
            _exit(action(*this) ? 0 : 1);
        }
        close(m_toChild[0]);
        close(m_toParent[1]);
    }

    ~ChildProcess()
    {
        close(m_toChild[1]);
        close(m_toParent[0]);
        if (m_child != 0)
            End();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Lets the other side go on from its Wait().
    bool Tell() const { return write(m_inChild ? m_toParent[1] : m_toChild[1], "x", 1) == 1; }

    /// Until the other side tells. @return false if it ended instead
    bool Wait() const
    {
        char told = 0;
        return read(m_inChild ? m_toChild[0] : m_toParent[0], &told, 1) == 1;
    }

    /// Until the child has ended. @return what its action returned
    bool End()
    {
        int status = -1;
        const bool ended = waitpid(m_child, &status, 0) == m_child;
        m_child = 0;
        return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    std::array<int, 2> m_toChild = {};
    std::array<int, 2> m_toParent = {};
    pid_t m_child = 0;
    bool m_inChild = false;
};

class ErrorDatabaseViewProcessesTest : public ViewFixture
{
protected:
    bool Active(int number) const
    {
        return m_database.RetrieveError(Code(number), NumberedErrors::Type(number))->Active();
    }
};

TEST_F(ErrorDatabaseViewProcessesTest, AReaderFollowsAnOwnerInAnotherProcess)
{
    ChildProcess owner(
        [this](ChildProcess& parent)
        {
            CErrorDatabaseView view(true, eViewOwner);
            bool done =
                view.LoadErrors(m_database) && view.FaultkeeperReady(true) && view.RaiseError(Code(1), 1);
            done = parent.Tell() && parent.Wait() && view.ClearError(Code(1), 1) &&
                   view.RaiseError(Code(2), 2) && done;
            done = parent.Tell() && parent.Wait() && view.ClearErrors({NumberedErrors::Id(2)}) && done;
            return parent.Tell() && parent.Wait() && done;
        });
    ASSERT_TRUE(owner.Wait());
    CErrorDatabaseView reader(false, eViewReader);
    EXPECT_EQ(reader.Synchronise(m_database), 1);
    EXPECT_TRUE(Active(1));
    owner.Tell();
    ASSERT_TRUE(owner.Wait());
    EXPECT_EQ(reader.Synchronise(m_database), 1);
    EXPECT_FALSE(Active(1));
    EXPECT_TRUE(Active(2));
    owner.Tell();
    ASSERT_TRUE(owner.Wait());
    EXPECT_EQ(reader.Synchronise(m_database), 2);
    EXPECT_FALSE(Active(2));
    owner.Tell();
    EXPECT_TRUE(owner.End());
}

TEST_F(ErrorDatabaseViewProcessesTest, ARestartedOwnerIsFollowedFromTheStart)
{
    CErrorDatabaseView reader(false, eViewReader);
    for (const int raised : {1, 3})
    {
        ChildProcess owner(
            [this, raised](ChildProcess& parent)
            {
                CErrorDatabaseView view(true, eViewOwner);
                const bool done = view.LoadErrors(m_database) && parent.Tell() && parent.Wait() &&
                                  view.FaultkeeperReady(true) && view.RaiseError(Code(raised), raised);
                return parent.Tell() && parent.Wait() && done;
            });
        ASSERT_TRUE(owner.Wait());
        EXPECT_EQ(reader.Synchronise(m_database), 0) << "the new table is not ready yet";
        owner.Tell();
        ASSERT_TRUE(owner.Wait());
        EXPECT_EQ(reader.Synchronise(m_database), 1);
        EXPECT_TRUE(Active(raised));
        owner.Tell();
        EXPECT_TRUE(owner.End());
    }
}

TEST_F(ErrorDatabaseViewProcessesTest, OneAtATimeHoldsTheLock)
{
    constexpr int kProcesses = 4;
    constexpr int kTurns = 400;
    const CErrorDatabaseView creator(true, eViewOwner);
    Header().count = 1;
    const auto countUp = [this](ChildProcess&)
    {
        CErrorDatabaseView view(false, eViewReader);
        volatile std::uint16_t& counter = Record(0).counter1;
        for (int turn = 0; turn < kTurns; ++turn)
        {
            if (!view.GetLock(true))
                return false;
            const std::uint16_t seen = counter;
            sched_yield(); // time for others to get in between, if they could
            counter = static_cast<std::uint16_t>(seen + 1);
            if (!view.ReleaseLock())
                return false;
        }
        return true;
    };
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (int process = 0; process < kProcesses; ++process)
        processes.push_back(std::make_unique<ChildProcess>(countUp));
    for (const auto& process : processes)
        EXPECT_TRUE(process->End());
    EXPECT_EQ(Record(0).counter1, kProcesses * kTurns);
    EXPECT_EQ(m_directory.SemaphoreValue(), 1);
}

} // namespace
