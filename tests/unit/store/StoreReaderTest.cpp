#include "store/reading/StoreReader.h"

#include "system/ChildProcess.h"
#include "unit/faultkeeperd/store/StoreFixture.h"

#include <map>

using namespace StoreFixture;

namespace
{

class StoreReader : public Test
{
protected:
    std::string Path() const { return Settings().path; }
};

TEST_F(StoreReader, GivesWhatTheOwnerSeesWhileTheOwnerHasItOpen)
{
    CStateStore store(Settings());
    store.Begin("boot", "configuration");
    SStoreBatch batch;
    batch.errors = {Error(2, true, 65535, 5000000000U), Error(3, false, 0, 0)};
    batch.transitions = {Transition(2, true), Transition(3, false)};
    batch.transitions[1].caused = true;
    batch.transitions[1].causeCode = 0x40C1B;
    batch.transitions[1].causeType = 2;
    store.Commit(batch);
    CStoreReader reader(Path(), escWholeFile);
    EXPECT_EQ(reader.Boot(), "boot");
    SStoreContents contents;
    contents.errors = reader.Errors();
    EXPECT_EQ(Shown(contents), Shown(store.Read()));
    EXPECT_EQ(Shown(reader.Journal()), Shown(store.Journal(0, 100)));
    EXPECT_EQ(Shown(reader.Journal(2)), Shown(store.Journal(2, 100)));
    EXPECT_EQ(reader.NextNumber(), 3u);
    EXPECT_TRUE(reader.Dropped().empty());
}

TEST_F(StoreReader, OfAnEmptyStoreHasNothing)
{
    CStateStore store(Settings());
    CStoreReader reader(Path(), escWholeFile);
    EXPECT_EQ(reader.Boot(), "");
    EXPECT_TRUE(reader.Errors().empty());
    EXPECT_TRUE(reader.Journal().empty());
    EXPECT_EQ(reader.NextNumber(), 1u);
}

TEST_F(StoreReader, LeavesDamagedRowsOutAndNamesThem)
{
    {
        CStateStore store(Settings());
        store.Begin("boot", "configuration");
        SStoreBatch batch;
        batch.errors = {Error(2, true, 1), Error(3, true, 1)};
        batch.transitions = {Transition(2, true), Transition(3, true)};
        store.Commit(batch);
    }
    {
        CSqlite database(Path());
        database.Run("UPDATE facts SET value = 'other' WHERE id = 1");
        database.Run("UPDATE errors SET raised = 0 WHERE type = 3");
        database.Run("UPDATE journal SET time = 5 WHERE number = 1");
    }
    CStoreReader reader(Path(), escWholeFile);
    EXPECT_EQ(reader.Boot(), "boot"); // from its copy
    EXPECT_EQ(reader.Errors().size(), 1u);
    EXPECT_EQ(reader.Journal().size(), 1u);
    EXPECT_EQ(reader.Dropped(), (std::vector<std::string>{"boot id", "error Positioning:GPS:No Data:3",
                                                          "transition numbered 1"}));
}

TEST_F(StoreReader, RefusesAFileThatDoesNotHoldTogether)
{
    {
        CStateStore store(Settings());
        SStoreBatch batch;
        for (int i = 0; i < 200; ++i)
            batch.transitions.push_back(Transition(2, true));
        store.Commit(batch);
    }
    std::string bytes = ReadFile(Path());
    for (std::size_t at = bytes.size() - 6000; at < bytes.size() - 4000; ++at)
        bytes[at] = '\xFF';
    WriteFile(Path(), bytes);
    try
    {
        CStoreReader reader(Path(), escWholeFile);
        FAIL();
    }
    catch (const CSqliteFailure& failure)
    {
        EXPECT_TRUE(failure.Damage()) << failure.what();
    }
}

// Each batch raises an error and writes that down, so at any commit the two accounts agree.
TEST_F(StoreReader, SeesOnlyWholeCommitsOfAnOwnerThatNeverRests)
{
    const Support::CGate started;
    Support::CChildProcess owner(
        [&]() -> int
        {
            CStateStore store(Settings(3000));
            for (std::uint64_t raises = 1;; ++raises)
            {
                SStoreBatch batch;
                for (int type = 0; type < 20; ++type)
                {
                    batch.errors.push_back(Error(type, true, 0, raises));
                    batch.transitions.push_back(Transition(type, true));
                }
                store.Commit(batch);
                if (raises == 1)
                    started.Open();
            }
        });
    ASSERT_TRUE(started.Pass());
    std::uint64_t last = 0;
    for (int i = 0; i < 60; ++i)
    {
        CStoreReader reader(Path(), i % 10 == 0 ? escWholeFile : escRowsOnly);
        const std::vector<SStoredError> errors = reader.Errors();
        const std::vector<STransition> journal = reader.Journal();
        ASSERT_EQ(errors.size(), 20u);
        ASSERT_FALSE(journal.empty());
        for (const SStoredError& error : errors)
            ASSERT_EQ(error.raises * 20, journal.back().number);
        ASSERT_EQ(journal.back().number - journal.front().number + 1, journal.size());
        ASSERT_TRUE(reader.Dropped().empty());
        ASSERT_GE(journal.back().number, last);
        last = journal.back().number;
    }
    EXPECT_TRUE(owner.Running());
    owner.Signal(SIGKILL);
    owner.Wait();
    EXPECT_EQ(CStateStore(Settings(3000)).LastNumber() % 20, 0u); // nothing of it has suffered
}

} // namespace
