#ifndef FAULTKEEPER_FAULTKEEPERD_STORE_STATEKEEPER_H
#define FAULTKEEPER_FAULTKEEPERD_STORE_STATEKEEPER_H

#include "faultkeeperd/store/StateStore.h"
#include "faultkeeperd/store/TableNote.h"
#include "store/StoreRecords.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace Faultkeeper::Apps
{

/// Keeps the owner's state in a store as long as there is one that works, and never lets a disk stand in the
/// way: what cannot be stored waits here, and goes to the store as soon as the disk is well again.
///
/// Commits are grouped: after a quiet time at once, otherwise every kCommitPause. A store that fails is
/// logged once and opened again every kRetryPause, whether anything waits or not; then it is told everything
/// that it should hold, what was in it at the beginning included, so a new file becomes as complete as the
/// one before. Cost: the state of all errors and sessions, and up to kWaitingTransitions transitions while
/// the disk fails; of more than those the oldest are lost to the journal. A retry on a full disk reads next
/// to nothing.
class CStateKeeper
{
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds kCommitPause{20};
    static constexpr std::chrono::milliseconds kRetryPause{1000};
    static constexpr std::size_t kWaitingTransitions = 20000;

    /// What has become of it, for whoever asks.
    struct SStatistics
    {
        std::uint64_t commits = 0;
        std::uint64_t failures = 0;
        std::uint64_t lostTransitions = 0;
    };

    /// @param settings  an empty path: nothing is stored, and everything counts as kept
    explicit CStateKeeper(const SStoreSettings& settings) : m_settings(settings), m_note(settings.note) {}

    /// Opens the store for this boot and configuration, and waits up to two seconds for another process that
    /// uses it. One that is damaged is moved aside and a new one begun. One that can be read and not written,
    /// as on a full disk, is read; writing is tried again later. One that is read only later counts for less
    /// than what has been kept here since. What is damaged in it is logged.
    /// @return what was in it; empty if nothing could be read
    SStoreContents Open(const std::string& boot, const std::string& configuration);

    /// What the table that a former owner has left has to do with the store, once it is open. Anything but
    /// unknown and stored means that the table knows better.
    ETableRelation FormerTable() const { return m_note.RelationTo(m_settings.path); }

    /// From here on the owner's table is what the store is to have, and what becomes of that is noted beside
    /// the table. To be called once, before the former owner's table is overwritten.
    /// @param table   what the owner takes from the former owner's table; it is stored at once
    /// @param missed  what the journal lacks of it
    void Begin(const std::vector<SStoredError>& table, const std::vector<STransition>& missed = {});

    /// What another configuration has left is judged, and what came of it is kept: from the next commit on
    /// the store is of this configuration. A store of another one that is written without this, or that could
    /// not be read so far, is of none from then on: the next owner judges, whatever its configuration.
    void TakeConfiguration();

    /// Is there a store that works? Otherwise kept means applied.
    bool Storing() const { return m_store != nullptr; }

    /// Keeps the latest word on an error or a session. Without a store, by its settings, nothing is kept.
    void Keep(const SStoredError& error);
    void Keep(const SStoredSession& session);
    void Forget(const std::string& session);
    /// Adds to the journal.
    void Keep(const STransition& transition);

    /// Stores what waits, if it is time to.
    /// @return true if nothing waits any more, or nothing can be stored just now
    bool Commit(Clock::time_point now);

    /// Stores what waits in any case.
    bool CommitAtOnce(Clock::time_point now);

    /// For poll(2): how long until Commit is to be called; -1 if nothing waits and the store works.
    int MillisecondsToCommit(Clock::time_point now) const;

    const SStatistics& Statistics() const { return m_statistics; }
    /// Errors and sessions that are remembered for a store, or to be taken out of it.
    std::size_t Remembered() const
    {
        return m_errors.size() + m_sessions.size() + m_forgottenSessions.size();
    }
    std::uint64_t JournalLength() const { return m_store == nullptr ? 0 : m_store->JournalLength(); }

    /// Up to `limit` transitions from that number on; empty if there is no store that works.
    std::vector<STransition> Journal(std::uint64_t from, std::size_t limit);

private:
    typedef std::pair<int, int> ErrorId;

    bool Off() const { return m_settings.path.empty(); }
    bool Waits() const;
    bool Idle() const { return Off() || (Storing() && !Waits()); }
    Clock::time_point Due() const;
    bool TryToOpen(EStoreOpening opening, SStoreContents& contents, Clock::time_point now);
    void BeginStore(EStoreOpening opening, SStoreContents& contents);
    bool MakeRoom(const CSqliteFailure& failure);
    void TryToRead(SStoreContents& contents);
    void OpenAnew(Clock::time_point now);
    void Learn(const SStoreContents& contents);
    void Settle(const SStoreContents& contents);
    void SettleSessions(const SStoreContents& contents);
    void ForgetStored();
    void TellEverything();
    SStoreBatch Batch() const;
    void Note(bool fromTable);
    void Stored();
    void Fail(const CSqliteFailure& failure, Clock::time_point now);
    void LoseOldest();

    const SStoreSettings m_settings;
    CTableNote m_note;
    bool m_begun = false; // the note is about this owner's table
    std::string m_boot;
    std::string m_configuration;
    std::unique_ptr<CStateStore> m_store; // null while there is none that works
    std::map<ErrorId, SStoredError> m_errors;
    std::map<std::string, SStoredSession> m_sessions;
    std::set<ErrorId> m_changedErrors; // since the last commit; likewise below
    std::set<std::string> m_changedSessions;
    std::set<std::string> m_forgottenSessions;
    std::deque<STransition> m_transitions;
    std::uint64_t m_expectedNumber = 0; // the journal's last, if a commit that failed was done all the same
    std::size_t m_tried = 0;            // transitions of that commit; 0 if none has failed
    Clock::time_point m_lastCommit;     // or failure
    bool m_known = false;               // all that was in the store at the beginning
    bool m_checked = false; // the file was looked through, and nothing can have happened to it since
    bool m_failureTold = false;
    bool m_otherConfiguration = false; // the store is of one
    bool m_judged = false;             // what that has left
    SStatistics m_statistics;
};

} // namespace Faultkeeper::Apps

#endif
