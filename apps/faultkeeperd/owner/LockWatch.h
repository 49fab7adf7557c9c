#ifndef FAULTKEEPER_FAULTKEEPERD_OWNER_LOCKWATCH_H
#define FAULTKEEPER_FAULTKEEPERD_OWNER_LOCKWATCH_H

#include <chrono>
#include <optional>
#include <string>

namespace Faultkeeper
{
class CErrorDatabaseView;
}

namespace Faultkeeper::Apps
{

/// Sees to it that the shared table's lock admits one process at a time, and tells who keeps it too long.
///
/// The system takes back what a killed owner has put into the lock, but never below zero: if a reader held it
/// at that moment, the reader's release puts one too much into it, which comes on top of what the next owner
/// puts in. What is too much is taken out without setting the value, which would forget what the system owes
/// to processes that hold the lock.
class CLockWatch
{
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::seconds kAuditPause{1};
    static constexpr std::chrono::seconds kBusyForLong{5};

    /// Takes the lock of a table in the working directory down to 0: to be made before the view that makes it
    /// available.
    CLockWatch();

    /// Once in kAuditPause: takes the lock, and out of it what is too much.
    /// @return false if it was time to and the lock was busy
    bool Audit(CErrorDatabaseView& view, Clock::time_point now);

    /// For poll(2): how long until Audit has something to do; 0 if it is time.
    int MillisecondsToAudit(Clock::time_point now) const;

    /// Is the lock held just now? One look, without waiting: readers hold it for a copy of the table, so it
    /// is worth to look again after a millisecond. The view says on standard error, unlimited, that it cannot
    /// have the lock: it is not to be asked then.
    bool Held();

    /// The lock was busy. That is logged once, with the process that holds it, when it has been so for
    /// kBusyForLong.
    /// @param progress  something was published all the same
    /// @param waiting   what waits to be published, in words; empty if it is only a look at the lock
    void LockBusy(Clock::time_point now, bool progress, const std::string& waiting);

    /// The lock was free, and everything is published. That is logged if the contrary was.
    void LockFree();

    /// By how much the lock was too high in all, the beginning included.
    int Surplus() const { return m_surplus; }

private:
    int m_surplus;
    int m_semaphore = -1; // of the view, which is made later
    Clock::time_point m_audited;
    std::optional<Clock::time_point> m_busySince; // nothing has reached the table since then
    bool m_busyTold = false;
    bool m_waitingTold = false;
};

} // namespace Faultkeeper::Apps

#endif
