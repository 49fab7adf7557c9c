#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_OWNER_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_OWNER_H

#include "faultkeeperd/owner/LockWatch.h"
#include "faultkeeperd/owner/Publisher.h"
#include "faultkeeperd/owner/RetryPause.h"
#include "faultkeeperd/owner/StateRecorder.h"

#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorDbChanged.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

class CStateKeeper;
struct SFormerState;

/// The console's error state and its way into the shared table and the store.
///
/// What is applied here changes the database at once, parents included, and reaches the table as soon as its
/// lock lets it. While the lock is busy, applying and storing go on. Threads: one at a time.
class COwner : private CErrorDbChanged
{
public:
    using Clock = CRetryPause::Clock;

    /// Takes over the shared table of the working directory, which starts not ready, brings the former state
    /// back into database, table and store without telling anybody of it, and listens to the database.
    /// @param database  borrowed, without active errors
    /// @param keeper    borrowed
    COwner(CErrorDatabase& database, CStateKeeper& keeper, const SFormerState& former);
    ~COwner() override;
    COwner(const COwner&) = delete;
    COwner& operator=(const COwner&) = delete;

    /// Has the shared table failed? The view has said why on standard error; nothing reaches the table any
    /// more.
    bool Failed() const { return m_view.Failed(); }

    /// Is there such an error?
    bool Knows(int problemCode, int problemType) const;

    /// Raises or clears an error, and whatever follows from that.
    /// @param session  who asks, for the journal; empty if nobody knows
    /// @return false if there is no such error; nothing is changed then
    bool Apply(int problemCode, int problemType, bool raised, const std::string& session = std::string());

    /// Brings the table up to date if there is anything to bring and, after a busy lock, the pause is over;
    /// then hands the keeper what has changed. Once a second it is seen that the lock is one.
    /// A lock that stays busy for five seconds is logged once with the process that holds it, and once when
    /// it is free again.
    void Publish(Clock::time_point now);

    /// For poll(2): how long until Publish is to be called again.
    int MillisecondsToPublish(Clock::time_point now) const;

    /// How often the lock was busy when something was to be published.
    std::uint64_t LockRetries() const { return m_lockRetries; }

    const CLockWatch& LockWatch() const { return m_lockWatch; }

    const CPublisher& Publisher() const { return m_publisher; }

    /// From here on the table is declared not ready as soon as everything is published. The next Publish
    /// tries that whatever pause there is.
    void Withdraw();

    /// Has the table all there is, and the keeper its times?
    bool Settled() const { return m_publisher.Done() && !m_recorder.WantsTimes(); }

private:
    void ErrorRaised(int problemCode, int problemType) override;
    void ErrorCleared(int problemCode, int problemType) override;

    void Restore(const SFormerState& former);
    void ClearOrphans(const std::set<ErrorId>& orphans);
    void NoteCleared(int problemCode, int problemType);
    bool PublishChanges();
    bool TakeTimes();

    bool HasWork(Clock::time_point now) const;
    CErrorDatabase& m_database;
    CLockWatch m_lockWatch; // before the view, which makes the lock available
    CErrorDatabaseView m_view;
    CPublisher m_publisher;
    CStateRecorder m_recorder;
    std::vector<SErrorEntry> m_records; // of the table; kept for its memory
    CRetryPause m_pause;
    std::uint64_t m_lockRetries = 0;
};

} // namespace Faultkeeper::Apps

#endif
