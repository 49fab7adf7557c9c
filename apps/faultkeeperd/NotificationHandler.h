#ifndef FAULTKEEPER_FAULTKEEPERD_NOTIFICATIONHANDLER_H
#define FAULTKEEPER_FAULTKEEPERD_NOTIFICATIONHANDLER_H

#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <string>

namespace Faultkeeper::Apps
{

class COwner;

/// Passes what reporting processes send to the owner, and logs what can't be passed.
///
/// "RaiseError" takes a problem code, a failure mode and perhaps a third number that means nothing;
/// "ClearError" takes a problem code and a failure mode. A notification that is anything else is logged and
/// skipped; its connection stays. Ownership: the owner is borrowed.
class CNotificationHandler : public MPIServerHandlerC
{
public:
    CNotificationHandler() : m_owner(nullptr) {}

    /// Whom to pass notifications to. The port is bound before the database is loaded, so the handler comes
    /// first; until it has an owner it must not be given anything.
    void Owner(COwner* owner) { m_owner = owner; }

    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override;
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override;
    void PeerTurnedAway(const MPIPeerC& peer) override;

private:
    void ApplyReport(const MPIPeerC& peer, const MPINotificationC& notification, bool raised);

    COwner* m_owner;
};

} // namespace Faultkeeper::Apps

#endif
