#include "support/CapturedOutput.h"
#include "unit/Common/view/SystemCalls.h"
#include "unit/Common/view/ViewFixture.h"

#include <Faultkeeper/ErrorDbViewChanged.h>

#include <sys/sem.h>
#include <sys/shm.h>

#include <cerrno>
#include <memory>

using namespace Faultkeeper;
using Support::WarnedBy;

namespace
{

/// One operation of a view: what it answers when it refuses, and which views refuse it.
struct SOperation
{
    const char* name;
    std::string (*call)(CErrorDatabaseView&, CErrorDatabase&);
    const char* refusal;
    const char* answer; // of a view that does not refuse
    bool forOwner;
    bool forReader;
    bool onceReady;
    bool locks;
};

std::string Text(bool result)
{
    return result ? "true" : "false";
}

std::string Details(const CErrorDatabaseView& view)
{
    SErrorEntry entry;
    entry.counter1 = 4711;
    view.RetrieveErrorDetails(NumberedErrors::Code(0), 0, entry);
    return entry.counter1 == 4711 ? "untouched" : "found";
}

std::string AllErrors(CErrorDatabaseView& view)
{
    std::vector<SErrorEntry> entries(1);
    view.RetrieveAllErrors(entries);
    return std::to_string(entries.size() - 1) + " appended";
}

std::string FromIndex(CErrorDatabaseView& view)
{
    int code = 4711;
    int type = 4712;
    const int result = view.RetrieveErrorFromIndex(1, code, type);
    return std::to_string(result) + ", " + std::to_string(code) + ":" + std::to_string(type);
}

const std::vector<std::pair<int, int>> kFirstTwo = {NumberedErrors::Id(0), NumberedErrors::Id(1)};

const SOperation kOperations[] = {
    {"AskReady", [](CErrorDatabaseView& view, CErrorDatabase&) { return Text(view.FaultkeeperReady()); },
     "false", "true", true, true, false, true},
    {"DeclareReady",
     [](CErrorDatabaseView& view, CErrorDatabase&) { return Text(view.FaultkeeperReady(true)); }, "false",
     "true", true, false, false, true},
    {"DeclareNotReady",
     [](CErrorDatabaseView& view, CErrorDatabase&) { return Text(view.FaultkeeperReady(false)); }, "false",
     "true", true, false, false, true},
    {"LoadErrors", [](CErrorDatabaseView& view, CErrorDatabase& db) { return Text(view.LoadErrors(db)); },
     "false", "true", true, false, false, true},
    {"RaiseError",
     [](CErrorDatabaseView& view, CErrorDatabase&)
     { return Text(view.RaiseError(NumberedErrors::Code(1), 1)); },
     "false", "true", true, false, true, true},
    {"ClearError",
     [](CErrorDatabaseView& view, CErrorDatabase&)
     { return Text(view.ClearError(NumberedErrors::Code(0), 0)); },
     "false", "true", true, false, true, true},
    {"RaiseErrors",
     [](CErrorDatabaseView& view, CErrorDatabase&) { return Text(view.RaiseErrors(kFirstTwo)); }, "false",
     "true", true, false, true, true},
    {"ClearErrors",
     [](CErrorDatabaseView& view, CErrorDatabase&) { return Text(view.ClearErrors(kFirstTwo)); }, "false",
     "true", true, false, true, true},
    {"UpdateErrorDetails",
     [](CErrorDatabaseView& view, CErrorDatabase&)
     {
         SErrorEntry entry;
         entry.problemCode = NumberedErrors::Code(0);
         entry.counter1 = 99;
         return Text(view.UpdateErrorDetails({entry}));
     },
     "false", "true", true, false, false, true},
    {"Synchronise",
     [](CErrorDatabaseView& view, CErrorDatabase& db) { return std::to_string(view.Synchronise(db)); }, "0",
     "1", false, true, false, true},
    {"UpdateErrorStatus",
     [](CErrorDatabaseView& view, CErrorDatabase& db)
     { return std::to_string(view.UpdateErrorStatus(db, true)); },
     "0", "1", false, true, false, false},
    {"WaitForChange", [](CErrorDatabaseView& view, CErrorDatabase&) { return Text(view.WaitForChange(0)); },
     "false", "true", false, true, false, false},
    {"RetrieveAllErrors", [](CErrorDatabaseView& view, CErrorDatabase&) { return AllErrors(view); },
     "0 appended", "4 appended", true, true, false, true},
    {"RetrieveErrorDetails", [](CErrorDatabaseView& view, CErrorDatabase&) { return Details(view); },
     "untouched", "found", false, true, false, false},
    {"RetrieveErrorIndex",
     [](CErrorDatabaseView& view, CErrorDatabase&)
     { return std::to_string(view.RetrieveErrorIndex(NumberedErrors::Code(2), 2)); },
     "-1", "2", false, true, false, false},
    {"RetrieveErrorFromIndex", [](CErrorDatabaseView& view, CErrorDatabase&) { return FromIndex(view); },
     "-1, 4711:4712", "1, 265243:1", true, true, false, true},
};

std::ostream& operator<<(std::ostream& out, const SOperation& operation)
{
    return out << operation.name;
}

class CountingListener : public CErrorDbViewChanged
{
public:
    void ErrorEntryChanged(const SErrorEntry&) override { ++m_calls; }
    int Calls() const { return m_calls; }

private:
    int m_calls = 0;
};

/// A ready table whose first error is raised, and a reader that has not looked at it yet.
class ErrorDatabaseViewRefusalTest : public ReadyTableFixture, public testing::WithParamInterface<SOperation>
{
protected:
    ErrorDatabaseViewRefusalTest()
    {
        Raise(0);
        m_reader.SetCallback(&m_listener);
    }

