#include "faultkeeperd/service/NotificationHandler.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/owner/Owner.h"
#include "faultkeeperd/store/StateKeeper.h"
#include "store/BootClock.h"

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kIdentifierArguments = 2; // problem code, failure mode

std::string At(const MPIPeerC& peer, std::uint64_t offset)
{
    return peer.name + " at byte " + std::to_string(offset) + ": ";
}

bool FitsInt(std::int64_t value)
{
    return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

/// What is wrong with the arguments of a report; empty if nothing is.
std::string ArgumentFault(const BListC& arguments, std::size_t mostArguments)
{
    if (arguments.Size() < kIdentifierArguments || arguments.Size() > mostArguments)
        return std::to_string(arguments.Size()) + " arguments";
    for (std::size_t i = 0; i < arguments.Size(); ++i)
    {
        const BAtomC* const atom = arguments.At(i)->AsAtom();
        if (atom == nullptr || !atom->IsInteger())
            return "argument " + std::to_string(i + 1) + " is not a number";
        if (!FitsInt(atom->Integer()))
            return "argument " + std::to_string(i + 1) + " is out of range";
    }
    return std::string();
}

int IntegerAt(const BListC& arguments, std::size_t position)
{
    return static_cast<int>(arguments.At(position)->AsAtom()->Integer());
}
} // namespace

void CNotificationHandler::Begin(COwner& owner, CStateKeeper& keeper,
                                 const std::vector<SStoredSession>& former)
{
    m_owner = &owner;
    m_keeper = &keeper;
    for (const SStoredSession& session : former)
    {
        m_sessions.Restore(session.id, session.applied);
        m_keeper->Keep(session);
    }
    ForgetSessions();
}

void CNotificationHandler::PeerIntroduced(const MPIPeerC& peer)
{
    CSessions::SSession& session = m_sessions.Open(peer.session);
    m_open[peer.connection] = &session;
    m_lastConnection = 0;
    KeepSession(peer, session, SStoredSession::kConnected);
    ForgetSessions();
    if (session.applied > session.stored)
        m_unwelcomed[peer.connection] = &session; // what is not stored yet will be in a moment
    else if (m_server != nullptr)
        m_server->Welcome(peer.connection, session.stored);
}

/// One that has sent nothing yet is not worth keeping.
void CNotificationHandler::KeepSession(const MPIPeerC& peer, const CSessions::SSession& session,
                                       std::int64_t left)
{
    if (session.applied > 0)
        m_keeper->Keep(SStoredSession{peer.session, session.applied, left});
}

void CNotificationHandler::ForgetSessions()
{
    for (const std::string& session : m_sessions.TakeForgotten())
        m_keeper->Forget(session);
}

CSessions::SSession* CNotificationHandler::Session(const MPIPeerC& peer)
{
    if (peer.connection != m_lastConnection)
    {
        const auto found = m_open.find(peer.connection);
        m_lastSession = found != m_open.end() ? found->second : nullptr;
        m_lastConnection = peer.connection;
    }
    return m_lastSession;
}

/// Numbers count within a session only.
bool CNotificationHandler::IsNew(const MPIPeerC& peer, std::uint64_t number)
{
    CSessions::SSession* const session = number != 0 ? Session(peer) : nullptr;
    const bool isNew = session == nullptr || CSessions::Take(*session, number);
    m_counts.repeated += isNew ? 0 : 1;
    return isNew;
}

bool CNotificationHandler::NumbersReceived(const MPIPeerC& peer, const MPINumbersC& notification)
{
    const bool raised = notification.name == "RaiseError";
    const std::size_t most = kIdentifierArguments + (raised ? 1 : 0);
    const std::int64_t* const end = notification.arguments + notification.count;
    if ((!raised && notification.name != "ClearError") || notification.count < kIdentifierArguments ||
        notification.count > most || !std::all_of(notification.arguments, end, FitsInt))
        return MPIServerHandlerC::NumbersReceived(peer, notification); // to be told in words
    ++m_counts.received;
    if (IsNew(peer, notification.number))
        Apply(peer, notification.offset, static_cast<int>(notification.arguments[0]),
              static_cast<int>(notification.arguments[1]), raised);
    return true;
}

