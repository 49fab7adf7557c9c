#include "faultkeeperd/store/StateStore.h"

#include "common/Checksum.h"
#include "common/ErrorNames.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kFormat = 1; // of the tables below; a store of another one is not read
constexpr const char* kTables = R"(
    CREATE TABLE IF NOT EXISTS facts(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS errors(
        code INTEGER, type INTEGER, raised INTEGER, counter1 INTEGER, counter2 INTEGER, raises INTEGER,
        raisedTime INTEGER, clearedTime INTEGER, checksum INTEGER, PRIMARY KEY(code, type)) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS sessions(
        id TEXT PRIMARY KEY, applied INTEGER, leftTime INTEGER, checksum INTEGER) WITHOUT ROWID;
    CREATE TABLE IF NOT EXISTS journal(
        number INTEGER PRIMARY KEY, time INTEGER, sinceBoot INTEGER, raised INTEGER, code INTEGER, type INTEGER,
        session TEXT, causeCode INTEGER, causeType INTEGER, checksum INTEGER);
)";

std::int64_t ChecksumOf(const SStoredError& error)
{
    const SErrorEntry& entry = error.entry;
    return CChecksum()
        .Add(entry.problemCode)
        .Add(entry.problemType)
        .Add(entry.flags & kRaisedFlag)
        .Add(entry.counter1)
        .Add(entry.counter2)
        .Add(static_cast<std::int64_t>(error.raises))
        .Add(entry.raisedTime.Nanoseconds())
        .Add(entry.clearedTime.Nanoseconds())
        .Value();
}

std::int64_t ChecksumOf(const SStoredSession& session)
{
    return CChecksum()
        .Add(session.id)
        .Add(static_cast<std::int64_t>(session.applied))
        .Add(session.left)
        .Value();
}

std::int64_t ChecksumOf(const STransition& transition)
{
    return CChecksum()
        .Add(static_cast<std::int64_t>(transition.number))
        .Add(transition.time.Nanoseconds())
        .Add(transition.sinceBoot)
        .Add(transition.raised ? 1 : 0)
        .Add(transition.problemCode)
        .Add(transition.problemType)
        .Add(transition.session)
        .Add(transition.caused ? 1 : 0)
        .Add(transition.causeCode)
        .Add(transition.causeType)
        .Value();
}

/// Of the first columns of a row as they are in the file, to be compared with the checksum of what was
/// written.
std::int64_t ChecksumOfErrorRow(const CSqliteStatement& row)
{
    CChecksum checksum;
    for (int column = 0; column < 8; ++column)
        checksum.Add(row.Integer(column));
    return checksum.Value();
}

std::int64_t ChecksumOfJournalRow(const CSqliteStatement& row)
{
    CChecksum checksum;
    for (int column = 0; column < 6; ++column)
        checksum.Add(row.Integer(column));
    checksum.Add(row.Text(6)).Add(row.Nothing(7) ? 0 : 1);
    return checksum.Add(row.Integer(7)).Add(row.Integer(8)).Value();
}

SStoredError ErrorOf(const CSqliteStatement& row)
{
    SStoredError error;
    error.entry.problemCode = static_cast<std::int32_t>(row.Integer(0));
    error.entry.problemType = static_cast<std::int16_t>(row.Integer(1));
    error.entry.flags = row.Integer(2) != 0 ? kRaisedFlag : std::uint16_t(0);
    error.entry.counter1 = static_cast<std::uint16_t>(row.Integer(3));
    error.entry.counter2 = static_cast<std::uint16_t>(row.Integer(4));
    error.raises = static_cast<std::uint64_t>(row.Integer(5));
    error.entry.raisedTime = Core::Time::FromNanoseconds(row.Integer(6));
    error.entry.clearedTime = Core::Time::FromNanoseconds(row.Integer(7));
    return error;
}

STransition TransitionOf(const CSqliteStatement& row)
{
    STransition transition;
    transition.number = static_cast<std::uint64_t>(row.Integer(0));
    transition.time = Core::Time::FromNanoseconds(row.Integer(1));
    transition.sinceBoot = row.Integer(2);
    transition.raised = row.Integer(3) != 0;
    transition.problemCode = static_cast<int>(row.Integer(4));
    transition.problemType = static_cast<int>(row.Integer(5));
    transition.session = row.Text(6);
    transition.caused = !row.Nothing(7);
    transition.causeCode = static_cast<int>(row.Integer(7));
    transition.causeType = static_cast<int>(row.Integer(8));
    return transition;
}
/// SQLite opens a file that says it is written by a later SQLite, and then cannot write it. Ours says that
/// only if it is damaged. To be called before it is opened: a file that is closed loses its locks.
const SStoreSettings& CheckedForVersion(const SStoreSettings& settings)
{
    constexpr long kVersions = 18; // where the file says which version may write, and which may read it
    constexpr int kHighestVersion = 2;
    std::FILE* const file = std::fopen(settings.path.c_str(), "rb");
    if (file == nullptr)
        return settings;
    const bool there = std::fseek(file, kVersions, SEEK_SET) == 0;
    const int writing = there ? std::fgetc(file) : EOF;
    const int reading = there ? std::fgetc(file) : EOF;
    std::fclose(file);
    if (writing > kHighestVersion || reading > kHighestVersion)
        throw CSqliteFailure(24, "file is not a database"); // SQLITE_FORMAT
    return settings;
}
} // namespace

