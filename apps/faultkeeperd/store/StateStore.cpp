#include "faultkeeperd/store/StateStore.h"

#include "store/StoreFile.h"
#include "store/StoreRows.h"

#include <algorithm>
#include <ctime>
#include <limits>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kPatienceMilliseconds = 2000;

const SStoreSettings& Checked(const SStoreSettings& settings)
{
    CheckStoreHead(settings.path);
    return settings;
}
} // namespace

/// Prepared once: they are run many times a second.
struct CStateStore::SStatements
{
    explicit SStatements(CSqlite& database)
        : putFact(database, "INSERT OR REPLACE INTO facts VALUES(?, ?, ?)"),
          putError(database, "INSERT OR REPLACE INTO errors VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
          putSession(database, "INSERT OR REPLACE INTO sessions VALUES(?, ?, ?, ?, ?)"),
          forgetSession(database, "DELETE FROM sessions WHERE place = ?"),
          append(database, "INSERT OR REPLACE INTO journal VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
          trim(database, "DELETE FROM journal WHERE number <= "
                         "(SELECT number FROM journal ORDER BY number LIMIT 1 OFFSET ?)"),
          journal(database, "SELECT * FROM journal WHERE number >= ? ORDER BY number LIMIT ?")
    {
    }

    CSqliteStatement putFact;
    CSqliteStatement putError;
    CSqliteStatement putSession;
    CSqliteStatement forgetSession;
    CSqliteStatement append;
    CSqliteStatement trim;
    CSqliteStatement journal;
};

CStateStore::CStateStore(const SStoreSettings& settings, EStoreOpening opening)
    : m_settings(Checked(settings)), m_database(settings.path, opening == esoReading ? esaRead : esaWrite,
                                                opening == esoPatiently ? kPatienceMilliseconds : 0)
{
    m_database.Run("PRAGMA locking_mode = EXCLUSIVE"); // first: then no shared memory is made beside the file
    m_database.Run("PRAGMA cell_size_check = ON");
    OpenTables(opening);
    m_statements = std::make_unique<SStatements>(m_database);
    if (opening == esoAtOnce)
        TryWriting();
    FindJournalEnd();
    if (opening != esoAtOnce)
        Check();
}

CStateStore::~CStateStore() = default;

void CStateStore::OpenTables(EStoreOpening opening)
{
    if (m_database.Integer("PRAGMA page_count") == 0)
        MakeStoreTables(m_database);
    CheckStoreTables(m_database);
    if (opening == esoReading)
        return;
    m_database.Run("PRAGMA journal_mode = WAL"); // the tables are made before: then the file itself is ours
    m_database.Run(m_settings.syncEachCommit ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
}

/// The last number is that of the last row that can be trusted, or of one after it without a gap.
void CStateStore::FindJournalEnd()
{
    m_length = static_cast<std::uint64_t>(m_database.Integer("SELECT count(*) FROM journal"));
    std::vector<std::uint64_t> doubtful;
    STransition last;
    CSqliteStatement rows(m_database, "SELECT * FROM journal ORDER BY number DESC");
    while (m_lastNumber == 0 && rows.Next())
    {
        if (GetRow(rows, last))
            m_lastNumber = last.number;
        else
            doubtful.push_back(last.number);
    }
    for (auto number = doubtful.rbegin(); number != doubtful.rend(); ++number)
        m_lastNumber += *number == m_lastNumber + 1 ? 1 : 0;
}

void CStateStore::TryWriting()
{
    PutFactRow(m_statements->putFact, esfTry, std::to_string(std::time(nullptr)));
    m_statements->putFact.Run();
}

void CStateStore::Check()
{
    m_database.Check();
    CheckJournal();
}

void CStateStore::CheckJournal()
{
    m_length = 0;
    m_badTransitions.clear();
    STransition transition;
    CSqliteStatement rows(m_database, "SELECT * FROM journal");
    while (rows.Next())
    {
        if (GetRow(rows, transition))
            ++m_length;
        else
            m_badTransitions.push_back(rows.Integer(0));
    }
}

SStoreContents CStateStore::Read()
{
    SStoreContents contents;
    ReadFacts(contents);
    ReadErrors(contents);
    ReadSessions(contents);
    NameBadTransitions(contents);
    return contents;
}

/// Runs of them in one: there can be a hundred thousand.
void CStateStore::NameBadTransitions(SStoreContents& contents) const
{
    for (auto first = m_badTransitions.begin(); first != m_badTransitions.end();)
    {
        auto last = first;
        while (last + 1 != m_badTransitions.end() && *(last + 1) == *last + 1)
            ++last;
        contents.dropped.push_back(last == first ? "transition numbered " + std::to_string(*first)
                                                 : "transitions numbered " + std::to_string(*first) + " to " +
                                                       std::to_string(*last));
        first = last + 1;
    }
}

void CStateStore::ReadFacts(SStoreContents& contents)
{
    const SStoreFacts facts = ReadStoreFacts(m_database);
    m_badFacts = facts.bad;
    for (const std::int64_t id : facts.bad)
        contents.dropped.push_back(NameOfFact(id));
    contents.boot = facts.Value(esfBoot);
    contents.configuration = facts.Value(esfConfiguration);
}

void CStateStore::ReadErrors(SStoreContents& contents)
{
    m_badErrors.clear();
    SStoredError error;
    CSqliteStatement rows(m_database, "SELECT * FROM errors");
    while (rows.Next())
    {
        if (GetRow(rows, error))
        {
            contents.errors.push_back(error);
            continue;
        }
        m_badErrors.push_back(rows.Integer(0));
        const ErrorId id = IdOfErrorRow(rows);
        contents.dropped.push_back("error " + ErrorName(id.first, id.second));
        contents.droppedErrors.push_back(id);
    }
}

void CStateStore::ReadSessions(SStoreContents& contents)
{
    m_sessionsKnown = true;
    m_places.clear();
    m_badSessions.clear();
    SStoredSession session;
    std::int64_t place = 0;
    CSqliteStatement rows(m_database, "SELECT * FROM sessions ORDER BY leftTime, id");
    while (rows.Next())
    {
        if (GetRow(rows, session, place) && m_places.emplace(session.id, place).second)
        {
            contents.sessions.push_back(session);
            m_lastPlace = std::max(m_lastPlace, place);
            continue;
        }
        m_badSessions.push_back(place);
        contents.dropped.push_back("session that reads " + session.id);
    }
}

void CStateStore::Begin(const std::string& boot, const std::string& configuration)
{
    SStoreContents before;
    ReadFacts(before);
    CSqliteTransaction transaction(m_database);
    DropBadRows();
    if (!before.OfBoot(boot))
        BeginBoot();
    PutFact(esfBoot, boot);
    PutFact(esfConfiguration, configuration);
    transaction.Commit();
}

/// Twice: without these nothing else could be trusted.
void CStateStore::PutFact(EStoreFact fact, const std::string& value)
{
    for (const std::int64_t copy : {std::int64_t(fact), CopyOf(fact)})
    {
        PutFactRow(m_statements->putFact, copy, value);
        m_statements->putFact.Run();
    }
}

/// By their numbers, which no other rows have.
void CStateStore::DropBadRows()
{
    const auto drop = [this](const char* deletion, std::vector<std::int64_t>& rows)
    {
        CSqliteStatement statement(m_database, deletion);
        for (const std::int64_t row : rows)
            statement.Put(row).Run();
        rows.clear();
    };
    drop("DELETE FROM facts WHERE id = ?", m_badFacts);
    drop("DELETE FROM errors WHERE id = ?", m_badErrors);
    drop("DELETE FROM sessions WHERE place = ?", m_badSessions);
    drop("DELETE FROM journal WHERE number = ?", m_badTransitions);
}

/// What was raised is for reporters to raise again, and the clients that sessions belonged to are gone.
void CStateStore::BeginBoot()
{
    m_database.Run("DELETE FROM sessions");
    m_places.clear();
    SStoreContents contents;
    ReadErrors(contents);
    for (SStoredError& error : contents.errors)
    {
        if (error.entry.flags == 0)
            continue;
        error.entry.flags = 0;
        Put(error);
    }
}

void CStateStore::Commit(const SStoreBatch& batch)
{
    if (!m_sessionsKnown)
    {
        SStoreContents ignored;
        ReadSessions(ignored);
    }
    CSqliteTransaction transaction(m_database);
    for (const SStoredError& error : batch.errors)
        Put(error);
    for (const SStoredSession& session : batch.sessions)
        Put(session);
    for (const std::string& session : batch.forgottenSessions)
        Forget(session);
    for (const STransition& transition : batch.transitions)
        Append(transition);
    if (!batch.configuration.empty())
        PutFact(esfConfiguration, batch.configuration);
    TrimJournal();
    transaction.Commit();
}

void CStateStore::Put(const SStoredError& error)
{
    PutRow(m_statements->putError, error);
    m_statements->putError.Run();
}

void CStateStore::Put(const SStoredSession& session)
{
    const auto place = m_places.try_emplace(session.id, m_lastPlace + 1).first;
    m_lastPlace = std::max(m_lastPlace, place->second);
    PutRow(m_statements->putSession, session, place->second);
    m_statements->putSession.Run();
}

void CStateStore::Forget(const std::string& session)
{
    const auto place = m_places.find(session);
    if (place == m_places.end())
        return;
    m_statements->forgetSession.Put(place->second).Run();
    m_places.erase(place);
}

void CStateStore::Append(const STransition& transition)
{
    STransition numbered = transition;
    numbered.number = ++m_lastNumber;
    ++m_length;
    PutRow(m_statements->append, numbered);
    m_statements->append.Run();
}

void CStateStore::TrimJournal()
{
    if (m_length <= m_settings.journalLimit)
        return;
    const std::uint64_t surplus = m_length - m_settings.journalLimit;
    m_statements->trim.Put(static_cast<std::int64_t>(surplus) - 1).Run();
    m_length -= surplus;
}

std::vector<STransition> CStateStore::Journal(std::uint64_t from, std::size_t limit)
{
    std::vector<STransition> transitions;
    CSqliteStatement& rows = m_statements->journal;
    constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
    rows.Put(static_cast<std::int64_t>(std::min(from, kLargest)))
        .Put(static_cast<std::int64_t>(std::min<std::uint64_t>(limit, kLargest)));
    STransition transition;
    while (rows.Next())
    {
        if (GetRow(rows, transition))
            transitions.push_back(transition);
    }
    return transitions;
}

} // namespace Faultkeeper::Apps
