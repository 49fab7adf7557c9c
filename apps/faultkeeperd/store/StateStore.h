#ifndef FAULTKEEPER_FAULTKEEPERD_STORE_STATESTORE_H
#define FAULTKEEPER_FAULTKEEPERD_STORE_STATESTORE_H

#include "store/Sqlite.h"
#include "store/StoreFacts.h"
#include "store/StoreRecords.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// Where and how a store is kept.
struct SStoreSettings
{
    static constexpr std::size_t kUsualJournalLimit = 100000;

    std::string path;
    std::string note; ///< where the owner notes how table and store go together; empty: nowhere
    std::size_t journalLimit = kUsualJournalLimit; ///< transitions; the oldest go first
    bool syncEachCommit = false; ///< have the medium hold each commit before it counts as done
};

/// How a store is opened.
enum EStoreOpening
{
    esoPatiently =
        0,     ///< waits two seconds for another process that uses it; the whole file is looked through
    esoAtOnce, ///< does neither, but writes something that means nothing: whether the disk takes it shows at
               ///< once
    esoReading ///< for a medium that takes nothing: nothing is written, also not beside the file
};

/// The error states, the journal and the sessions of an owner, in one SQLite file.
///
/// A commit survives the end of the process at once. Whether it survives a loss of power depends on
/// syncEachCommit: without it the system writes within some seconds, and what it had not written is as if it
/// had not happened; the file stays whole either way. The file is used by this process alone (its lock is
/// held), beside it lies a "-wal" file. Each row has a checksum; what does not fit its own is not used.
///
/// Failure: CSqliteFailure, which tells damage from a disk that cannot just now. Another program's database
/// and a store of a later format are no damage; they are left exactly as they are. After a failure the store
/// is closed and opened again by whoever uses it.
class CStateStore
{
public:
    /// Opens the file, and makes it if there is none. Patiently or for reading, one that is there is not
    /// written, so that a full disk does not keep it from being read. @throws CSqliteFailure; likewise below
    explicit CStateStore(const SStoreSettings& settings, EStoreOpening opening = esoPatiently);
    ~CStateStore();

    /// Looks through the whole file and all of the journal. Cost: some 100 ms for 100 000 transitions.
    void Check();

    /// All that can be trusted. Rows that do not fit their checksum, also those of the journal that Check has
    /// found, are named, and Begin takes them out. Nothing is written.
    SStoreContents Read();

    /// From here on it is the store of that boot and that configuration. If it was of another boot, or either
    /// is not known (the name is empty), nothing in it is raised any more and there are no sessions.
    void Begin(const std::string& boot, const std::string& configuration);

    /// Stores all of it in one transaction.
    void Commit(const SStoreBatch& batch);

    /// Transitions that are kept, and the number of the last one, 0 if there was none. A damaged row does not
    /// make numbers jump.
    std::uint64_t JournalLength() const { return m_length; }
    std::uint64_t LastNumber() const { return m_lastNumber; }

    /// Up to `limit` transitions from that number on, those that can be trusted.
    std::vector<STransition> Journal(std::uint64_t from, std::size_t limit);

private:
    struct SStatements;

    void OpenTables(EStoreOpening opening);
    void TryWriting();
    void FindJournalEnd();
    void CheckJournal();
    void BeginBoot();
    void NameBadTransitions(SStoreContents& contents) const;
    void ReadFacts(SStoreContents& contents);
    void ReadErrors(SStoreContents& contents);
    void ReadSessions(SStoreContents& contents);
    void DropBadRows();
    void PutFact(EStoreFact fact, const std::string& value);
    void Put(const SStoredError& error);
    void Put(const SStoredSession& session);
    void Forget(const std::string& session);
    void Append(const STransition& transition);
    void TrimJournal();

    const SStoreSettings m_settings;
    CSqlite m_database;
    std::unique_ptr<SStatements> m_statements;
    std::uint64_t m_length = 0; // of the journal
    std::uint64_t m_lastNumber = 0;
    bool m_sessionsKnown = false;
    std::map<std::string, std::int64_t> m_places; // of the sessions' rows, once known
    std::int64_t m_lastPlace = 0;
    std::vector<std::int64_t> m_badFacts; // numbers of rows that do not fit their checksum; likewise below
    std::vector<std::int64_t> m_badErrors;
    std::vector<std::int64_t> m_badSessions;
    std::vector<std::int64_t> m_badTransitions;
};

} // namespace Faultkeeper::Apps

#endif
