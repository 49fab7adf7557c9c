#include "faultkeeperd/store/Sqlite.h"

#include <sqlite3.h>

namespace Faultkeeper::Apps
{

bool CSqliteFailure::Damage() const
{
    const int kind = m_code & 0xFF; // the rest tells more of it
    // Statements are always the same: one that makes no sense meets tables that are not as they were made.
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB || kind == SQLITE_FORMAT || kind == SQLITE_ERROR;
}

CSqlite::CSqlite(const std::string& path) : m_handle(nullptr)
{
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = sqlite3_open_v2(path.c_str(), &m_handle, flags, nullptr);
    if (code == SQLITE_OK)
    {
        sqlite3_extended_result_codes(m_handle, 1);
        return;
    }
    const std::string text = m_handle != nullptr ? sqlite3_errmsg(m_handle) : sqlite3_errstr(code);
    sqlite3_close(m_handle);
    throw CSqliteFailure(code, text);
}

CSqlite::~CSqlite()
{
    sqlite3_close(m_handle);
}

void CSqlite::Fail(int code) const
{
    throw CSqliteFailure(code, sqlite3_errmsg(m_handle));
}

void CSqlite::Run(const std::string& statements)
{
    const int code = sqlite3_exec(m_handle, statements.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        Fail(code);
}

void CSqlite::TryToRun(const std::string& statements) noexcept
{
    sqlite3_exec(m_handle, statements.c_str(), nullptr, nullptr, nullptr);
}

std::string CSqlite::Text(const std::string& query)
{
    CSqliteStatement statement(*this, query);
    return statement.Next() ? statement.Text(0) : std::string();
}

std::int64_t CSqlite::Integer(const std::string& query)
{
    CSqliteStatement statement(*this, query);
    return statement.Next() ? statement.Integer(0) : 0;
}

CSqliteStatement::CSqliteStatement(CSqlite& database, const std::string& statement)
    : m_database(database), m_handle(nullptr)
{
    Check(sqlite3_prepare_v3(database.m_handle, statement.c_str(), static_cast<int>(statement.size()),
                             SQLITE_PREPARE_PERSISTENT, &m_handle, nullptr));
}

CSqliteStatement::~CSqliteStatement()
{
    sqlite3_finalize(m_handle);
}

void CSqliteStatement::Check(int code) const
{
    if (code != SQLITE_OK)
        m_database.Fail(code);
}

CSqliteStatement& CSqliteStatement::Put(std::int64_t value)
{
    Check(sqlite3_bind_int64(m_handle, m_next++, value));
    return *this;
}

CSqliteStatement& CSqliteStatement::Put(const std::string& text)
{
    Check(
        sqlite3_bind_text(m_handle, m_next++, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
    return *this;
}

CSqliteStatement& CSqliteStatement::PutNothing()
{
    Check(sqlite3_bind_null(m_handle, m_next++));
    return *this;
}

void CSqliteStatement::Run()
{
    while (Next())
        continue;
}

bool CSqliteStatement::Next()
{
    const int code = sqlite3_step(m_handle);
    if (code == SQLITE_ROW)
        return true;
    Rewind();
    if (code != SQLITE_DONE)
        m_database.Fail(code);
    return false;
}

void CSqliteStatement::Rewind()
{
    sqlite3_reset(m_handle); // what it returns was told by the step before
    m_next = 1;
}

std::int64_t CSqliteStatement::Integer(int column) const
{
    return sqlite3_column_int64(m_handle, column);
}

std::string CSqliteStatement::Text(int column) const
{
    const unsigned char* const text = sqlite3_column_text(m_handle, column);
    const int size = sqlite3_column_bytes(m_handle, column);
    return text == nullptr ? std::string()
                           : std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
}

bool CSqliteStatement::Nothing(int column) const
{
    return sqlite3_column_type(m_handle, column) == SQLITE_NULL;
}

} // namespace Faultkeeper::Apps
