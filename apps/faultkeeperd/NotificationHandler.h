#ifndef FAULTKEEPER_FAULTKEEPERD_NOTIFICATIONHANDLER_H
#define FAULTKEEPER_FAULTKEEPERD_NOTIFICATIONHANDLER_H

#include "faultkeeperd/Sessions.h"

#include <MPI/MPISocketServerC.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace Faultkeeper::Apps
{

class COwner;

/// Passes what reporting processes send to the owner, and logs what can't be passed.
///
/// "RaiseError" takes a problem code, a failure mode and perhaps a third number that means nothing;
/// "ClearError" takes a problem code and a failure mode. A notification that is anything else is logged and
/// skipped; its connection stays.
///
/// A client that introduces itself is welcomed with the number up to which its session has been applied. What
/// it has sent again is skipped, and each batch is acknowledged; skipped with a word in the log counts as
/// applied, since sending it again would not change that. Ownership: owner and server are borrowed.
class CNotificationHandler : public MPIServerHandlerC
{
public:
    CNotificationHandler() : m_owner(nullptr), m_server(nullptr), m_lastConnection(0), m_lastSession(nullptr)
    {
    }

    /// Whom to pass notifications to. The port is bound before the database is loaded, so the handler comes
    /// first; until it has an owner it must not be given anything.
    void Owner(COwner* owner) { m_owner = owner; }

    /// Through whom to answer; nobody is answered without.
    void Server(MPISocketServerC* server) { m_server = server; }

    void PeerIntroduced(const MPIPeerC& peer) override;
    bool NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification) override;
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override;
    void BatchEnded(const MPIPeerC& peer) override;
    void PeerDisconnected(const MPIPeerC& peer) override;
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override;
    void PeerTurnedAway(const MPIPeerC& peer) override;

private:
    CSessions::SSession* Session(const MPIPeerC& peer);
    bool IsNew(const MPIPeerC& peer, std::uint64_t number);
    void ApplyReport(const MPIPeerC& peer, const MPINotificationC& notification, bool raised);
    void Apply(const MPIPeerC& peer, std::uint64_t offset, int problemCode, int problemType, bool raised);

    COwner* m_owner;
    MPISocketServerC* m_server;
    CSessions m_sessions;
    std::map<std::uint64_t, CSessions::SSession*>
        m_open;                         // of the connections that have introduced themselves
    std::uint64_t m_lastConnection;     // asked for; 0 is none
    CSessions::SSession* m_lastSession; // its session; null if it has none
};

} // namespace Faultkeeper::Apps

#endif