/// Prepared once: they are run many times a second.
struct CStateStore::SStatements
{
    explicit SStatements(CSqlite& database)
        : putError(database, "INSERT OR REPLACE INTO errors VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)"),
          putSession(database, "INSERT OR REPLACE INTO sessions VALUES(?, ?, ?, ?)"),
          forgetSession(database, "DELETE FROM sessions WHERE id = ?"),
          append(database, "INSERT INTO journal VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
          trim(database, "DELETE FROM journal WHERE number < ?"),
          journal(database, "SELECT * FROM journal WHERE number >= ? ORDER BY number LIMIT ?")
    {
    }

    CSqliteStatement putError;
    CSqliteStatement putSession;
    CSqliteStatement forgetSession;
    CSqliteStatement append;
    CSqliteStatement trim;
    CSqliteStatement journal;
};

CStateStore::CStateStore(const SStoreSettings& settings)
    : m_settings(CheckedForVersion(settings)), m_database(settings.path)
{
    m_database.Run("PRAGMA locking_mode = EXCLUSIVE"); // first: then no shared memory is made beside the file
    m_database.Run("PRAGMA journal_mode = WAL");
    m_database.Run(m_settings.syncEachCommit ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
    m_database.Run("PRAGMA cell_size_check = ON");
    if (m_database.Text("PRAGMA quick_check(1)") != "ok")
        throw CSqliteFailure(11, "the file does not hold together"); // SQLITE_CORRUPT
    const std::int64_t format = m_database.Integer("PRAGMA user_version");
    if (format != 0 && format != kFormat)
        throw CSqliteFailure(24, "format " + std::to_string(format) + " is not known"); // SQLITE_FORMAT
    Prepare();
}

CStateStore::~CStateStore() = default;

void CStateStore::Prepare()
{
    CSqliteTransaction transaction(m_database);
    m_database.Run(kTables);
    m_database.Run("PRAGMA user_version = " + std::to_string(kFormat));
    transaction.Commit();
    m_statements = std::make_unique<SStatements>(m_database);
    m_lastNumber = static_cast<std::uint64_t>(m_database.Integer("SELECT max(number) FROM journal"));
    const std::int64_t first = m_database.Integer("SELECT min(number) FROM journal");
    m_firstNumber = first > 0 ? static_cast<std::uint64_t>(first) : m_lastNumber + 1;
}

SStoreContents CStateStore::Read()
{
    SStoreContents contents;
    contents.boot = m_database.Text("SELECT value FROM facts WHERE name = 'boot'");
    contents.configuration = m_database.Text("SELECT value FROM facts WHERE name = 'configuration'");
    ReadErrors(contents);
    ReadSessions(contents);
    return contents;
}

void CStateStore::ReadErrors(SStoreContents& contents)
{
    std::vector<SStoredError> bad;
    CSqliteStatement rows(m_database, "SELECT * FROM errors");
    while (rows.Next())
    {
        const SStoredError error = ErrorOf(rows);
        (rows.Integer(8) == ChecksumOfErrorRow(rows) ? contents.errors : bad).push_back(error);
    }
    for (const SStoredError& error : bad)
        Drop("errors",
             "code = " + std::to_string(error.entry.problemCode) +
                 " AND type = " + std::to_string(error.entry.problemType),
             ErrorName(error.entry.problemCode, error.entry.problemType), contents);
}

void CStateStore::ReadSessions(SStoreContents& contents)
{
    std::vector<SStoredSession> bad;
    CSqliteStatement rows(m_database, "SELECT * FROM sessions ORDER BY leftTime, id");
    while (rows.Next())
    {
        const SStoredSession session = {rows.Text(0), static_cast<std::uint64_t>(rows.Integer(1)),
                                        rows.Integer(2)};
        (rows.Integer(3) == ChecksumOf(session) ? contents.sessions : bad).push_back(session);
    }
    for (const SStoredSession& session : bad)
    {
        m_statements->forgetSession.Put(session.id).Run();
        contents.dropped.push_back("session " + session.id);
    }
}

void CStateStore::Drop(const char* table, const std::string& where, const std::string& name,
                       SStoreContents& contents)
{
    m_database.Run(std::string("DELETE FROM ") + table + " WHERE " + where);
    contents.dropped.push_back("error " + name);
}

void CStateStore::Begin(const std::string& boot, const std::string& configuration)
{
    CSqliteTransaction transaction(m_database);
    CSqliteStatement put(m_database, "INSERT OR REPLACE INTO facts VALUES(?, ?)");
    const bool sameBoot = m_database.Text("SELECT value FROM facts WHERE name = 'boot'") == boot;
    if (!sameBoot)
        BeginBoot();
    put.Put("boot").Put(boot).Run();
    put.Put("configuration").Put(configuration).Run();
    transaction.Commit();
}

/// What was raised is for reporters to raise again, and the clients that sessions belonged to are gone.
void CStateStore::BeginBoot()
{
    m_database.Run("DELETE FROM sessions");
    std::vector<SStoredError> raised;
    CSqliteStatement rows(m_database, "SELECT * FROM errors WHERE raised != 0");
    while (rows.Next())
        raised.push_back(ErrorOf(rows));
    for (SStoredError& error : raised)
    {
        error.entry.flags = 0;
        Put(error);
    }
}

void CStateStore::Commit(const SStoreBatch& batch)
{
    const std::uint64_t firstBefore = m_firstNumber;
    const std::uint64_t lastBefore = m_lastNumber;
    try
    {
        CSqliteTransaction transaction(m_database);
        for (const SStoredError& error : batch.errors)
            Put(error);
        for (const SStoredSession& session : batch.sessions)
            Put(session);
        for (const std::string& session : batch.forgottenSessions)
            m_statements->forgetSession.Put(session).Run();
        for (const STransition& transition : batch.transitions)
            Append(transition);
        TrimJournal();
        transaction.Commit();
    }
    catch (...)
    {
        m_firstNumber = firstBefore;
        m_lastNumber = lastBefore;
        throw;
    }
}

void CStateStore::Put(const SStoredError& error)
{
    const SErrorEntry& entry = error.entry;
    m_statements->putError.Put(entry.problemCode)
        .Put(entry.problemType)
        .Put(entry.flags & kRaisedFlag)
        .Put(entry.counter1)
        .Put(entry.counter2)
        .Put(static_cast<std::int64_t>(error.raises))
        .Put(entry.raisedTime.Nanoseconds())
        .Put(entry.clearedTime.Nanoseconds())
        .Put(ChecksumOf(error))
        .Run();
}

void CStateStore::Put(const SStoredSession& session)
{
    m_statements->putSession.Put(session.id)
        .Put(static_cast<std::int64_t>(session.applied))
        .Put(session.left)
        .Put(ChecksumOf(session))
        .Run();
}

void CStateStore::Append(const STransition& transition)
{
    STransition numbered = transition;
    numbered.number = ++m_lastNumber;
    CSqliteStatement& row = m_statements->append;
    row.Put(static_cast<std::int64_t>(numbered.number))
        .Put(numbered.time.Nanoseconds())
        .Put(numbered.sinceBoot)
        .Put(numbered.raised ? 1 : 0)
        .Put(numbered.problemCode)
        .Put(numbered.problemType)
        .Put(numbered.session);
    if (numbered.caused)
        row.Put(numbered.causeCode).Put(numbered.causeType);
    else
        row.PutNothing().PutNothing();
    row.Put(ChecksumOf(numbered)).Run();
}

void CStateStore::TrimJournal()
{
    if (JournalLength() <= m_settings.journalLimit)
        return;
    m_firstNumber = m_lastNumber + 1 - m_settings.journalLimit;
    m_statements->trim.Put(static_cast<std::int64_t>(m_firstNumber)).Run();
}

std::vector<STransition> CStateStore::Journal(std::uint64_t from, std::size_t limit)
{
    std::vector<STransition> transitions;
    CSqliteStatement& rows = m_statements->journal;
    constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
    rows.Put(static_cast<std::int64_t>(std::min(from, kLargest)))
        .Put(static_cast<std::int64_t>(std::min<std::uint64_t>(limit, kLargest)));
    while (rows.Next())
    {
        const STransition transition = TransitionOf(rows);
        if (rows.Integer(9) == ChecksumOfJournalRow(rows))
            transitions.push_back(transition);
    }
    return transitions;
}

std::string MoveStoreAside(const std::string& path)
{
    constexpr int kKept = 9; // a medium that damages file after file must not be filled by them
    std::string target;
    for (int number = 1; number <= kKept; ++number)
    {
        target = path + ".damaged-" + std::to_string(number);
        std::FILE* const taken = std::fopen(target.c_str(), "rb");
        if (taken == nullptr)
            break;
        std::fclose(taken);
    }
    for (const char* const part : {"-wal", "-shm"})
        std::rename((path + part).c_str(), (target + part).c_str());
    return std::rename(path.c_str(), target.c_str()) == 0 ? target : std::string();
}

} // namespace Faultkeeper::Apps
