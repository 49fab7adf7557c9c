#include "store/Sqlite.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
/// As the name of a file may stand in a resource name.
std::string Escaped(const std::string& path)
{
    std::string escaped;
    for (const char c : path)
    {
        if (c == '%' || c == '?' || c == '#')
            escaped += c == '%' ? "%25" : c == '?' ? "%3f" : "%23";
        else
            escaped += c;
    }
    return escaped;
}

bool Exists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

/// @return SQLite's code
int ReadToEnd(sqlite3_file& file)
{
    sqlite3_int64 size = 0;
    int code = file.pMethods->xFileSize(&file, &size);
    char bytes[4096];
    constexpr sqlite3_int64 kBytes = sizeof bytes;
    for (sqlite3_int64 at = 0; at < size && code == SQLITE_OK; at += kBytes)
        code = file.pMethods->xRead(&file, bytes, static_cast<int>(std::min(kBytes, size - at)), at);
    return code;
}
} // namespace

bool CSqliteFailure::Damage() const
{
    const int kind = m_code & 0xFF; // the rest tells more of it
    // Statements are always the same: one that makes no sense meets tables that are not as they were made.
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB || kind == SQLITE_FORMAT || kind == SQLITE_ERROR;
}

bool CSqliteFailure::Busy() const
{
    return (m_code & 0xFF) == SQLITE_BUSY;
}

bool CSqliteFailure::Harmless() const
{
    return Busy() || (m_code & 0xFF) == SQLITE_FULL;
}

CSqlite::CSqlite(const std::string& path, ESqliteAccess access, int patienceMilliseconds) : m_handle(nullptr)
{
    const std::string name =
        path.compare(0, 1, "/") == 0 ? "file://" + Escaped(path) : "file:" + Escaped(path);
    // Without writing, a log can be read only by one who asks for no locks, and no log only by one who is
    // told that there never will be one.
    if (access == esaWrite)
        Open(name, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    else if (Exists(path + "-wal"))
        Open(name, SQLITE_OPEN_READONLY, "unix-none");
    else
        Open(name + "?immutable=1", SQLITE_OPEN_READONLY, "unix-none");
    sqlite3_busy_timeout(m_handle, patienceMilliseconds);
}

CSqlite::CSqlite(std::vector<unsigned char> image) : m_image(std::move(image)), m_handle(nullptr)
{
    Open(":memory:", SQLITE_OPEN_READWRITE, nullptr);
    const auto bytes = static_cast<sqlite3_int64>(m_image.size());
    const int code =
        sqlite3_deserialize(m_handle, "main", m_image.data(), bytes, bytes, SQLITE_DESERIALIZE_READONLY);
    if (code == SQLITE_OK)
        return;
    sqlite3_close(m_handle);
    throw CSqliteFailure(code, sqlite3_errstr(code));
}

void CSqlite::Open(const std::string& name, int flags, const char* system)
{
    const int usual = SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
    int code = sqlite3_open_v2(name.c_str(), &m_handle, flags | usual, system);
    std::string text = m_handle != nullptr ? sqlite3_errmsg(m_handle) : sqlite3_errstr(code);
    if (code == SQLITE_OK && (flags & SQLITE_OPEN_READWRITE) != 0 &&
        sqlite3_db_readonly(m_handle, "main") == 1)
    {
        code = SQLITE_READONLY; // it would read, and complain only later, and in other words
        text = "it cannot be written";
    }
    if (code == SQLITE_OK)
    {
        sqlite3_extended_result_codes(m_handle, 1);
        return;
    }
    sqlite3_close(m_handle);
    throw CSqliteFailure(code, text);
}

CSqlite::~CSqlite()
{
    sqlite3_close(m_handle);
}

/// SQLite calls a page that could not be read a broken one.
void CSqlite::Fail(int code) const
{
    const std::string text = sqlite3_errmsg(m_handle);
    if ((code & 0xFF) == SQLITE_CORRUPT)
        ReadThrough();
    throw CSqliteFailure(code, text);
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

void CSqlite::Check()
{
    if (Text("PRAGMA quick_check(1)") == "ok")
        return;
    ReadThrough(); // here, too
    if (Text("PRAGMA quick_check(1)") != "ok")
        throw CSqliteFailure(SQLITE_CORRUPT, "the file does not hold together");
}

void CSqlite::ReadThrough() const
{
    for (const int which : {SQLITE_FCNTL_FILE_POINTER, SQLITE_FCNTL_JOURNAL_POINTER})
    {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(m_handle, "main", which, &file);
        const int code = file == nullptr || file->pMethods == nullptr ? SQLITE_OK : ReadToEnd(*file);
        if (code != SQLITE_OK)
            throw CSqliteFailure(code, sqlite3_errstr(code));
    }
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
