#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_H

#include "faultkeeperd/Publisher.h"
#include "faultkeeperd/RetryPause.h"

#include <Faultkeeper/ErrorDatabaseView.h>

#include <optional>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// The console's error state and its way into the shared table.
///
/// What is applied here changes the database at once, parents included, and reaches the table as soon as its
/// lock lets it. While the lock is busy, applying goes on. Threads: one at a time.
class COwner
{
public:
    using Clock = CRetryPause::Clock;

    /// Takes over the shared table of the working directory, which starts empty and not ready, and listens to
    /// the database.
    /// @param database  borrowed
    explicit COwner(CErrorDatabase& database);
    ~COwner();
    COwner(const COwner&) = delete;
    COwner& operator=(const COwner&) = delete;

    /// Has the shared table failed? The view has said why on standard error; nothing reaches the table any
    /// more.
    bool Failed() const { return m_view.Failed(); }

    /// Raises or clears an error, and whatever follows from that.
    /// @return false if there is no such error; nothing is changed then
    bool Apply(int problemCode, int problemType, bool raised);

    /// Brings the table up to date if there is anything to bring and, after a busy lock, the pause is over.
    /// A lock that stays busy for a second is logged once with the process that holds it, and once when it is
    /// free again.
    void Publish(Clock::time_point now);

    /// For poll(2): how long until Publish is to be called again; -1 if nothing waits.
    int MillisecondsToPublish(Clock::time_point now) const;

    /// By how much the lock was too high when this owner took over; what was too much is gone.
    int Surplus() const { return m_surplus; }

    const CPublisher& Publisher() const { return m_publisher; }

    /// From here on the table is declared not ready as soon as everything is published.
    void Withdraw() { m_publisher.Withdraw(); }

private:
    void NoteRefusal(Clock::time_point now, bool progress);
    void NoteSuccess();

    CErrorDatabase& m_database;
    const int
        m_surplus; // what a former owner had left in the lock; before the view, which makes it available
    CErrorDatabaseView m_view;
    CPublisher m_publisher;
    CRetryPause m_pause;
    std::optional<Clock::time_point> m_refusedSince; // nothing has reached the table since then
    bool m_refusalTold = false;
};

} // namespace Faultkeeper::Apps

#endif
