#include "ChildProcess.h"
#include "support/CapturedOutput.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <utility>
#include <vector>

using namespace Support;
using namespace Faultkeeper;

namespace
{

constexpr int kErrors = 20;

std::vector<std::pair<int, int>> AllIds()
{
    std::vector<std::pair<int, int>> ids;
    for (int type = 0; type < kErrors; ++type)
        ids.emplace_back(0x40C1B, type);
    return ids;
}

/// Views of one table in several processes.
class ViewProcesses : public SharedTableTest
{
protected:
    ViewProcesses()
    {
        CConfigurationBuilder builder;
        for (int type = 0; type < kErrors; ++type)
            builder.Leaf("Positioning:GPS:No Data:" + std::to_string(type));
        builder.WriteTo(m_directory.Prefix());
    }

    /// Creates the table, opens `ready`, and ends when `end` is opened.
    int Own(const CGate& ready, const CGate& end) const
    {
        const CErrorDatabase database(m_directory.Prefix());
        CErrorDatabaseView view(true, eViewOwner);
        const bool published = WaitUntil([&] { return view.LoadErrors(database); }) &&
                               WaitUntil([&] { return view.FaultkeeperReady(true); }) &&
                               WaitUntil([&] { return view.RaiseErrors(AllIds()); });
        ready.Open();
        return published && end.Pass() ? 0 : 1;
    }

    /// Raises and clears all errors at once, again and again, until `end` is opened.
    int KeepChanging(const CGate& ready, const CGate& end) const
    {
        const CErrorDatabase database(m_directory.Prefix());
        CErrorDatabaseView view(true, eViewOwner);
        bool published = view.LoadErrors(database) && view.FaultkeeperReady(true);
        ready.Open();
        for (int round = 0; published && !end.Opened(); ++round)
        {
            const bool raise = round % 2 == 0;
            published =
                WaitUntil([&] { return raise ? view.RaiseErrors(AllIds()) : view.ClearErrors(AllIds()); });
        }
        return published ? 0 : 1;
    }

    /// Synchronises until all errors are active.
    int Follow() const
    {
        CErrorDatabase database(m_directory.Prefix());
        CErrorDatabaseView view(false, eViewReader);
        return WaitUntil(
                   [&]
                   {
                       view.Synchronise(database);
                       return database.RetrieveError(0x40C1B, kErrors - 1)->Active();
                   })
                   ? 0
                   : 1;
    }

    CGate m_ready;
    CGate m_end;
};

/// How many of the records are raised.
int RaisedIn(CErrorDatabaseView& view)
{
    std::vector<SErrorEntry> records;
    view.RetrieveAllErrors(records);
    int raised = 0;
    for (const SErrorEntry& record : records)
        raised += record.flags & kRaisedFlag;
    return raised;
}

} // namespace

TEST_F(ViewProcesses, AReaderCannotTakeTheLockAfterTheCreatorHasEnded)
{
    CChildProcess owner([this] { return Own(m_ready, m_end); });
    ASSERT_TRUE(m_ready.Pass());
    CErrorDatabaseView reader(false, eViewReader);
    EXPECT_TRUE(reader.GetLock(false));
    EXPECT_TRUE(reader.ReleaseLock());

    m_end.Open();
    ASSERT_EQ(owner.Wait(), 0);
    EXPECT_EQ(WarnedBy([&] { EXPECT_FALSE(reader.GetLock(false)); }), "unable to obtain lock\n");
    EXPECT_FALSE(reader.Failed());
}

TEST_F(ViewProcesses, AReaderGoesOnWithTheNextCreator)
{
    CErrorDatabase database(m_directory.Prefix());
    CErrorDatabaseView reader(false, eViewReader);
    for (int generation = 0; generation < 3; ++generation)
    {
        CChildProcess owner([this] { return Own(m_ready, m_end); });
        ASSERT_TRUE(m_ready.Pass());
        EXPECT_TRUE(reader.FaultkeeperReady());
        EXPECT_EQ(reader.Synchronise(database), 1);
        EXPECT_EQ(RaisedIn(reader), kErrors);
        m_end.Open();
        ASSERT_EQ(owner.Wait(), 0);
        WarnedBy([&] { EXPECT_FALSE(reader.FaultkeeperReady()); });
    }
}

TEST_F(ViewProcesses, TheLockOfAKilledReaderIsGivenBack)
{
    CChildProcess owner([this] { return Own(m_ready, m_end); });
    ASSERT_TRUE(m_ready.Pass());
    CGate held;
    CChildProcess reader(
        [&]
        {
            CErrorDatabaseView view(false, eViewReader);
            const bool taken = view.GetLock(false);
            held.Open();
            return taken && m_end.Pass() ? 0 : 1;
        });
    ASSERT_TRUE(held.Pass());
    CErrorDatabaseView another(false, eViewReader);
    WarnedBy([&] { EXPECT_FALSE(another.GetLock(false)); });

    reader.Signal(SIGKILL);
    EXPECT_EQ(reader.Wait(), 128 + SIGKILL);
    EXPECT_TRUE(another.GetLock(false));
    EXPECT_TRUE(another.ReleaseLock());
    m_end.Open();
    EXPECT_EQ(owner.Wait(), 0);
}

TEST_F(ViewProcesses, AWaitingReaderGetsTheLockAsSoonAsItIsFree)
{
    CChildProcess owner([this] { return Own(m_ready, m_end); });
    ASSERT_TRUE(m_ready.Pass());
    CErrorDatabaseView holder(false, eViewReader);
    ASSERT_TRUE(holder.GetLock(false));
    CChildProcess waiting(
        []
        {
            CErrorDatabaseView view(false, eViewReader);
            return view.GetLock(true) && view.ReleaseLock() ? 0 : 1;
        });
    EXPECT_TRUE(waiting.Running());
    EXPECT_TRUE(holder.ReleaseLock());
    EXPECT_EQ(waiting.Wait(), 0);
    m_end.Open();
    EXPECT_EQ(owner.Wait(), 0);
}

TEST_F(ViewProcesses, ReadersInSeveralProcessesSeeWhatTheOwnerHasRaised)
{
    CChildProcess owner([this] { return Own(m_ready, m_end); });
    ASSERT_TRUE(m_ready.Pass());
    CChildProcess first([this] { return Follow(); });
    CChildProcess second([this] { return Follow(); });
    CChildProcess third([this] { return Follow(); });
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_EQ(second.Wait(), 0);
    EXPECT_EQ(third.Wait(), 0);
    m_end.Open();
    EXPECT_EQ(owner.Wait(), 0);
}

TEST_F(ViewProcesses, ACopyNeverHoldsHalfOfAChange)
{
    CErrorDatabase database(m_directory.Prefix());
    CErrorDatabaseView reader(false, eViewReader);
    int changes = 0;
    const std::string messages = WarnedBy([&] { // the lock is busy at times, and says so
        CChildProcess owner([this] { return KeepChanging(m_ready, m_end); });
        ASSERT_TRUE(m_ready.Pass());
        EXPECT_TRUE(WaitUntil(
            [&]
            {
                changes += reader.Synchronise(database) != 0 ? 1 : 0;
                const int raised = RaisedIn(reader);
                EXPECT_TRUE(raised == 0 || raised == kErrors) << raised;
                return changes >= 200 || HasFailure();
            }));
        m_end.Open();
        EXPECT_EQ(owner.Wait(), 0);
    });
    EXPECT_FALSE(reader.Failed());
}
