#ifndef FAULTKEEPER_FAULTKEEPERD_STORE_STATESTORE_H
#define FAULTKEEPER_FAULTKEEPERD_STORE_STATESTORE_H

#include "faultkeeperd/store/Sqlite.h"
#include "faultkeeperd/store/StoreRecords.h"

#include <cstddef>
#include <memory>
#include <string>

namespace Faultkeeper::Apps
{

/// Where and how a store is kept.
struct SStoreSettings
{
    static constexpr std::size_t kUsualJournalLimit = 100000;

    std::string path;
    std::size_t journalLimit = kUsualJournalLimit; ///< transitions; the oldest go first
    bool syncEachCommit = false; ///< have the medium hold each commit before it counts as done
};

/// The error states, the journal and the sessions of an owner, in one SQLite file.
///
/// A commit survives the end of the process at once. Whether it survives a loss of power depends on
/// syncEachCommit: without it the system writes within some seconds, and what it had not written is as if it
/// had not happened; the file stays whole either way. The file is used by this process alone (its lock is
/// held), beside it lies a "-wal" file.
///
/// Failure: CSqliteFailure, which tells damage from a disk that cannot just now. After one, the store is
/// closed and opened again by whoever uses it.
class CStateStore
{
public:
    /// Opens the file, and makes it if there is none. @throws CSqliteFailure; likewise below
    explicit CStateStore(const SStoreSettings& settings);
    ~CStateStore();

    /// All that can be trusted. Rows that do not fit their checksum are taken out of the store and named.
    SStoreContents Read();

    /// From here on it is the store of that boot and that configuration. If it was of another boot, nothing
    /// in it is raised any more and there are no sessions.
    void Begin(const std::string& boot, const std::string& configuration);

    /// Stores all of it in one transaction.
    void Commit(const SStoreBatch& batch);

    /// Transitions that are kept, and the number of the last one, 0 if there was none.
    std::uint64_t JournalLength() const { return m_lastNumber - m_firstNumber + 1; }
    std::uint64_t LastNumber() const { return m_lastNumber; }

    /// Up to `limit` transitions from that number on, those that can be trusted.
    std::vector<STransition> Journal(std::uint64_t from, std::size_t limit);

private:
    struct SStatements;

    void Prepare();
    void BeginBoot();
    void ReadErrors(SStoreContents& contents);
    void ReadSessions(SStoreContents& contents);
    void Drop(const char* table, const std::string& where, const std::string& name, SStoreContents& contents);
    void Put(const SStoredError& error);
    void Put(const SStoredSession& session);
    void Append(const STransition& transition);
    void TrimJournal();

    const SStoreSettings m_settings;
    CSqlite m_database;
    std::unique_ptr<SStatements> m_statements;
    std::uint64_t m_firstNumber = 1; // of the journal's oldest transition
    std::uint64_t m_lastNumber = 0;
};

/// Moves a store that is damaged out of the way, with all that belongs to it.
/// @return where it is now; empty if that was not possible
std::string MoveStoreAside(const std::string& path);

} // namespace Faultkeeper::Apps

#endif
