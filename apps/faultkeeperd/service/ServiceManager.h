#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_SERVICEMANAGER_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_SERVICEMANAGER_H

#include <chrono>
#include <string>

namespace Faultkeeper::Apps
{

/// Tells the system's service manager how the owner is, if it wants to know: by the notification protocol of
/// systemd, which names a datagram socket in $NOTIFY_SOCKET (one that begins with "@" is abstract), and the
/// time after which a silent service counts as stuck in $WATCHDOG_USEC.
///
/// Failure: what cannot be told is not told; nothing here ever waits.
class CServiceManager
{
public:
    using Clock = std::chrono::steady_clock;

    /// Reads the environment. A watchdog that is meant for another process ($WATCHDOG_PID) is none of ours.
    CServiceManager();
    ~CServiceManager();
    CServiceManager(const CServiceManager&) = delete;
    CServiceManager& operator=(const CServiceManager&) = delete;

    void Ready() const { Say("READY=1"); }
    void Stopping() const { Say("STOPPING=1"); }

    /// The owner works: told twice in the time after which it would count as stuck.
    void Alive(Clock::time_point now);

    /// For poll(2): how long until Alive is to be called; -1 if nobody wants to know.
    int MillisecondsToAlive(Clock::time_point now) const;

private:
    void Say(const std::string& state) const;

    std::string m_address; // as the system takes it; empty: nobody wants to know
    int m_socket = -1;
    std::chrono::microseconds m_pause{0}; // zero: no watchdog
    Clock::time_point m_told;
};

} // namespace Faultkeeper::Apps

#endif
