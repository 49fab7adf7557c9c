#include "faultkeeperd/NotificationHandler.h"

#include "common/ErrorNames.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/Owner.h"

#include <MPI/BAtomC.h>
#include <MPI/BListC.h>

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

bool CNotificationHandler::NotificationReceived(const MPIPeerC& peer, const MPINotificationC& notification)
{
    if (notification.name == "RaiseError")
        ApplyReport(peer, notification, true);
    else if (notification.name == "ClearError")
        ApplyReport(peer, notification, false);
    else
        LogWarning(At(peer, notification.offset) + "unknown notification " + Quoted(notification.name));
    return true;
}

void CNotificationHandler::InputRefused(const MPIPeerC& peer, std::uint64_t offset, const std::string& reason)
{
    LogWarning(At(peer, offset) + reason + "; connection closed");
}

void CNotificationHandler::PeerTurnedAway(const MPIPeerC& peer)
{
    LogWarning(peer.name + ": turned away, there are too many connections");
}

void CNotificationHandler::ApplyReport(const MPIPeerC& peer, const MPINotificationC& notification,
                                       bool raised)
{
    const std::string fault = ArgumentFault(notification.arguments, kIdentifierArguments + (raised ? 1 : 0));
    if (!fault.empty())
    {
        LogWarning(At(peer, notification.offset) + notification.name + " with wrong arguments: " + fault);
        return;
    }
    const int problemCode = IntegerAt(notification.arguments, 0);
    const int problemType = IntegerAt(notification.arguments, 1);
    if (!m_owner->Apply(problemCode, problemType, raised))
        LogWarning(At(peer, notification.offset) + notification.name + " of an unknown error " +
                   ErrorName(problemCode, problemType) + " (" + ErrorNumber(problemCode, problemType) + ")");
}

} // namespace Faultkeeper::Apps