    /// A reader whose mirror is filled but that has found the table not ready, so that it has replayed
    /// nothing.
    void FillMirror()
    {
        Header().ready = 0;
        m_reader.Synchronise(m_database);
        Header().ready = 1;
    }

    /// Expects that the view refuses, prints `message`, and that table, database and listener see nothing.
    void ExpectRefused(CErrorDatabaseView& view, const std::string& message)
    {
        const std::string bytes = Bytes();
        std::string answer;
        EXPECT_EQ(WarnedBy([&] { answer = GetParam().call(view, m_database); }), message);
        EXPECT_EQ(answer, GetParam().refusal);
        EXPECT_EQ(Bytes(), bytes);
        EXPECT_EQ(m_listener.Calls(), 0);
        EXPECT_FALSE(m_database.RetrieveError(NumberedErrors::Code(0), 0)->Active());
    }

    static void FailAtNextLock(CErrorDatabaseView& view)
    {
        SystemCalls::Fail("semop", EINVAL);
        WarnedBy([&] { view.GetLock(false); });
        ASSERT_TRUE(view.Failed());
        SystemCalls::Log();
    }

    CErrorDatabaseView m_reader{false, eViewReader};
    CountingListener m_listener;
};

TEST_P(ErrorDatabaseViewRefusalTest, IsNotRefusedByTheRightViewWithAFreeLock)
{
    FillMirror();
    CErrorDatabaseView& view = GetParam().forOwner ? m_owner : m_reader;
    EXPECT_EQ(WarnedBy([&] { EXPECT_EQ(GetParam().call(view, m_database), GetParam().answer); }), "");
    if (GetParam().forReader && GetParam().forOwner)
    {
        EXPECT_EQ(GetParam().call(m_reader, m_database), GetParam().answer);
    }
}

TEST_P(ErrorDatabaseViewRefusalTest, IsRefusedByAFailedOwnerWithoutTouchingTheLock)
{
    const SystemCalls calls;
    FailAtNextLock(m_owner);
    std::string log;
    const std::string bytes = Bytes();
    SystemCalls::Log();
    EXPECT_EQ(WarnedBy(
                  [&]
                  {
                      EXPECT_EQ(GetParam().call(m_owner, m_database), GetParam().refusal);
                      log = SystemCalls::Log();
                  }),
              "");
    EXPECT_EQ(log, "");
    EXPECT_EQ(Bytes(), bytes);
}

TEST_P(ErrorDatabaseViewRefusalTest, IsRefusedByAFailedReaderWithoutTouchingTheLock)
{
    FillMirror();
    const SystemCalls calls;
    FailAtNextLock(m_reader);
    ExpectRefused(m_reader, "");
    EXPECT_EQ(SystemCalls::Log().find("semop"), std::string::npos);
}

TEST_P(ErrorDatabaseViewRefusalTest, IsRefusedByTheOtherKindOfViewOnly)
{
    FillMirror();
    m_owner.Synchronise(m_database); // its copy is filled, too, and must not be replayed
    if (!GetParam().forReader)
        ExpectRefused(m_reader, "");
    if (!GetParam().forOwner)
        ExpectRefused(m_owner, "");
}

TEST_P(ErrorDatabaseViewRefusalTest, IsRefusedBeforeTheOwnerHasDeclaredTheTableReadyWhereItMatters)
{
    m_owner.FaultkeeperReady(false);
    if (GetParam().onceReady)
        ExpectRefused(m_owner, "");
    else if (GetParam().forOwner && std::string(GetParam().name) != "AskReady")
    {
        EXPECT_EQ(GetParam().call(m_owner, m_database), GetParam().answer);
    }
}

TEST_P(ErrorDatabaseViewRefusalTest, IsRefusedWithAMessageWhileTheLockIsBusyWhereItIsNeeded)
{
    FillMirror();
    CErrorDatabaseView holder(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    const bool mirrorOnly = std::string(GetParam().name) == "RetrieveAllErrors";
    if (GetParam().locks && GetParam().forOwner)
        ExpectRefused(m_owner, "unable to obtain lock\n");
    if (GetParam().locks && GetParam().forReader && !mirrorOnly)
        ExpectRefused(m_reader, "unable to obtain lock\n");
    if (GetParam().forReader && (!GetParam().locks || mirrorOnly))
    {
        EXPECT_EQ(GetParam().call(m_reader, m_database), GetParam().answer);
    }
    EXPECT_FALSE(m_owner.Failed());
    EXPECT_FALSE(m_reader.Failed());
}

TEST_P(ErrorDatabaseViewRefusalTest, IsRefusedByAViewThatCouldNotAttach)
{
    const SystemCalls calls;
    for (const EViewType type : {eViewReader, eViewOwner})
    {
        SystemCalls::Fail("shmat", ENOMEM);
        std::unique_ptr<CErrorDatabaseView> view;
        WarnedBy([&] { view = std::make_unique<CErrorDatabaseView>(false, type); });
        view->SetCallback(&m_listener);
        ExpectRefused(*view, "");
    }
}

INSTANTIATE_TEST_SUITE_P(Operation, ErrorDatabaseViewRefusalTest, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return std::string(operation.param.name); });

class ErrorDatabaseViewConstructionTest : public ViewFixture
{
protected:
    /// Constructs a view with recording switched on.
    /// @return what it wrote to standard error
    std::string Construct(bool create)
    {
        SystemCalls::Log();
        return WarnedBy([&] { m_view = std::make_unique<CErrorDatabaseView>(create, eViewOwner); });
    }