bool CNotificationHandler::NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification)
{
    const bool isNew = IsNew(peer, notification.number);
    if (notification.name == "Statistics")
        AnswerStatistics(peer, notification.arguments);
    else
        ++m_counts.received;
    if (!isNew || notification.name == "Statistics")
        return true;
    if (notification.name == "RaiseError")
        ApplyReport(peer, notification, true);
    else if (notification.name == "ClearError")
        ApplyReport(peer, notification, false);
    else
        TellUnknown(peer, notification);
    return true;
}

void CNotificationHandler::AnswerStatistics(const MPIPeerC& peer, const BListC& arguments)
{
    if (m_server == nullptr || !m_statistics)
        return;
    const std::unique_ptr<BDictionaryC> answer = m_statistics();
    if (ArgumentFault(arguments, kIdentifierArguments).empty())
    {
        const bool known = m_owner->Knows(IntegerAt(arguments, 0), IntegerAt(arguments, 1));
        answer->Insert("known", std::make_unique<BAtomC>(std::int64_t{known ? 1 : 0}));
    }
    m_server->Answer(peer.connection, *answer);
}

void CNotificationHandler::TellUnknown(const MPIPeerC& peer, const MPINotificationC& notification)
{
    ++m_counts.unknown;
    LogWarning(At(peer, notification.offset) + "unknown notification " + Quoted(notification.name));
}

void CNotificationHandler::BatchEnded(const MPIPeerC& peer)
{
    CSessions::SSession* const session = Session(peer);
    if (session == nullptr)
        return;
    KeepSession(peer, *session, SStoredSession::kConnected);
    m_sessions.AwaitStore(*session);
    m_unacknowledged[peer.connection] = session;
}

void CNotificationHandler::PeerFinished(const MPIPeerC& peer)
{
    if (m_settle && (m_unacknowledged.count(peer.connection) > 0 || m_unwelcomed.count(peer.connection) > 0))
        m_settle();
}

void CNotificationHandler::Acknowledge()
{
    m_sessions.Stored();
    if (m_server != nullptr)
    {
        for (const auto& waiting : m_unwelcomed)
            m_server->Welcome(waiting.first, waiting.second->stored);
        for (const auto& waiting : m_unacknowledged)
            m_server->Acknowledge(waiting.first, waiting.second->stored);
    }
    m_unwelcomed.clear();
    m_unacknowledged.clear();
}

void CNotificationHandler::PeerDisconnected(const MPIPeerC& peer)
{
    m_lastConnection = 0;
    m_unwelcomed.erase(peer.connection);
    m_unacknowledged.erase(peer.connection); // the next welcome tells how far it is stored
    const auto found = m_open.find(peer.connection);
    if (found == m_open.end())
        return;
    const CSessions::SSession& session = *found->second;
    m_open.erase(found);
    if (session.connections == 1)
        KeepSession(peer, session, NanosecondsSinceBoot());
    m_sessions.Close(peer.session);
    ForgetSessions();
}

void CNotificationHandler::InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason)
{
    ++m_counts.malformed;
    LogWarning(At(peer, offset) + reason + "; connection closed");
}

void CNotificationHandler::PeerTurnedAway(const MPIPeerC& peer)
{
    ++m_counts.turnedAway;
    LogWarning(peer.name + ": turned away, there are too many connections");
}

void CNotificationHandler::ApplyReport(const MPIPeerC& peer, const MPINotificationC& notification,
                                       bool raised)
{
    const std::string fault = ArgumentFault(notification.arguments, kIdentifierArguments + (raised ? 1 : 0));
    if (!fault.empty())
    {
        ++m_counts.malformed;
        LogWarning(At(peer, notification.offset) + notification.name + " with wrong arguments: " + fault);
        return;
    }
    Apply(peer, notification.offset, IntegerAt(notification.arguments, 0),
          IntegerAt(notification.arguments, 1), raised);
}

void CNotificationHandler::Apply(const MPIPeerC& peer, std::uint64_t offset, int problemCode, int problemType,
                                 bool raised)
{
    if (m_owner->Apply(problemCode, problemType, raised, peer.session))
    {
        ++m_counts.applied;
        return;
    }
    ++m_counts.unknown;
    LogWarning(At(peer, offset) + (raised ? "RaiseError" : "ClearError") + " of an unknown error " +
               Quoted(ErrorName(problemCode, problemType)) + ", " +
               Quoted(ErrorNumber(problemCode, problemType)));
}

} // namespace Faultkeeper::Apps
