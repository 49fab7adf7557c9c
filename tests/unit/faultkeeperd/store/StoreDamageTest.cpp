#include "FailingDisk.h"
#include "StoreFixture.h"

#include <cerrno>
#include <cstdlib>
#include <random>

using namespace StoreFixture;

// Whatever happens to the file, a store is what it was before or after a commit, less the rows that are
// named, or it says that it is damaged.

namespace
{

class StoreDamage : public Test
{
protected:
    void TearDown() override { FailingDisk::Mend(); }

    static SStoreBatch Batch(std::uint16_t counter)
    {
        SStoreBatch batch;
        for (int type = 0; type < 5; ++type)
            batch.errors.push_back(Error(type, counter % 2 == 0, counter, counter));
        batch.sessions = {{"00000000000000000000000000000001", counter}};
        batch.transitions = {Transition(2, true)};
        return batch;
    }

    /// How many bytes lie between one cut and the next, unless the environment says otherwise.
    static std::size_t TruncationStep(int usual)
    {
        const char* const chosen = std::getenv("FAULTKEEPER_TRUNCATION_STEP");
        const int step = chosen == nullptr ? usual : std::atoi(chosen);
        return step > 1 ? static_cast<std::size_t>(step) : 1;
    }

    /// The contents, or "damaged".
    std::string ContentsOrDamage() const
    {
        try
        {
            return Contents();
        }
        catch (const CSqliteFailure& failure)
        {
            EXPECT_TRUE(failure.Damage()) << failure.what();
            return "damaged";
        }
    }

    /// Does every line stand in one of the two, or tell what was dropped?
    static void ExpectMadeOf(const std::string& contents, const std::string& one, const std::string& other)
    {
        std::istringstream lines(contents);
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(one.find(line) != std::string::npos || other.find(line) != std::string::npos ||
                        line.find("dropped ") == 0)
                << line;
    }
};

TEST_F(StoreDamage, WhatIsNoDatabaseIsDamaged)
{
    WriteFile(Settings().path,
              "This is a note that somebody put here, longer than the head of a database file is, "
              "so that it cannot be taken for an empty one.");
    EXPECT_EQ(ContentsOrDamage(), "damaged");
}

TEST_F(StoreDamage, AStoreOfAnotherFormatIsNotRead)
{
    CStateStore(Settings()).Commit(Batch(1));
    CSqlite(Settings().path).Run("PRAGMA user_version = 99");
    EXPECT_EQ(ContentsOrDamage(), "damaged");
}

TEST_F(StoreDamage, ADamagedStoreIsMovedAsideWithAllThatBelongsToIt)
{
    WriteFile(Settings().path, "rubbish");
    WriteFile(Settings().path + "-wal", "more");
    EXPECT_EQ(MoveStoreAside(Settings().path), Settings().path + ".damaged-1");
    EXPECT_EQ(ReadFile(Settings().path + ".damaged-1"), "rubbish");
    EXPECT_EQ(ReadFile(Settings().path + ".damaged-1-wal"), "more");
    WriteFile(Settings().path, "again");
    EXPECT_EQ(MoveStoreAside(Settings().path), Settings().path + ".damaged-2");
    EXPECT_EQ(MoveStoreAside(Settings().path), "") << "there is none";
}

TEST_F(StoreDamage, CutAtAnyByteItIsOldNewOrDamaged)
{
    CStateStore(Settings()).Commit(Batch(1)); // closing moves the log into the file
    const std::string whole = ReadFile(Settings().path);
    const std::string expected = Contents();
    for (std::size_t size = 0; size < whole.size(); size += TruncationStep(1))
    {
        WriteFile(Settings().path, whole.substr(0, size));
        const std::string contents = ContentsOrDamage();
        if (contents != "damaged")
            ExpectMadeOf(contents, expected, "");
        std::remove(Settings().path.c_str());
        std::remove((Settings().path + "-wal").c_str());
    }
}

TEST_F(StoreDamage, ALogCutAtAnyByteIsTheStateBeforeOrAfterACommit)
{
    CStateStore(Settings()).Commit(Batch(1));
    const std::string before = Contents();
    std::string file;
    std::string log;
    std::string after;
    {
        CStateStore store(Settings());
        store.Commit(Batch(2));
        after = Shown(store.Read());
        file = ReadFile(Settings().path);
        log = ReadFile(Settings().path + "-wal");
    }
    ASSERT_FALSE(log.empty());
    ASSERT_NE(before, after);
    const std::size_t step = TruncationStep(13);
    for (std::size_t size = 0; size <= log.size(); size += size + step < log.size() ? step : 1)
    {
        WriteFile(Settings().path, file);
        WriteFile(Settings().path + "-wal", log.substr(0, size));
        const std::string contents = ContentsOrDamage();
        EXPECT_TRUE(contents == before || contents == after) << size << "\n" << contents;
    }
}

class FlippedStore : public StoreDamage, public testing::WithParamInterface<unsigned>
{
};

TEST_P(FlippedStore, ABitAnywhereNeverGivesWrongFigures)
{
    CStateStore(Settings()).Commit(Batch(1));
    const std::string whole = ReadFile(Settings().path);
    const std::string expected = Contents();
    std::mt19937 random(GetParam());
    for (int round = 0; round < 1000; ++round)
    {
        std::string flipped = whole;
        const std::size_t bit = random() % (whole.size() * 8);
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
        WriteFile(Settings().path, flipped);
        const std::string contents = ContentsOrDamage();
        if (contents != "damaged")
            ExpectMadeOf(contents, expected, "");
        std::remove((Settings().path + "-wal").c_str());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FlippedStore, testing::Range(0u, 10u));

class StoreOnAFailingDisk : public StoreDamage, public testing::WithParamInterface<int>
{
};

TEST_P(StoreOnAFailingDisk, AnyWriteRefusedLeavesTheStateBeforeOrAfterTheCommit)
{
    CStateStore(Settings()).Commit(Batch(1));
    const std::string before = Contents();
    std::string after;
    bool refused = true;
    for (int writes = 0; refused; ++writes)
    {
        ASSERT_LT(writes, 200);
        refused = false;
        try
        {
            FailingDisk::RefuseAfter(writes, GetParam(), -1);
            CStateStore store(Settings());
            store.Commit(Batch(2));
            refused = FailingDisk::Writes() > writes;
            FailingDisk::Mend();
        }
        catch (const CSqliteFailure& failure)
        {
            EXPECT_FALSE(failure.Damage()) << failure.what();
            refused = true;
        }
        FailingDisk::Mend();
        const std::string contents = Contents();
        if (after.empty() && contents != before)
            after = contents;
        EXPECT_TRUE(contents == before || contents == after) << writes << "\n" << contents;
    }
    EXPECT_NE(after, "");
}

INSTANTIATE_TEST_SUITE_P(Problems, StoreOnAFailingDisk, testing::Values(ENOSPC, EIO));

} // namespace
