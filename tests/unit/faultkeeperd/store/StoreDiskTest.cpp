#include "FailingDisk.h"
#include "StoreFixture.h"

#include "faultkeeperd/store/StateKeeper.h"
#include "support/CapturedOutput.h"

#include <cerrno>
#include <chrono>
#include <fstream>

using namespace StoreFixture;
using namespace FailingDisk;
using Support::WarnedBy;

// Whatever a disk refuses, and whenever: a store is the state before or after a commit, a refusal is never
// taken for damage, and as soon as the disk is well the store is complete.

namespace
{

/// What a disk refuses.
struct SRefusal
{
    const char* name;
    unsigned kinds;
    int problem;
    int failures; ///< one after the other; negative: all
};

class StoreOnAFailingDisk : public Test, public testing::WithParamInterface<SRefusal>
{
protected:
    void TearDown() override { Mend(); }

    static SStoreBatch Batch(std::uint16_t counter)
    {
        SStoreBatch batch;
        for (int type = 0; type < 5; ++type)
            batch.errors.push_back(Error(type, true, counter, counter));
        batch.sessions = {{"00000000000000000000000000000001", counter}};
        batch.transitions = {Transition(2, true)};
        return batch;
    }

    /// A store with one commit in it.
    /// @param killed  it has a log, as an owner leaves it that is killed
    void MakeStore(bool killed) const
    {
        for (const char* const part : {"", "-wal", "-journal"})
            std::remove((Settings().path + part).c_str());
        std::string file;
        std::string log;
        {
            CStateStore store(Settings());
            store.Begin("boot", "c");
            store.Commit(Batch(1));
            file = ReadFile(Settings().path);
            log = ReadFile(Settings().path + "-wal");
        }
        if (!killed)
            return;
        WriteFile(Settings().path, file);
        WriteFile(Settings().path + "-wal", log);
    }

    /// What was in the store is still there: as it was if the owner has learnt of it, else cleared; and what
    /// the owner has kept is, too.
    void ExpectComplete(const SStoreContents& former) const
    {
        ASSERT_TRUE(former.errors.empty() || former.errors.size() == 5) << "all or nothing";
        EXPECT_EQ(former.sessions.size(), former.errors.empty() ? 0u : 1u);
        const SStoreContents contents = CStateStore(Settings()).Read();
        ASSERT_EQ(contents.errors.size(), 5u);
        for (const SStoredError& error : contents.errors)
        {
            const bool changed = error.entry.problemType == 2;
            const bool raised = !former.errors.empty() && !changed;
            EXPECT_EQ(error.entry.flags, raised ? kRaisedFlag : 0) << error.entry.problemType;
            EXPECT_EQ(error.raises, changed ? 7u : 1u);
        }
        EXPECT_EQ(contents.sessions.size(), 1u);
        EXPECT_EQ(contents.dropped, std::vector<std::string>());
        const bool readable = (GetParam().kinds & (ekRead | ekOpen | ekLock)) == 0;
        EXPECT_TRUE(!readable || !former.errors.empty()) << "what cannot be written can be read";
    }

    void Refuse(int calls) const
    {
        RefuseAfter(calls, GetParam().problem, GetParam().failures, GetParam().kinds);
    }
};

TEST_P(StoreOnAFailingDisk, IsTheStateBeforeOrAfterTheCommit)
{
    MakeStore(false);
    const std::string before = Contents();
    std::string after;
    bool refused = true;
    for (int calls = 0; refused; ++calls)
    {
        SCOPED_TRACE(calls);
        ASSERT_LT(calls, 300);
        try
        {
            Refuse(calls);
            CStateStore store(Settings());
            store.Commit(Batch(2));
        }
        catch (const CSqliteFailure& failure)
        {
            const bool oneRead = GetParam().kinds == ekRead && GetParam().failures == 1;
            EXPECT_TRUE(!failure.Damage() || oneRead) << failure.what() << ": it is read a second time first";
        }
        refused = Calls() > calls;
        Mend();
        const std::string contents = Contents();
        if (after.empty() && contents != before)
            after = contents;
        EXPECT_TRUE(contents == before || contents == after) << contents;
    }
    EXPECT_NE(after, "");
}

TEST_P(StoreOnAFailingDisk, StandsInNobodysWayAndIsCompleteWhenTheDiskIsWell)
{
    int loops = 0;
    for (const bool killed : {false, true})
    {
        bool refused = true;
        for (int calls = 0; refused; ++calls, ++loops)
        {
            SCOPED_TRACE(std::to_string(calls) + (killed ? " with a log" : ""));
            ASSERT_LT(calls, 300);
            MakeStore(killed);
            SStoreContents former;
            WarnedBy(
                [&]
                {
                    Refuse(calls);
                    CStateKeeper keeper(Settings());
                    former = keeper.Open("boot", "c");
                    keeper.Keep(Error(2, false, 7, 7));
                    keeper.CommitAtOnce(CStateKeeper::Clock::now());
                    refused = Calls() > calls;
                    Mend();
                    keeper.Commit(CStateKeeper::Clock::now() + std::chrono::hours(1));
                    EXPECT_TRUE(keeper.Storing());
                });
            EXPECT_FALSE(std::ifstream(Settings().path + ".damaged-1").good());
            ExpectComplete(former);
        }
    }
    EXPECT_GT(loops, 4);
}

TEST_P(StoreOnAFailingDisk, ATransitionIsStoredOnce)
{
    MakeStore(false);
    bool refused = true;
    std::uint64_t number = 1;
    for (int calls = 0; refused; ++calls)
    {
        SCOPED_TRACE(calls);
        ASSERT_LT(calls, 300);
        WarnedBy(
            [&]
            {
                CStateKeeper keeper(Settings());
                keeper.Open("boot", "c");
                Refuse(calls);
                keeper.Keep(Transition(3, true));
                keeper.CommitAtOnce(CStateKeeper::Clock::now());
                refused = Calls() > calls;
                Mend();
                keeper.Commit(CStateKeeper::Clock::now() + std::chrono::hours(1));
                EXPECT_EQ(keeper.JournalLength(), ++number);
                EXPECT_EQ(keeper.Journal(0, 1000).size(), number);
            });
    }
}

INSTANTIATE_TEST_SUITE_P(
    Refusals, StoreOnAFailingDisk,
    testing::Values(SRefusal{"NoRoom", ekWrite | ekOpenToWrite, ENOSPC, -1},
                    SRefusal{"NoRoomToWrite", ekWrite, ENOSPC, -1}, SRefusal{"NoWriting", ekWrite, EIO, -1},
                    SRefusal{"OneWrite", ekWrite, EIO, 1}, SRefusal{"NoReading", ekRead, EIO, -1},
                    SRefusal{"OneRead", ekRead, EIO, 1}, SRefusal{"NoOpening", ekOpen, EIO, -1},
                    SRefusal{"OneOpening", ekOpen, EIO, 1}, SRefusal{"NoDescriptors", ekOpen, EMFILE, -1},
                    SRefusal{"ReadOnly", ekWrite | ekOpenToWrite, EROFS, -1},
                    SRefusal{"NoLocks", ekLock, EIO, -1}, SRefusal{"OneLock", ekLock, EIO, 1}),
    [](const auto& refusal) { return refusal.param.name; });

} // namespace
