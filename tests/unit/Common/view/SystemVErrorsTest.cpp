#include "support/CapturedOutput.h"
#include "unit/Common/view/SystemCalls.h"
#include "unit/Common/view/ViewFixture.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

// Every error that the system documents for a call that a view makes, given to that call.
namespace
{

using namespace Faultkeeper;
using Support::WarnedBy;

/// An error with the name that the manual gives it.
struct SError
{
    const char* name;
    int number;
};

#define ERROR(name)                                                                                          \
    {                                                                                                        \
#name, name                                                                                          \
    }
const SError kErrors[] = {ERROR(E2BIG),  ERROR(EACCES), ERROR(EAGAIN),    ERROR(EBADF),        ERROR(EEXIST),
                          ERROR(EFAULT), ERROR(EFBIG),  ERROR(EIDRM),     ERROR(EINTR),        ERROR(EINVAL),
                          ERROR(ELOOP),  ERROR(ENFILE), ERROR(ENOENT),    ERROR(ENAMETOOLONG), ERROR(ENOMEM),
                          ERROR(ENOSPC), ERROR(ENOSYS), ERROR(EOVERFLOW), ERROR(ENOTDIR),      ERROR(EPERM),
                          ERROR(ERANGE), ERROR(EIO)};
#undef ERROR

/// A call with the errors that its manual page lists: ftok may give those of stat.
struct SCall
{
    const char* name;
    const char* shown; ///< as support staff find it in logs
    std::vector<std::string> errors;
};

const SCall kMakingCalls[] = {
    {"ftok",
     "ftok",
     {"EACCES", "EBADF", "EFAULT", "EINVAL", "EIO", "ELOOP", "ENAMETOOLONG", "ENOENT", "ENOMEM", "ENOTDIR",
      "EOVERFLOW"}},
    {"shmget",
     "shmeget",
     {"EACCES", "EEXIST", "EINVAL", "ENFILE", "ENOENT", "ENOMEM", "ENOSPC", "ENOSYS", "EPERM"}},
    {"shmat", "shmat", {"EACCES", "EIDRM", "EINVAL", "ENOMEM", "ENOSYS"}},
};

const std::vector<std::string> kSemaphoreMakingErrors = {"EACCES", "EEXIST", "EINVAL", "ENOENT",
                                                         "ENOMEM", "ENOSPC", "ENOSYS"};

const std::vector<std::string> kSemaphoreErrors = {"E2BIG", "EACCES", "EFAULT", "EFBIG",  "EIDRM",
                                                   "EINTR", "EINVAL", "ENOMEM", "ENOSYS", "ERANGE"};

int NumberOf(const std::string& name)
{
    for (const SError& error : kErrors)
    {
        if (name == error.name)
            return error.number;
    }
    return 0;
}

/// The line that the system prints for a call that has failed.
std::string Line(const std::string& operation, const std::string& call, const std::string& error)
{
    return "CErrorDatabaseView::" + operation + " " + call + ": " + std::strerror(NumberOf(error)) + "\n";
}

struct SFailingCall
{
    std::string call;
    std::string shown;
    std::string error;
};

std::ostream& operator<<(std::ostream& out, const SFailingCall& failing)
{
    return out << failing.call << " " << failing.error;
}

std::string TitleOf(const testing::TestParamInfo<SFailingCall>& info)
{
    return info.param.call + "_" + info.param.error;
}

std::vector<SFailingCall> MakingFailures()
{
    std::vector<SFailingCall> failures;
    for (const SCall& call : kMakingCalls)
    {
        for (const std::string& error : call.errors)
            failures.push_back({call.name, call.shown, error});
    }
    return failures;
}

std::vector<SFailingCall> FailuresOf(const std::string& call, const std::vector<std::string>& errors)
{
    std::vector<SFailingCall> failures;
    for (const std::string& error : errors)
        failures.push_back({call, call, error});
    return failures;
}

class SystemVErrorsTest : public ReadyTableFixture,
                          public CErrorDbViewChanged,
                          public testing::WithParamInterface<SFailingCall>
{
protected:
    SystemVErrorsTest()
    {
        Raise(0);
        SystemCalls::Log();
    }

    void ErrorEntryChanged(const SErrorEntry&) override { ADD_FAILURE() << "a listener was called"; }

    /// A view whose construction meets the failure.
    /// @return what it printed
    std::string Make(EViewType type, bool create)
    {
        SystemCalls::Fail(GetParam().call, NumberOf(GetParam().error));
        return WarnedBy([&] { m_view = std::make_unique<CErrorDatabaseView>(create, type); });
    }

    /// What every operation of a view answers, one after the other. A listener that is called fails the test.
    std::string Answers(CErrorDatabaseView& view)
    {
        view.SetCallback(this);
        std::string answers;
        const auto add = [&answers](int answer) { answers += std::to_string(answer) + " "; };
        const std::vector<std::pair<int, int>> ids = {NumberedErrors::Id(0), NumberedErrors::Id(1)};
        std::vector<SErrorEntry> entries(1, Record(0));
        SErrorEntry entry;
        entry.counter1 = 4711;
        int code = 4711;
        int type = 4711;
        add(view.Failed());
        add(view.FaultkeeperReady());
        add(view.FaultkeeperReady(true));
        add(view.FaultkeeperReady(false));
        add(view.LoadErrors(m_database));
        add(view.RaiseError(ids[1].first, ids[1].second));
        add(view.ClearError(ids[0].first, ids[0].second));
        add(view.RaiseErrors(ids));
        add(view.ClearErrors(ids));
        add(view.UpdateErrorDetails(entries));
        add(view.Synchronise(m_database));
        view.Initialise();
        add(view.UpdateErrorStatus(m_database, true));
        view.RetrieveAllErrors(entries);
        add(static_cast<int>(entries.size()) - 1);
        view.RetrieveErrorDetails(ids[0].first, ids[0].second, entry);
        add(entry.counter1 - 4711);
        add(view.RetrieveErrorIndex(ids[0].first, ids[0].second));
        add(view.RetrieveErrorFromIndex(0, code, type));
        add(code - 4711);
        add(type - 4711);
        return answers;
    }

    /// Expects that a view has failed for good: it answers its refusals, touches nothing and says no more.
    void ExpectInert(CErrorDatabaseView& view)
    {
        const std::string bytes = Bytes();
        SystemCalls::Log();
        std::string log;
        std::string answers;
        EXPECT_EQ(WarnedBy(
                      [&]
                      {
                          answers = Answers(view);
                          log = SystemCalls::Log();
                      }),
                  "");
        EXPECT_EQ(answers, "1 0 0 0 0 0 0 0 0 0 0 0 0 0 -1 -1 0 0 ");
        EXPECT_EQ(log, "") << "no call is made any more";
        EXPECT_EQ(Bytes(), bytes);
        EXPECT_FALSE(m_database.RetrieveError(NumberedErrors::Code(0), 0)->Active());
    }

    const SystemCalls m_calls;
    std::unique_ptr<CErrorDatabaseView> m_view;
};

// ---- Making a view

class MakingAViewTest : public SystemVErrorsTest
{
};

TEST_P(MakingAViewTest, ThatCannotBeDoneIsToldOnceAndLeavesItInert)
{
    for (const bool create : {false, true})
    {
        for (const EViewType type : {eViewReader, eViewOwner})
        {
            const std::string bytes = Bytes();
            EXPECT_EQ(Make(type, create), Line("CErrorDatabaseView", GetParam().shown, GetParam().error));
            EXPECT_EQ(Bytes(), bytes) << "the table of those who could attach stays as it is";
            ExpectInert(*m_view);
        }
    }
    EXPECT_FALSE(m_owner.Failed());
}

INSTANTIATE_TEST_SUITE_P(Failing, MakingAViewTest, testing::ValuesIn(MakingFailures()), TitleOf);

// ---- A semaphore that is not there shows when it is used

class WithoutASemaphoreTest : public SystemVErrorsTest
{
};

TEST_P(WithoutASemaphoreTest, AViewFailsAtItsFirstLock)
{
    for (const EViewType type : {eViewReader, eViewOwner})
    {
        EXPECT_EQ(Make(type, false), "");
        EXPECT_FALSE(m_view->Failed());
        EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(m_view->FaultkeeperReady()); }),
                  Line("GetLock", "semop", "EINVAL"));
        ExpectInert(*m_view);
    }
}

