#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_NOTIFICATIONHANDLER_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_NOTIFICATIONHANDLER_H

#include "faultkeeperd/service/Sessions.h"
#include "store/StoreRecords.h"

#include <MPI/MPISocketServerC.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class BDictionaryC;
class BListC;

namespace Faultkeeper::Apps
{

class COwner;
class CStateKeeper;

/// What has become of the notifications that came in.
struct SReportCounts
{
    std::uint64_t received = 0;
    std::uint64_t applied = 0;
    std::uint64_t repeated = 0;   ///< sent again although they had been applied
    std::uint64_t unknown = 0;    ///< of an error that is not configured, or of another name
    std::uint64_t malformed = 0;  ///< with wrong arguments; also input that was no message
    std::uint64_t turnedAway = 0; ///< connections, because there were too many
};

/// Passes what reporting processes send to the owner, and logs what can't be passed.
///
/// "RaiseError" takes a problem code, a failure mode and perhaps a third number that means nothing;
/// "ClearError" takes a problem code and a failure mode. A notification that is anything else is logged and
/// skipped; its connection stays.
///
/// "Statistics" is a request: it is answered with a dictionary. With a problem code and a failure mode the
/// answer also tells whether there is such an error.
///
/// A client that introduces itself is welcomed with the number up to which its session has been applied and
/// stored; if more is applied than stored, when that is stored. What it has sent again and was applied before
/// is skipped. It is acknowledged what is stored; skipped with a word in the log counts as applied, since
/// sending it again would not change that. For one that has ended its sending that is seen to at once.
/// Ownership: owner, keeper and server are borrowed.
class CNotificationHandler : public MPIServerHandlerC
{
public:
    CNotificationHandler()
        : m_owner(nullptr), m_keeper(nullptr), m_server(nullptr), m_lastConnection(0), m_lastSession(nullptr)
    {
    }

    /// Whom to pass notifications to, and who keeps account of the sessions. The port is bound before the
    /// database is loaded, so the handler comes first; until this it must not be given anything.
    /// @param former  sessions that an owner before this one has kept
    void Begin(COwner& owner, CStateKeeper& keeper, const std::vector<SStoredSession>& former = {});

    /// Through whom to answer; nobody is answered without.
    void Server(MPISocketServerC* server) { m_server = server; }

    /// What to answer to "Statistics"; nothing without.
    void Statistics(std::function<std::unique_ptr<BDictionaryC>()> statistics)
    {
        m_statistics = std::move(statistics);
    }

    /// How to have what was applied stored at once and acknowledged, if that can be; nothing without.
    void Settling(std::function<void()> settle) { m_settle = std::move(settle); }

    /// All that was applied so far is stored, or cannot be just now: acknowledges it.
    void Acknowledge();

    const SReportCounts& Counts() const { return m_counts; }
    std::size_t SessionCount() const { return m_sessions.Count(); }

    void PeerIntroduced(const MPIPeerC& peer) override;
    bool NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification) override;
    bool NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification) override;
    void BatchEnded(const MPIPeerC& peer) override;
    void PeerFinished(const MPIPeerC& peer) override;
    void PeerDisconnected(const MPIPeerC& peer) override;
    void InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason) override;
    void PeerTurnedAway(const MPIPeerC& peer) override;

private:
    CSessions::SSession* Session(const MPIPeerC& peer);
    void KeepSession(const MPIPeerC& peer, const CSessions::SSession& session, std::int64_t left);
    void ForgetSessions();
    bool IsNew(const MPIPeerC& peer, std::uint64_t number);
    void AnswerStatistics(const MPIPeerC& peer, const BListC& arguments);
    void TellUnknown(const MPIPeerC& peer, const MPINotificationC& notification);
    void ApplyReport(const MPIPeerC& peer, const MPINotificationC& notification, bool raised);
    void Apply(const MPIPeerC& peer, std::uint64_t offset, int problemCode, int problemType, bool raised);

    COwner* m_owner;
    CStateKeeper* m_keeper;
    MPISocketServerC* m_server;
    std::function<std::unique_ptr<BDictionaryC>()> m_statistics;
    std::function<void()> m_settle;
    SReportCounts m_counts;
    CSessions m_sessions;
    std::map<std::uint64_t, CSessions::SSession*>
        m_open; // of the connections that have introduced themselves
    std::map<std::uint64_t, CSessions::SSession*> m_unwelcomed;     // those of them that wait for it
    std::map<std::uint64_t, CSessions::SSession*> m_unacknowledged; // likewise
    std::uint64_t m_lastConnection;                                 // asked for; 0 is none
    CSessions::SSession* m_lastSession;                             // its session; null if it has none
};

} // namespace Faultkeeper::Apps

#endif
