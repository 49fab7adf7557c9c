#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_H

#include "faultkeeperd/NotificationHandler.h"
#include "faultkeeperd/Owner.h"
#include "faultkeeperd/OwnerClaim.h"
#include "faultkeeperd/Signals.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <MPI/MPISocketServerC.h>

#include <memory>
#include <string>

namespace Faultkeeper::Apps
{

/// The owning process at work: listens, loads, publishes, and ends in order.
///
/// Everything happens on the calling thread, which waits in one place for reports, for a signal, and for the
/// pause after a busy lock to end. Failure: every reason to stop is logged.
class CService
{
public:
    CService();

    /// Takes the port, so that there is one owner on the machine. Nothing else is touched before.
    /// @return false if it can't be had, as when another owner is running
    bool Listen(unsigned short port);

    /// Makes sure that no other owner uses the working directory, on whatever port. Touches nothing.
    /// @param runDirectory  the working directory's name for people
    bool Claim(const std::string& runDirectory);

    /// Loads the configuration and takes over the table of the working directory, both after Listen and
    /// Claim.
    /// @param configurationPrefix  absolute, with a "/" at its end
    /// @return false if either failed
    bool Load(const std::string& configurationPrefix);

    /// Works until a signal asks it to end, then publishes what is pending and declares the table not ready.
    /// @return true if all of that was done; false if the table failed or stayed locked
    bool Run();

private:
    bool Turn();
    bool Publish();
    bool End();

    COwnerClaim m_claim; // first: given back last
    CSignals m_signals;
    CNotificationHandler m_handler;
    MPISocketServerC m_server;
    std::unique_ptr<CErrorDatabase> m_database;
    std::unique_ptr<COwner> m_owner;
};

} // namespace Faultkeeper::Apps

#endif
