#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_PUBLISHER_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_PUBLISHER_H

#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorDbChanged.h>
#include <Faultkeeper/ErrorEntry.h>

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
} // namespace Faultkeeper

namespace Faultkeeper::Apps
{

/// Brings the shared table to what the database says, and loses nothing while the table's lock is busy.
///
/// Listens to the database and keeps every change, in order, until the table has it: the records' identifiers
/// first, then what a former owner has left, then the word that the table is ready, then the changes, and in
/// the end, once withdrawn, the word that it is ready no more. Each call of Publish goes as far as the lock
/// allows.
///
/// Ownership: database and view are borrowed. Whoever makes one sets it as the database's listener.
/// Failure: a busy lock only means that Publish has to be called again. A failed view makes it refuse for
/// good. Cost: 12 bytes for each change that waits. Of more than kWaitingLimit only the last two of each
/// error wait, and how often it was raised before them: whoever keeps the lock costs no memory, and no count.
class CPublisher : public CErrorDbChanged
{
public:
    /// One taking of the lock publishes at most this many changes, so that readers get their turn.
    static constexpr std::size_t kBatchLimit = 1024;

    static constexpr std::size_t kWaitingLimit = 65536;

    /// @param view  owning and creating
    CPublisher(const CErrorDatabase& database, CErrorDatabaseView& view);

    /// Before the table is declared ready, it gets these records. To be called before the first Publish.
    /// @param states  with their raised bits; otherwise counters and times only
    void Restore(const std::vector<SErrorEntry>& records, bool states);

    void ErrorRaised(int problemCode, int problemType) override;
    void ErrorCleared(int problemCode, int problemType) override;

    /// Publishes what is left, in order, as far as it goes.
    /// @return true if nothing is left; false if the lock was busy or the view has failed
    bool Publish();

    /// True if Publish has nothing to do.
    bool Done() const;

    /// From here on, the table is declared not ready as soon as all changes are in it. One that was never
    /// declared ready and waits for no change stays so; what a former owner has left goes into it first.
    void Withdraw() { m_withdrawn = true; }

    /// Does the table say that it is ready?
    bool Ready() const { return m_stage == epsReady; }

    /// Has the table never been declared ready so far?
    bool New() const { return m_stage < epsReady; }

    /// Changes that the table does not have yet.
    std::size_t Changes() const { return m_changes.size(); }

    /// Changes, and records that a former owner has left, that the table does not have yet.
    std::size_t Waiting() const { return m_changes.size() + m_former.size(); }

private:
    enum EPublishingStage
    {
        epsEmpty, // the table has no identifiers yet
        epsLoaded,
        epsRestored,
        epsReady,
        epsWithdrawn // not ready: declared so, or never declared ready
    };

    bool Advance();
    using ErrorId = std::pair<int, int>;

    void Add(int problemCode, int problemType, bool raised);
    void Condense();
    bool PublishSkipped();
    bool RestoreRecords();
    bool Reach(EPublishingStage stage, bool done);
    bool PublishBatch();

    const CErrorDatabase& m_database;
    CErrorDatabaseView& m_view;
    EPublishingStage m_stage;
    bool m_withdrawn;
    std::vector<SErrorEntry> m_former; // until the table has them
    bool m_formerStates;
    std::vector<SErrorChange> m_changes; // oldest first
    std::size_t m_limit = kWaitingLimit; // of those
    std::map<ErrorId, int>
        m_skipped; // raises that were, with the clears after them, left out before all changes
};

} // namespace Faultkeeper::Apps

#endif
