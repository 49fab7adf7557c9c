#include "StoreFixture.h"

#include "faultkeeperd/store/StateKeeper.h"
#include "store/Sqlite.h"
#include "support/CapturedOutput.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <cstdio>
#include <fstream>

using namespace StoreFixture;
using Support::WarnedBy;

// Which files are used, which are moved out of the way, and which are left alone.

namespace
{

class StoreFile : public Test
{
protected:
    std::string Path(const std::string& ending = "") const { return Settings().path + ending; }

    bool Exists(const std::string& ending) const { return std::ifstream(Path(ending)).good(); }

    void MakeStore() const
    {
        CStateStore store(Settings());
        store.Begin("boot", "c");
        SStoreBatch batch;
        batch.errors = {Error(2, true, 1)};
        store.Commit(batch);
    }

    /// What an owner says that is given this store.
    std::string Said() const
    {
        return WarnedBy([this] { CStateKeeper(Settings()).Open("boot", "c"); });
    }

    std::string Refusal(const std::string& reason) const
    {
        return "faultkeeperd: error: the state store " + Path() + " cannot be used: " + reason +
               "; reports go on being applied, shown and then acknowledged, but a restart of the machine "
               "would forget them\n";
    }

    /// Is the file neither changed nor anything put beside it?
    void ExpectUntouched(const std::string& before) const
    {
        EXPECT_EQ(ReadFile(Path()), before);
        EXPECT_FALSE(Exists("-wal"));
        EXPECT_FALSE(Exists("-shm"));
        EXPECT_FALSE(Exists("-journal"));
        EXPECT_FALSE(Exists(".damaged-1"));
    }
};

TEST_F(StoreFile, OfAnotherProgramIsLeftExactlyAsItIs)
{
    CSqlite(Path()).Run("CREATE TABLE bookmarks(url TEXT); INSERT INTO bookmarks VALUES('x')");
    const std::string before = ReadFile(Path());
    EXPECT_EQ(Said(), Refusal("it is a database of another program, and left as it is"));
    ExpectUntouched(before);
}

TEST_F(StoreFile, OfAnotherProgramThatNumbersItsFormatsIsLeftExactlyAsItIs)
{
    CSqlite(Path()).Run("CREATE TABLE facts(name TEXT); PRAGMA user_version = 1; "
                        "PRAGMA application_id = 252006673");
    const std::string before = ReadFile(Path());
    EXPECT_EQ(Said(), Refusal("it is a database of another program, and left as it is"));
    ExpectUntouched(before);
}

TEST_F(StoreFile, OfALaterFormatIsLeftExactlyAsItIs)
{
    MakeStore();
    CSqlite(Path()).Run("PRAGMA user_version = 2");
    const std::string before = ReadFile(Path());
    EXPECT_EQ(Said(), Refusal("it is of format 2, of which only a later version knows, and left as it is"));
    ExpectUntouched(before);
}

TEST_F(StoreFile, ThatIsNotOursIsUsedAsSoonAsItHasMadeRoom)
{
    CSqlite(Path()).Run("CREATE TABLE bookmarks(url TEXT)");
    CStateKeeper keeper(Settings());
    WarnedBy([&] { keeper.Open("boot", "c"); });
    EXPECT_FALSE(keeper.Storing());
    std::rename(Path().c_str(), Path(".theirs").c_str());
    WarnedBy([&] { keeper.Commit(CStateKeeper::Clock::now() + std::chrono::hours(1)); });
    EXPECT_TRUE(keeper.Storing());
}

TEST_F(StoreFile, ThatIsNoRegularFileIsRefusedWithoutBeingOpened)
{
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_EQ(Said(), Refusal("it is not a regular file"));
    EXPECT_FALSE(Exists("-wal"));
}

TEST_F(StoreFile, WhoseLogIsAPipeIsNotWaitedFor)
{
    WriteFile(Path(), "");
    ASSERT_EQ(mkfifo(Path("-wal").c_str(), 0600), 0);
    EXPECT_THAT(Said(), testing::HasSubstr("cannot be used: it is not a regular file"));
}

TEST_F(StoreFile, IsOursBeforeItsLogIsMovedIntoIt)
{
    const CStateStore store(Settings());
    std::string head = ReadFile(Path());
    head.resize(72);
    EXPECT_EQ(head.substr(60, 4), std::string("\0\0\0\1", 4));
    EXPECT_EQ(head.substr(68), "FKST");
}

TEST_F(StoreFile, WhoseTablesAreNotToTheLetterOursIsDamaged)
{
    const std::string changes[] = {"ALTER TABLE journal RENAME COLUMN number TO numbes",
                                   "ALTER TABLE errors ADD COLUMN more INTEGER",
                                   "DROP TABLE sessions",
                                   "CREATE TABLE more(x)",
                                   "CREATE INDEX more ON errors(code)",
                                   "CREATE TRIGGER more AFTER INSERT ON errors BEGIN DELETE FROM facts; END",
                                   "PRAGMA user_version = 0",
                                   "PRAGMA application_id = 1179341653"}; // one bit of it
    for (const std::string& change : changes)
    {
        SCOPED_TRACE(change);
        std::remove(Path().c_str());
        std::remove(Path(".damaged-1").c_str());
        MakeStore();
        CSqlite(Path()).Run(change);
        EXPECT_EQ(Said(), "faultkeeperd: error: the state store " + Path() +
                              " is damaged (its tables are not those of a state store); it is now " + Path() +
                              ".damaged-1, and a new one is begun\n");
        EXPECT_EQ(Contents(), "");
    }
}

TEST_F(StoreFile, ThatIsNoDatabaseIsDamaged)
{
    const std::string note = "This is a note that somebody put here, longer than the head of a database file "
                             "is, so that it cannot be taken for an empty one.";
    WriteFile(Path(), note);
    EXPECT_EQ(Said(), "faultkeeperd: error: the state store " + Path() +
                          " is damaged (file is not a database); it is now " + Path() +
                          ".damaged-1, and a new one is begun\n");
    EXPECT_EQ(ReadFile(Path(".damaged-1")), note);
}

TEST_F(StoreFile, ThatIsEmptyIsNewUnlessItHasALog)
{
    WriteFile(Path(), "");
    EXPECT_EQ(Said(), "");
    std::remove(Path().c_str());
    WriteFile(Path(), "");
    WriteFile(Path("-wal"), "its log");
    EXPECT_EQ(Said(), "faultkeeperd: error: the state store " + Path() +
                          " is damaged (the file is empty, and its log is not); it is now " + Path() +
                          ".damaged-1, and a new one is begun\n");
    EXPECT_EQ(ReadFile(Path(".damaged-1-wal")), "its log");
}

TEST_F(StoreFile, ThatIsDamagedIsMovedAsideWithAllThatBelongsToIt)
{
    WriteFile(Path(), "rubbish");
    WriteFile(Path("-wal"), "more");
    EXPECT_EQ(MoveStoreAside(Path()), Path(".damaged-1"));
    EXPECT_EQ(ReadFile(Path(".damaged-1")), "rubbish");
    EXPECT_EQ(ReadFile(Path(".damaged-1-wal")), "more");
    WriteFile(Path(), "again");
    EXPECT_EQ(MoveStoreAside(Path()), Path(".damaged-2"));
    EXPECT_EQ(MoveStoreAside(Path()), "") << "there is none";
}

TEST_F(StoreFile, ThatIsMovedAsideReplacesNoneThatWasBefore)
{
    for (int number = 1; number <= 12; ++number)
    {
        WriteFile(Path(), "rubbish " + std::to_string(number));
        WriteFile(Path("-wal"), "log " + std::to_string(number));
        EXPECT_EQ(MoveStoreAside(Path()), Path(".damaged-" + std::to_string(number)));
    }
    for (int number = 1; number <= 12; ++number)
    {
        const std::string name = ".damaged-" + std::to_string(number);
        EXPECT_EQ(ReadFile(Path(name)), "rubbish " + std::to_string(number));
        EXPECT_EQ(ReadFile(Path(name + "-wal")), "log " + std::to_string(number));
    }
}

TEST_F(StoreFile, ThatIsMovedAsideIsNotGivenTheLogOfOneBefore)
{
    WriteFile(Path(".damaged-1-wal"), "the log of one that somebody took away");
    WriteFile(Path(), "rubbish");
    EXPECT_EQ(MoveStoreAside(Path()), Path(".damaged-2"));
}

TEST_F(StoreFile, ThatCannotBeMovedStaysWithAllThatBelongsToIt)
{
    for (int number = 1; number <= 99; ++number)
        WriteFile(Path(".damaged-" + std::to_string(number)), "");
    WriteFile(Path(), "rubbish");
    WriteFile(Path("-wal"), "more");
    EXPECT_EQ(MoveStoreAside(Path()), "");
    EXPECT_EQ(ReadFile(Path()), "rubbish");
    EXPECT_EQ(ReadFile(Path("-wal")), "more");
}

} // namespace
