#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_SERVICE_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_SERVICE_H

#include "common/owner/OwnerClaim.h"
#include "faultkeeperd/owner/Owner.h"
#include "faultkeeperd/service/NotificationHandler.h"
#include "faultkeeperd/service/ServiceManager.h"
#include "faultkeeperd/service/Signals.h"
#include "faultkeeperd/service/Statistics.h"
#include "faultkeeperd/store/StateKeeper.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <MPI/MPISocketServerC.h>

#include <cstddef>
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
    /// @param runDirectory  the working directory's name for people
    /// @param store         where to keep the state over the owner's end; an empty path: nowhere
    /// @param connections   how many may be up
    CService(const std::string& runDirectory, const SStoreSettings& store, std::size_t connections);

    /// Takes the port, so that there is one owner on the machine. Nothing else is touched before.
    /// @return false if it can't be had, as when another owner is running
    bool Listen(unsigned short port);

    /// Makes sure that no other owner uses the working directory, on whatever port, and that no other
    /// program's or user's shared memory is where the table belongs. Touches nothing.
    bool Claim();

    /// Loads the configuration, takes over the table of the working directory and brings the former state
    /// back, all after Listen and Claim.
    /// @param configurationPrefix  absolute, with a "/" at its end
    /// @return false if either failed
    bool Load(const std::string& configurationPrefix);

    /// Works until a signal asks it to end, then publishes and stores what is pending and declares the table
    /// not ready, unless it stays locked.
    /// @return true if everything is published; false if the table failed, or changes are left
    bool Run();

private:
    std::string RefusedClaim() const;
    int MillisecondsToWork() const;
    SStatistics Statistics() const;
    bool Turn();
    bool Settle();
    void SettleNow();
    void Acknowledge();
    bool Publish();
    bool End();
    void PublishLast();
    std::string Missing() const;
    bool TellEnd();

    const std::string m_runDirectory;
    const COwner::Clock::time_point m_begin;
    std::string m_fingerprint;
    CServiceManager m_serviceManager;
    COwnerClaim m_claim; // before what it stands for: given back last
    CSignals m_signals;
    CNotificationHandler m_handler;
    MPISocketServerC m_server;
    CStateKeeper m_keeper;
    std::unique_ptr<CErrorDatabase> m_database;
    std::unique_ptr<COwner> m_owner;
};

} // namespace Faultkeeper::Apps

#endif
