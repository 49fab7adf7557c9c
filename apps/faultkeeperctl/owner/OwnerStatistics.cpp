#include "faultkeeperctl/owner/OwnerStatistics.h"

#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>
#include <MPI/MPISocketConnectionC.h>

#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::chrono::steady_clock Clock;

constexpr unsigned short kPort = 5300;

SOwnerStatistics StatisticsOf(const BDictionaryC& entries)
{
    SOwnerStatistics statistics;
    for (const auto& entry : entries.Elements())
    {
        const BAtomC* const atom = entry.second->AsAtom();
        if (atom != nullptr && atom->IsInteger())
            statistics.numbers[entry.first] = atom->Integer();
        else if (atom != nullptr)
            statistics.texts[entry.first] = atom->Text();
    }
    return statistics;
}

int MillisecondsUntil(Clock::time_point end)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}
} // namespace

EOwnerAnswer AskOwner(std::chrono::milliseconds patience, SOwnerStatistics& statistics, const ErrorId* error)
{
    const Clock::time_point end = Clock::now() + patience;
    MPISocketConnectionC owner;
    if (!owner.Connect("localhost", kPort, MillisecondsUntil(end)))
        return eoaNobody;
    BListC arguments;
    if (error != nullptr)
    {
        arguments.Append(std::make_unique<BAtomC>(std::int64_t{error->first}));
        arguments.Append(std::make_unique<BAtomC>(std::int64_t{error->second}));
    }
    owner.SendNotification("Statistics", &arguments);
    while (owner.Connected() && Clock::now() < end)
    {
        owner.SetTimeout(MillisecondsUntil(end));
        const std::unique_ptr<BDictionaryC> message = owner.ReceiveMessage(true);
        const BElementC* const answer = message != nullptr ? message->Find("statistics") : nullptr;
        if (answer == nullptr || answer->AsDictionary() == nullptr)
            continue;
        statistics = StatisticsOf(*answer->AsDictionary());
        if (const BElementC* const known = message->Find("known"))
            statistics.known = known->AsAtom() != nullptr && known->AsAtom()->Integer() != 0;
        return eoaAnswered;
    }
    return eoaSilent;
}

} // namespace Faultkeeper::Apps