TEST_P(WithoutASemaphoreTest, ACreatorFailsWhenItMakesTheLockAvailable)
{
    EXPECT_EQ(Make(eViewOwner, true), Line("ReleaseLock", "semop", "EINVAL"));
    ExpectInert(*m_view);
}

INSTANTIATE_TEST_SUITE_P(Failing, WithoutASemaphoreTest,
                         testing::ValuesIn(FailuresOf("semget", kSemaphoreMakingErrors)), TitleOf);

// ---- Taking and giving back the lock

class UsingTheLockTest : public SystemVErrorsTest
{
protected:
    void Fail(int passed) { SystemCalls::Fail("semop", NumberOf(GetParam().error), 1, passed); }
};

TEST_P(UsingTheLockTest, AViewThatCannotTakeItIsInert)
{
    for (const bool wait : {false, true})
    {
        CErrorDatabaseView view(false, eViewReader);
        Fail(0);
        EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(view.GetLock(wait)); }),
                  Line("GetLock", "semop", GetParam().error));
        ExpectInert(view);
        EXPECT_EQ(m_directory.SemaphoreValue(), 1);
    }
}

TEST_P(UsingTheLockTest, AViewThatCannotGiveItBackIsInert)
{
    CErrorDatabaseView view(false, eViewReader);
    ASSERT_TRUE(view.GetLock(false));
    Fail(0);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(view.ReleaseLock()); }),
              Line("ReleaseLock", "semop", GetParam().error));
    ExpectInert(view);
}

