#ifndef FAULTKEEPER_ERRORDATABASEVIEW_H
#define FAULTKEEPER_ERRORDATABASEVIEW_H

#include <Faultkeeper/ErrorEntry.h>
#include <Faultkeeper/Export.h>
#include <Faultkeeper/StatusTable.h>

#include <Core/Time.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Faultkeeper
{

class CErrorDatabase;
class CErrorDbViewChanged;
class CRecordIndex;

/// Which side of the shared table a view is on.
enum EViewType : int
{
    eViewReader = 0, ///< copies the table and replays its changes
    eViewOwner = 1,  ///< writes the table; one process on the machine
};

/// One raise or clear that the owner publishes together with others.
struct SErrorChange
{
    int problemCode; ///< module | sub-module | problem
    int problemType; ///< failure mode; only its lower 16 bits count
    bool raised;     ///< true raises, false clears
};

/// One process's handle on the shared table that tells the state of every error.
///
/// The owner: construct with (true, eViewOwner), LoadErrors, perhaps UpdateErrorDetails,
/// FaultkeeperReady(true), then RaiseError and ClearError as errors change. A reader: construct with (false,
/// eViewReader), perhaps SetCallback, then call Synchronise with its own database again and again, at its own
/// pace or whenever WaitForChange says that there is something new.
///
/// Table and lock are found through the current working directory at construction, which every process that
/// cooperates must share. Both outlive every process: the destructor detaches and removes nothing, and the
/// next creating view zeroes the table. Once the creating process has ended nobody can take the lock until
/// there is another creating view.
///
/// Failure: an operation on the wrong kind of view does nothing and gives its refusal value. A failed system
/// call is reported with perror under the name "CErrorDatabaseView::<operation> <call>" and leaves the view
/// failed for good: everything but GetLock, ReleaseLock and SetCallback refuses. A lock that stays busy for
/// five attempts is reported as "unable to obtain lock" on standard error; that one call does nothing and the
/// next one tries again. What the table holds is another process's memory and is not trusted: a count outside
/// 0..400 is taken as the nearest of the two.
///
/// Threads: one at a time for each view. Between processes the table is guarded by its lock, held for a copy
/// or a few writes; listeners and databases are called after it has been given back.
class FAULTKEEPER_EXPORT CErrorDatabaseView
{
public:
    /// Attaches to the table of the current working directory, making it if there is none.
    /// @param create  fill the table with zeros and make the lock available; for the owning process
    /// Never throws for a failed call: see Failed().
    CErrorDatabaseView(bool create, EViewType type);
    ~CErrorDatabaseView();
    CErrorDatabaseView(const CErrorDatabaseView&) = delete;
    CErrorDatabaseView& operator=(const CErrorDatabaseView&) = delete;

    /// Has a system call failed, so that the view refuses to work?
    bool Failed() const { return m_failed; }

    /// Takes the table's lock.
    /// @param wait  wait until it is free; otherwise make five attempts without a pause
    /// @return true with the lock held; false if it is busy or the call failed
    /// For callers that read or write several things as one. The operations below that touch the table take
    /// and give back the lock by themselves, so none of them may be called while this process holds it.
    bool GetLock(bool wait);
    /// Gives the lock back. @return false if the call failed, and the view with it
    bool ReleaseLock();

    /// Has the owner declared the table ready? False too if the lock is busy.
    bool FaultkeeperReady();

    /// Declares the table ready or not. Owner only. @return false if refused or the lock was busy
    bool FaultkeeperReady(bool ready);

    /// Writes the identifiers of all errors of the database into the table's records, in the order of its
    /// error list; flags, counters and times stay as they are. Owner only. Of more than 400 errors the first
    /// 400 are written, and standard error tells how many were left out.
    /// @return false if refused or the lock was busy
    bool LoadErrors(const CErrorDatabase& db);

    /// Raises one record that is not raised: counters plus one, a new raised time, the raised bit, the
    /// header's last raise time. Nothing for a record that is raised or absent. Owner only, once ready.
    /// @return false if refused or the lock was busy
    bool RaiseError(int code, int type);
    /// Clears one record that is raised: a new cleared time, no raised bit, the header's last clear time.
    /// Counters stay. Nothing for a record that is clear or absent. Owner only, once ready.
    /// @return false if refused or the lock was busy
    bool ClearError(int code, int type);

    /// The same for each identifier in order, under one taking of the lock and with one time for all.
    bool RaiseErrors(const std::vector<std::pair<int, int>>& ids);
    /// As RaiseErrors, clearing.
    bool ClearErrors(const std::vector<std::pair<int, int>>& ids);

    /// Raises and clears in the given order, each as RaiseError or ClearError would do it, with times of its
    /// own, under one taking of the lock. Owner only, once ready.
    /// @return false if refused or the lock was busy; nothing is changed then
    bool ApplyChanges(const std::vector<SErrorChange>& changes);

    /// Puts remembered counters and times back into the records with the same identifiers; entries without a
    /// record are skipped, raised bits stay as they are. If either time lies in the future both become zero.
    /// Owner only.
    /// @return false if refused or the lock was busy
    bool UpdateErrorDetails(const std::vector<SErrorEntry>& entries);

    /// Brings an owner's former state back, before readers look: raised bits, counters and both times of the
    /// records with the same identifiers; entries without a record are skipped. The header's times become the
    /// latest of all these. No counter counts, and whoever waits for a change is woken. Owner only, and not
    /// once ready. Readers notice a change only by a later time: an owner whose clock may lie behind a time
    /// that it restores gives the largest of them to Core::Time::NotBefore first.
    /// @return false if refused or the lock was busy
    bool RestoreErrors(const std::vector<SErrorEntry>& entries);

    /// Sleeps until the owner has published something that the present copy does not have: a change, a table
    /// declared ready or not ready, another owner's first word. Looks at the table without its lock, so it
    /// never stands in the owner's way. Readers only.
    /// @param timeoutMilliseconds  0 only looks; negative waits without end
    /// @return true if there is something for Synchronise to copy; false if there is not when the time is
    ///         over or a signal was handled, or if refused
    bool WaitForChange(int timeoutMilliseconds);

    /// Copies the table and replays what changed since the last call: silent raises and clears in `db`, a
    /// listener call for each, and at the end CErrorDatabase::SynchronisationComplete. The first call that
    /// finds the table ready replays every raised record instead, and so does the first one after it was not
    /// ready. Readers only; an owning view copies and returns 0.
    /// @return 1 if a raised record was replayed, 2 if only cleared ones were, 0 if none or if refused
    /// Cost: while nothing changes, that of the lock and one comparison of the table.
    int Synchronise(CErrorDatabase& db);

    /// Takes the present copy as the starting point: the records' times as seen, the header as the snapshot.
    /// Synchronise does the same at its first ready copy. Readers only.
    void Initialise();

    /// Replays records of the present copy. Readers only; called by Synchronise.
    /// @param all  every raised record; otherwise those with a time later than last seen
    /// @return as for Synchronise
    int UpdateErrorStatus(CErrorDatabase& db, bool all);

    /// Appends a copy of every record to `out`. An owning view reads the table (nothing if the lock is busy),
    /// a reading view its copy as of the last Synchronise.
    void RetrieveAllErrors(std::vector<SErrorEntry>& out);

    /// Copies the record of one error as of the last Synchronise; `out` is untouched if there is none.
    /// Readers only.
    void RetrieveErrorDetails(int code, int type, SErrorEntry& out) const;

    /// Position of the first record with this identifier as of the last Synchronise, or -1. Readers only.
    int RetrieveErrorIndex(int code, int type) const;

    /// Identifier of the record at a position of the table itself.
    /// @return 1, or -1 with both outputs untouched if there is no such record or the lock is busy
    int RetrieveErrorFromIndex(int index, int& code, int& type);

    /// Replaces the listener; null removes it.
    /// @param listener  borrowed
    void SetCallback(CErrorDbViewChanged* listener) { m_listener = listener; }

private:
    void Attach(bool create);
    void Fail(const char* call);
    bool RefusesOwner() const;
    bool RefusesChanges() const;
    template <typename Change> bool ChangeTable(const Change& change);
    template <typename Change> bool ChangeRecords(std::size_t lookups, const Change& change);
    bool ChangeRecord(int code, int type, bool raised);
    bool ChangeEach(const std::vector<std::pair<int, int>>& ids, bool raised);
    bool CopyTable();
    bool Published() const;
    int FollowReadyTable(CErrorDatabase& db);
    bool SnapshotHolds() const;
    void TakeSnapshot();
    int Replay(CErrorDatabase& db, const SErrorEntry& record, bool all);

    bool m_failed;
    bool m_readySeen;
    SStatusTable* m_table; // the attached segment: another process may change it at any time without the lock
    int m_segmentId;
    int m_semaphoreId;
    SStatusTable m_mirror;
    SStatusHeader m_snapshot;
    Core::Time m_lastSynchronised;
    std::vector<Core::Time> m_lastSeen;
    EViewType m_type;
    CErrorDbViewChanged* m_listener;       // not owned
    bool m_settled;                        // has every record of the mirror been acted on?
    std::unique_ptr<CRecordIndex> m_index; // of the table for an owner, of the mirror for a reader
};

} // namespace Faultkeeper

#endif
