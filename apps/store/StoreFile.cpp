#include "store/StoreFile.h"

#include <sqlite3.h>
#include <unistd.h>

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::uint32_t kApplication = 0x464B5354; // "FKST": it is a store of ours
constexpr std::uint32_t kFormat = 1;               // of the tables below
constexpr std::uint32_t kHighestFormat = 9999;     // nobody will get that far: above it is damage
constexpr std::size_t kFlippedBits = 3; // an application number that is off by so few is ours, damaged

// Each row has one number that says which it is, and that is where it lies in the file: there cannot be two
// of one, and a row can be taken out without touching another one, whatever has become of what it says.
constexpr const char* kTables[] = {
    "CREATE TABLE facts(id INTEGER PRIMARY KEY, value TEXT, checksum INTEGER)",
    "CREATE TABLE errors(id INTEGER PRIMARY KEY, code INTEGER, type INTEGER, raised INTEGER, counter1 "
    "INTEGER, "
    "counter2 INTEGER, raises INTEGER, raisedTime INTEGER, clearedTime INTEGER, checksum INTEGER)",
    "CREATE TABLE sessions(place INTEGER PRIMARY KEY, id TEXT, applied INTEGER, leftTime INTEGER, "
    "checksum INTEGER)",
    "CREATE TABLE journal(number INTEGER PRIMARY KEY, time INTEGER, sinceBoot INTEGER, raised INTEGER, "
    "code INTEGER, type INTEGER, session TEXT, causeCode INTEGER, causeType INTEGER, checksum INTEGER)",
};

// The head of a database file, in its own byte order.
constexpr std::size_t kHeadBytes = 100;
constexpr char kMagic[16] = "SQLite format 3";
constexpr std::size_t kVersionsAt = 18; // which version may write it, and which may read it
constexpr int kHighestVersion = 2;
constexpr std::size_t kFormatAt = 60;
constexpr std::size_t kApplicationAt = 68;

const char* const kParts[] = {"-wal", "-shm", "-journal"};

/// Opening what is no file can wait for ever, as for the other end of a pipe.
void CheckRegular(const std::string& path)
{
    std::error_code ignored; // SQLite tells best why a file cannot be had
    if (std::filesystem::is_other(path, ignored))
        throw CSqliteFailure(SQLITE_PERM, "it is not a regular file");
}

std::size_t ReadHead(const std::string& path, unsigned char (&head)[kHeadBytes])
{
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return 0;
    const std::size_t bytes = std::fread(head, 1, kHeadBytes, file);
    std::fclose(file);
    return bytes;
}

std::uint32_t NumberAt(const unsigned char* bytes)
{
    std::uint32_t number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 8 | bytes[i];
    return number;
}

/// @param number  that a file gives as its application's
bool Ours(std::uint32_t number)
{
    return std::bitset<32>(number ^ kApplication).count() <= kFlippedBits;
}

/// SQLite takes a file of one byte for an empty one, and a log beside an empty one for one that was left
/// over, which it removes. While a file is made, a journal is beside it.
void CheckShort(const std::string& path, std::size_t bytes)
{
    unsigned char head[kHeadBytes];
    if (bytes == 0 && access(path.c_str(), F_OK) == 0 && ReadHead(path + "-wal", head) > 0)
        throw CSqliteFailure(SQLITE_CORRUPT, "the file is empty, and its log is not");
    if (bytes > 0 && access((path + "-journal").c_str(), F_OK) != 0)
        throw CSqliteFailure(SQLITE_NOTADB, "file is not a database");
}

bool Taken(const std::string& path)
{
    bool taken = access(path.c_str(), F_OK) == 0;
    for (const char* const part : kParts)
        taken = taken || access((path + part).c_str(), F_OK) == 0;
    return taken;
}

/// @return a name that nothing has; empty if there is none left
std::string FreeName(const std::string& path)
{
    constexpr int kMost = 99; // so that they fill no disk
    for (int number = 1; number <= kMost; ++number)
    {
        std::string name = path + ".damaged-" + std::to_string(number);
        if (!Taken(name))
            return name;
    }
    return std::string();
}
} // namespace

std::string UsualStorePath(const std::string& runDirectory)
{
    return runDirectory + "/faultkeeper.db";
}

void CheckStoreHead(const std::string& path)
{
    CheckRegular(path);
    for (const char* const part : kParts)
        CheckRegular(path + part);
    unsigned char head[kHeadBytes];
    const std::size_t bytes = ReadHead(path, head);
    if (bytes < kHeadBytes)
        CheckShort(path, bytes);
    if (bytes < kHeadBytes || std::memcmp(head, kMagic, sizeof kMagic) != 0)
        return; // SQLite tells what is wrong with it
    if (!Ours(NumberAt(head + kApplicationAt)))
        throw CSqliteFailure(SQLITE_PERM, "it is a database of another program, and left as it is");
    const std::uint32_t format = NumberAt(head + kFormatAt);
    if (format > kFormat && format <= kHighestFormat)
        throw CSqliteFailure(SQLITE_PERM, "it is of format " + std::to_string(format) +
                                              ", of which only a later version knows, and left as it is");
    // SQLite opens a file that says it is written by a later SQLite, and then cannot write it.
    if (head[kVersionsAt] > kHighestVersion || head[kVersionsAt + 1] > kHighestVersion)
        throw CSqliteFailure(SQLITE_FORMAT, "file is not a database");
}

void MakeStoreTables(CSqlite& database)
{
    CSqliteTransaction transaction(database);
    for (const char* const table : kTables)
        database.Run(table);
    database.Run("PRAGMA application_id = " + std::to_string(kApplication));
    database.Run("PRAGMA user_version = " + std::to_string(kFormat));
    transaction.Commit();
}

void CheckStoreTables(CSqlite& database)
{
    std::vector<std::string> expected(std::begin(kTables), std::end(kTables));
    std::vector<std::string> found;
    {
        CSqliteStatement rows(database, "SELECT sql FROM sqlite_master ORDER BY rowid");
        while (rows.Next())
            found.push_back(rows.Text(0));
    }
    if (found != expected || database.Integer("PRAGMA application_id") != kApplication ||
        database.Integer("PRAGMA user_version") != kFormat)
        throw CSqliteFailure(SQLITE_CORRUPT, "its tables are not those of a state store");
}

std::string MoveStoreAside(const std::string& path)
{
    std::string target = FreeName(path);
    if (target.empty())
        return target;
    // First what belongs to it: beside a new file it would be taken for that one's.
    for (const char* const part : kParts)
        std::rename((path + part).c_str(), (target + part).c_str());
    if (std::rename(path.c_str(), target.c_str()) == 0)
        return target;
    for (const char* const part : kParts)
        std::rename((target + part).c_str(), (path + part).c_str());
    return std::string();
}

} // namespace Faultkeeper::Apps