TEST_P(UsingTheLockTest, AnOperationThatCannotTakeItDoesNothing)
{
    const std::string bytes = Bytes();
    Fail(0);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(Raise(1)); }), Line("GetLock", "semop", GetParam().error));
    EXPECT_EQ(Bytes(), bytes);
    ExpectInert(m_owner);
}

TEST_P(UsingTheLockTest, ASynchronisationThatCannotTakeItReplaysNothing)
{
    CErrorDatabaseView view(false, eViewReader);
    view.SetCallback(this);
    Fail(0);
    EXPECT_EQ(WarnedBy([&] { EXPECT_EQ(view.Synchronise(m_database), 0); }),
              Line("GetLock", "semop", GetParam().error));
    ExpectInert(view);
}

TEST_P(UsingTheLockTest, AnOperationThatCannotGiveItBackIsTheLast)
{
    Fail(1);
    EXPECT_EQ(WarnedBy([&] { Raise(1); }), Line("ReleaseLock", "semop", GetParam().error));
    EXPECT_EQ(Record(1).flags, kRaisedFlag) << "what was done under the lock stays done";
    ExpectInert(m_owner);
}

TEST_P(UsingTheLockTest, ACreatorThatCannotMakeItAvailableIsInert)
{
    Fail(0);
    EXPECT_EQ(WarnedBy([&] { m_view = std::make_unique<CErrorDatabaseView>(true, eViewOwner); }),
              Line("ReleaseLock", "semop", GetParam().error));
    ExpectInert(*m_view);
}

INSTANTIATE_TEST_SUITE_P(Failing, UsingTheLockTest, testing::ValuesIn(FailuresOf("semop", kSemaphoreErrors)),
                         TitleOf);

// ---- EAGAIN is no failure: the lock is busy, and may be so four times before it is free

TEST_F(SystemVErrorsTest, ALockThatIsBusyFourTimesIsTakenAtTheFifth)
{
    SystemCalls::Fail("semop", EAGAIN, 4);
    EXPECT_EQ(WarnedBy([&] { EXPECT_TRUE(Raise(1)); }), "");
    EXPECT_FALSE(m_owner.Failed());
}

TEST_F(SystemVErrorsTest, ALockThatIsBusyFiveTimesRefusesOneOperation)
{
    SystemCalls::Fail("semop", EAGAIN, 5);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(Raise(1)); }), "unable to obtain lock\n");
    EXPECT_FALSE(m_owner.Failed());
    EXPECT_EQ(WarnedBy([&] { EXPECT_TRUE(Raise(1)); }), "");
}

TEST_F(SystemVErrorsTest, ALockThatIsBusyAtFirstAndThenBrokenFailsTheView)
{
    SystemCalls::Fail("semop", EAGAIN, 4);
    m_directory.RemoveTable();
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(m_owner.GetLock(false)); }), Line("GetLock", "semop", "EINVAL"));
    EXPECT_TRUE(m_owner.Failed());
}

} // namespace
