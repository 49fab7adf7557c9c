#include "store/reading/StoreImage.h"

#include "store/Sqlite.h"
#include "unit/faultkeeperd/store/StoreFixture.h"

#include <sys/stat.h>

#include <filesystem>
#include <random>
#include <set>

using namespace StoreFixture;

namespace
{

Bytes BytesOf(const std::string& path)
{
    const std::string text = ReadFile(path);
    return Bytes(text.begin(), text.end());
}

/// What SQLite finds in an image: the journal's numbers, and whether all holds together.
std::string Found(const Bytes& image)
{
    CSqlite database(image);
    database.Check();
    return database.Text("SELECT count(*) || ' ' || coalesce(min(number), 0) || ' ' || "
                         "coalesce(max(number), 0) FROM journal");
}

class StoreImage : public Test
{
protected:
    std::string Path() const { return Settings().path; }
    std::string LogPath() const { return Path() + "-wal"; }

    /// Everything about the store's files that anybody could have changed.
    std::string Files() const
    {
        std::string text;
        for (const auto& file : std::filesystem::directory_iterator(m_directory.Path()))
        {
            struct stat facts = {};
            stat(file.path().c_str(), &facts);
            text += file.path().filename().string() + " " + std::to_string(facts.st_ino) + " " +
                    std::to_string(facts.st_mtim.tv_sec) + " " + std::to_string(facts.st_mtim.tv_nsec) + " " +
                    std::to_string(std::hash<std::string>()(ReadFile(file.path()))) + "\n";
        }
        return text;
    }
};

SStoreBatch Transitions(int count)
{
    SStoreBatch batch;
    for (int i = 0; i < count; ++i)
        batch.transitions.push_back(Transition(i % 21, i % 2 == 0));
    return batch;
}

TEST_F(StoreImage, OfAStoreThatIsOpenHoldsTheLastCommit)
{
    CStateStore store(Settings());
    EXPECT_EQ(Found(ReadStoreImage(Path())), "0 0 0");
    store.Commit(Transitions(3));
    EXPECT_EQ(Found(ReadStoreImage(Path())), "3 1 3");
    store.Commit(Transitions(2));
    EXPECT_EQ(Found(ReadStoreImage(Path())), "5 1 5");
}

TEST_F(StoreImage, OfAStoreThatWasClosedHoldsAll)
{
    {
        CStateStore store(Settings());
        store.Commit(Transitions(3));
    }
    ASSERT_FALSE(std::filesystem::exists(LogPath()));
    EXPECT_EQ(Found(ReadStoreImage(Path())), "3 1 3");
}

TEST_F(StoreImage, LeavesTheFilesAsTheyAre)
{
    CStateStore store(Settings());
    store.Commit(Transitions(3));
    const std::string before = Files();
    ReadStoreImage(Path());
    EXPECT_EQ(Files(), before);
    store.Commit(Transitions(3));
    EXPECT_EQ(store.JournalLength(), 6u);
}

TEST_F(StoreImage, LeavesAnEmptyLogToTheOwner)
{
    {
        CStateStore store(Settings());
        store.Commit(Transitions(3));
    }
    WriteFile(LogPath(), ""); // as an owner has it that has opened the store and not written yet
    const std::string before = Files();
    EXPECT_EQ(Found(ReadStoreImage(Path())), "3 1 3");
    EXPECT_EQ(Files(), before);
}

// The log is begun anew after a thousand pages or so, and the journal is cut all the time.
TEST_F(StoreImage, IsRightAfterAnyCommitThroughManyLogs)
{
    CStateStore store(Settings(2000));
    std::mt19937 random(7);
    std::uint64_t last = 0;
    std::set<std::string> heads;
    for (int i = 0; i < 130; ++i)
    {
        const int count = static_cast<int>(random() % 1500) + 1;
        store.Commit(Transitions(count));
        last += static_cast<std::uint64_t>(count);
        heads.insert(ReadFile(LogPath()).substr(0, 32));
        if (i % 5 != 0)
            continue;
        const std::uint64_t length = std::min<std::uint64_t>(last, 2000);
        ASSERT_EQ(Found(ReadStoreImage(Path())), std::to_string(length) + " " +
                                                     std::to_string(last - length + 1) + " " +
                                                     std::to_string(last))
            << i;
    }
    EXPECT_GE(heads.size(), 4u);
}

TEST_F(StoreImage, OfALogThatEndsAnywhereHoldsAFormerCommit)
{
    CStateStore store(Settings());
    const Bytes database = BytesOf(Path());
    for (int i = 0; i < 6; ++i)
        store.Commit(Transitions(1));
    const Bytes log = BytesOf(LogPath());
    int before = -1;
    for (std::size_t length = 0; length <= log.size(); length += 97)
    {
        Bytes image = database;
        AddLog(image, Bytes(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(length)));
        image[18] = image[19] = 1;
        const int count = std::stoi(Found(image));
        EXPECT_GE(count, before);
        before = std::max(before, count);
    }
    EXPECT_GE(before, 5);
}

TEST_F(StoreImage, OfALogWithADamagedByteHoldsTheCommitsBeforeIt)
{
    CStateStore store(Settings());
    for (int i = 0; i < 6; ++i)
        store.Commit(Transitions(1));
    const Bytes database = BytesOf(Path());
    const Bytes log = BytesOf(LogPath());
    for (std::size_t at = 0; at < log.size(); at += 331)
    {
        Bytes damaged = log;
        damaged[at] ^= 0x10;
        Bytes image = database;
        AddLog(image, damaged);
        image[18] = image[19] = 1;
        EXPECT_LE(std::stoi(Found(image)), 6) << at;
    }
}

TEST_F(StoreImage, OfALogThatBelongsToAnotherDatabaseIsRefused)
{
    {
        CStateStore store(Settings());
        store.Commit(Transitions(2000));
    }
    CStateStore store(Settings());
    store.Commit(Transitions(1));
    Bytes image = BytesOf(Path());
    image.resize(4096); // the rest is neither here nor in the log
    EXPECT_THROW(AddLog(image, BytesOf(LogPath())), CSqliteFailure);
    EXPECT_EQ(image.size(), 4096u);
}

TEST_F(StoreImage, OfAMissingStoreIsRefused)
{
    try
    {
        ReadStoreImage(Path());
        FAIL();
    }
    catch (const CSqliteFailure& failure)
    {
        EXPECT_EQ(std::string(failure.what()), "cannot read " + Path() + ": No such file or directory");
        EXPECT_FALSE(failure.Damage());
    }
}

TEST_F(StoreImage, OfAnotherProgramsDatabaseIsRefused)
{
    {
        CSqlite database(Path());
        database.Run("CREATE TABLE other(a)");
        database.Run("PRAGMA application_id = 1");
    }
    EXPECT_THROW(ReadStoreImage(Path()), CSqliteFailure);
}

TEST_F(StoreImage, MarksTellWhetherAnythingHasChanged)
{
    CStateStore store(Settings());
    store.Commit(Transitions(1));
    const SStoreMark before = MarkOfStore(Path());
    EXPECT_TRUE(MarkOfStore(Path()).SameAs(before));
    store.Commit(Transitions(1));
    EXPECT_FALSE(MarkOfStore(Path()).SameAs(before));
    EXPECT_FALSE(MarkOfStore(Path()).settled); // another commit within the file system's tick would not show
}

} // namespace
