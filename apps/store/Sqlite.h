#ifndef FAULTKEEPER_APPS_STORE_SQLITE_H
#define FAULTKEEPER_APPS_STORE_SQLITE_H

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace Faultkeeper::Apps
{

/// What SQLite could not do, in its words.
class CSqliteFailure : public std::runtime_error
{
public:
    CSqliteFailure(int code, const std::string& text) : std::runtime_error(text), m_code(code) {}

    /// Is the file itself no database, or a broken one? A disk that is full or fails is something else, but
    /// one that failed to give a page once can look like it.
    bool Damage() const;

    /// Is the file in use by another process?
    bool Busy() const;

    /// Is it, or is the disk full? Then the file is as sound as it was before.
    bool Harmless() const;

private:
    const int m_code;
};

/// How a database file is opened.
enum ESqliteAccess
{
    esaWrite = 0, ///< to read and write; the file is made if there is none
    esaRead ///< nothing is written, neither to the file nor beside it, and no lock is taken or respected
};

/// One database file, open as long as this lives.
class CSqlite
{
public:
    /// @param patienceMilliseconds  how long to wait for another process that uses the file
    /// @throws CSqliteFailure; likewise below
    explicit CSqlite(const std::string& path, ESqliteAccess access = esaWrite, int patienceMilliseconds = 0);
    /// A database in memory, to be read only.
    /// @param image  the bytes of a database file that has no log beside it
    explicit CSqlite(std::vector<unsigned char> image);
    ~CSqlite();
    CSqlite(const CSqlite&) = delete;
    CSqlite& operator=(const CSqlite&) = delete;

    /// Runs statements that give nothing, or whose results are of no interest.
    void Run(const std::string& statements);

    /// The same where failing does no more harm.
    void TryToRun(const std::string& statements) noexcept;

    /// The first column of the only row.
    std::string Text(const std::string& query);
    std::int64_t Integer(const std::string& query);

    /// Looks through the whole file. A page that the disk does not give is no damage. Cost: reads all of it.
    void Check();

private:
    friend class CSqliteStatement;

    void Open(const std::string& name, int flags, const char* system);
    [[noreturn]] void Fail(int code) const;
    void ReadThrough() const;

    std::vector<unsigned char> m_image; // of a database in memory
    sqlite3* m_handle;
};

/// One statement with places for values, to be run again and again.
class CSqliteStatement
{
public:
    /// @param database  borrowed; outlives the statement
    CSqliteStatement(CSqlite& database, const std::string& statement);
    ~CSqliteStatement();
    CSqliteStatement(const CSqliteStatement&) = delete;
    CSqliteStatement& operator=(const CSqliteStatement&) = delete;

    /// Gives the next place its value, from the first one on after each Run or Rewind.
    CSqliteStatement& Put(std::int64_t value);
    CSqliteStatement& Put(const std::string& text);
    CSqliteStatement& PutNothing();

    /// Runs a statement that gives no rows.
    void Run();

    /// Goes to the next row. @return false after the last, which rewinds
    bool Next();
    /// Ready for the next values.
    void Rewind();

    /// Columns of the row, from 0.
    std::int64_t Integer(int column) const;
    std::string Text(int column) const;
    bool Nothing(int column) const;

private:
    void Check(int code) const;

    CSqlite& m_database;
    sqlite3_stmt* m_handle;
    int m_next = 1;
};

/// A transaction that is taken back unless it is committed.
class CSqliteTransaction
{
public:
    explicit CSqliteTransaction(CSqlite& database) : m_database(database)
    {
        m_database.Run("BEGIN IMMEDIATE");
    }
    ~CSqliteTransaction()
    {
        if (!m_committed)
            m_database.TryToRun("ROLLBACK");
    }
    CSqliteTransaction(const CSqliteTransaction&) = delete;
    CSqliteTransaction& operator=(const CSqliteTransaction&) = delete;

    void Commit()
    {
        m_database.Run("COMMIT");
        m_committed = true;
    }

private:
    CSqlite& m_database;
    bool m_committed = false;
};

} // namespace Faultkeeper::Apps

#endif