    const SystemCalls m_calls;
    std::unique_ptr<CErrorDatabaseView> m_view;
};

TEST_F(ErrorDatabaseViewConstructionTest, OfACreatorAttachesAndReleasesTheLock)
{
    EXPECT_EQ(Construct(true), "");
    EXPECT_EQ(SystemCalls::Log(),
              "ftok . 68\nshmget 14432 01644\nsemget 1 01666\nshmat null 0\nsemop 0 1 SEM_UNDO\n");
    EXPECT_FALSE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, OfAnotherViewOnlyAttaches)
{
    EXPECT_EQ(Construct(false), "");
    EXPECT_EQ(SystemCalls::Log(), "ftok . 68\nshmget 14432 01644\nsemget 1 01666\nshmat null 0\n");
    EXPECT_FALSE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, IsUndoneByNoCallWhenTheViewIsDestroyed)
{
    Construct(true);
    SystemCalls::Log();
    m_view.reset();
    EXPECT_EQ(SystemCalls::Log(), "");
}

TEST_F(ErrorDatabaseViewConstructionTest, WithoutAKeyThereIsNoSemaphoreToLock)
{
    SystemCalls::Fail("ftok", ENOENT);
    WarnedBy(
        []
        {
            CErrorDatabaseView view(false, eViewReader);
            EXPECT_FALSE(view.GetLock(false));
        });
    EXPECT_EQ(SystemCalls::LastSemaphore(), -1) << "0 might be somebody else's";
}

TEST_F(ErrorDatabaseViewConstructionTest, StopsWithoutAKey)
{
    SystemCalls::Fail("ftok", ENOENT);
    EXPECT_EQ(Construct(true), "CErrorDatabaseView::CErrorDatabaseView ftok: No such file or directory\n");
    EXPECT_EQ(SystemCalls::Log(), "ftok . 68\n");
    EXPECT_TRUE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, StopsWithoutASegment)
{
    SystemCalls::Fail("shmget", EACCES);
    EXPECT_EQ(Construct(true), "CErrorDatabaseView::CErrorDatabaseView shmeget: Permission denied\n");
    EXPECT_EQ(SystemCalls::Log(), "ftok . 68\nshmget 14432 01644\n");
    EXPECT_TRUE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, StopsAtASegmentThatIsTooSmall)
{
    ASSERT_NE(shmget(m_directory.Key(), 14431, IPC_CREAT | 0644), -1);
    EXPECT_EQ(Construct(true), "CErrorDatabaseView::CErrorDatabaseView shmeget: Invalid argument\n");
    EXPECT_TRUE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, StopsWhereTheSegmentCannotBeAttached)
{
    SystemCalls::Fail("shmat", ENOMEM);
    EXPECT_EQ(Construct(true), "CErrorDatabaseView::CErrorDatabaseView shmat: Cannot allocate memory\n");
    EXPECT_EQ(SystemCalls::Log(), "ftok . 68\nshmget 14432 01644\nsemget 1 01666\nshmat null 0\n");
    EXPECT_TRUE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, GoesOnWithoutASemaphoreUntilTheCreatorReleasesIt)
{
    SystemCalls::Fail("semget", ENOSPC);
    EXPECT_EQ(Construct(true), "CErrorDatabaseView::ReleaseLock semop: Invalid argument\n");
    EXPECT_TRUE(m_view->Failed());
    EXPECT_EQ(Bytes(), std::string(14432, '\0'));
}

TEST_F(ErrorDatabaseViewConstructionTest, GoesOnWithoutASemaphoreUntilAReaderTakesIt)
{
    SystemCalls::Fail("semget", ENOSPC);
    EXPECT_EQ(Construct(false), "");
    EXPECT_FALSE(m_view->Failed());
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(m_view->FaultkeeperReady()); }),
              "CErrorDatabaseView::GetLock semop: Invalid argument\n");
    EXPECT_TRUE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, FailsWhereTheFirstReleaseFails)
{
    SystemCalls::Fail("semop", ERANGE);
    EXPECT_EQ(Construct(true), "CErrorDatabaseView::ReleaseLock semop: Numerical result out of range\n");
    EXPECT_TRUE(m_view->Failed());
}

TEST_F(ErrorDatabaseViewConstructionTest, IsNoLongerGoodWhenAReleaseInsideAnOperationFails)
{
    CErrorDatabaseView owner(true, eViewOwner);
    SystemCalls::Fail("semop", EIDRM, 1, 1);
    EXPECT_EQ(WarnedBy([&] { owner.FaultkeeperReady(true); }),
              "CErrorDatabaseView::ReleaseLock semop: Identifier removed\n");
    EXPECT_TRUE(owner.Failed());
    EXPECT_EQ(Header().ready, 1u) << "what was done under the lock stays done";
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(owner.FaultkeeperReady(false)); }), "");
}

} // namespace
