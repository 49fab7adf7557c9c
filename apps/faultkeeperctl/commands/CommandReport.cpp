#include "faultkeeperctl/commands/Commands.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/owner/OwnerStatistics.h"
#include "faultkeeperctl/text/Progress.h"
#include "faultkeeperctl/typed/ConfiguredErrors.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/FaultkeeperAPI.h>

#include <poll.h>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::chrono::steady_clock Clock;

constexpr std::chrono::seconds kPatience(2); // for a connection, and then for the message to leave
constexpr int kAcknowledgementSeconds = 2;
constexpr int kMostSeconds = 3600;
constexpr int kTurnMilliseconds = 20;
constexpr const char* kNoOwner = "no owner: nobody listens on port 5300 of this machine";
constexpr const char* kNotSure =
    "no owner: the connection was lost after the report was sent; it may or may not "
    "have been applied";

struct SRequest
{
    bool raise;
    std::string id;
    int timeoutSeconds = kAcknowledgementSeconds;
};

// With a configuration at hand an error that it does not define is a mistake; the owner would only log it.
void CheckConfigured(const SSettings& settings, const std::string& typed, const ErrorId& id)
{
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    if (database->RetrieveError(id.first, id.second) != nullptr)
        return;
    throw CFailure(epsNo,
                   "the configuration in " + settings.configuration + NotDefined(typed, id, *database));
}

// For a name with a slip: what the configuration, if there is one, has nearest to it.
std::string ConfiguredHint(const SSettings& settings, const std::string& typed, const std::string& problem)
{
    if (!settings.configured)
        return "";
    const CFailure slip(epsUsage, problem); // told also if no hint can be had
    return NearestHint(typed, problem, *LoadConfiguration(settings, &slip));
}

ErrorId CheckedId(const SSettings& settings, const std::string& typed)
{
    ErrorId id;
    std::string problem;
    if (!ParseErrorId(typed, id, problem))
        throw CFailure(epsUsage, problem + ConfiguredHint(settings, typed, problem));
    if (settings.configured)
        CheckConfigured(settings, typed, id);
    return id;
}

void WaitForSocket(const CFaultkeeperAPI& api)
{
    struct pollfd waiting = {};
    waiting.fd = api.Descriptor();
    waiting.events = POLLOUT;
    poll(&waiting, 1, kTurnMilliseconds);
}

bool Connected(CFaultkeeperAPI& api)
{
    for (const Clock::time_point end = Clock::now() + kPatience; Clock::now() < end;)
    {
        if (api.VerifyConnection())
            return true;
        if (api.Descriptor() < 0)
            return false; // refused: there is nobody
        WaitForSocket(api);
    }
    return false;
}

// The message is out of this process when nothing waits any more: the kernel delivers it even if we are gone.
bool Delivered(CFaultkeeperAPI& api)
{
    for (const Clock::time_point end = Clock::now() + kPatience; Clock::now() < end;)
    {
        if (api.BytesWaiting() == 0)
            return true;
        if (api.Descriptor() < 0)
            return false;
        WaitForSocket(api);
        api.ProcessMessages(false);
    }
    return api.BytesWaiting() == 0;
}

/// Remembers whether a connection was lost.
class CReporter : public CFaultkeeperAPI
{
public:
    void Disconnected() override { m_lost = true; }
    bool Lost() const { return m_lost; }

private:
    bool m_lost = false;
};

/// Waits for the owner to acknowledge, as long as it can.
/// @param welcomed  whether it has said that it does
bool Acknowledged(CFaultkeeperAPI& api, std::chrono::seconds patience, bool& welcomed)
{
    for (const Clock::time_point end = Clock::now() + patience;;)
    {
        const bool acknowledged = api.WaitUntilAcknowledged(Clock::now() < end ? kTurnMilliseconds : 0);
        welcomed = welcomed || api.Welcomed();
        if (acknowledged || api.GivenUpCount() > 0 || Clock::now() >= end)
            return acknowledged;
    }
}

/// @return true if the owner has acknowledged the report, false if it is one that does not do that
bool Send(const SRequest& request, const ErrorId& id)
{
    const bool raise = request.raise;
    CReporter api;
    if (!Connected(api))
        throw CFailure(epsNoOwner, kNoOwner);
    const EProblemType type = static_cast<EProblemType>(id.second);
    const int result =
        raise ? api.RaiseError(id.first, type, false, false) : api.ClearError(id.first, type, false);
    bool welcomed = false;
    if (result == 1 && Acknowledged(api, std::chrono::seconds(request.timeoutSeconds), welcomed))
        return true;
    if (result == 1 && (api.GivenUpCount() > 0 || (!welcomed && api.BytesWaiting() == 0 && api.Lost())))
        throw CFailure(epsNoOwner, kNotSure);
    if (welcomed)
        throw CFailure(epsNoOwner, "the owner has not acknowledged the report within " +
                                       std::to_string(request.timeoutSeconds) +
                                       " s; it may still be applied");
    if (result != 1 || !Delivered(api))
        throw CFailure(epsNoOwner, "no owner: the connection was lost before the report was sent");
    return false;
}

// An owner acknowledges what it has done with, and that includes what it does not know. While it still counts
// the connection that has brought the report, it may have no room for another one.
void CheckKnown(const ErrorId& id)
{
    SOwnerStatistics statistics;
    const Clock::time_point end = Clock::now() + kPatience;
    while (AskOwner(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()), statistics, &id) !=
               eoaAnswered &&
           Clock::now() < end)
        poll(nullptr, 0, kTurnMilliseconds);
    if (statistics.known.value_or(true))
        return;
    throw CFailure(epsNo, "refused: the owner knows no error " + ErrorName(id.first, id.second) + " (" +
                              ErrorNumber(id.first, id.second) + ")");
}

bool SendTelling(const SRequest& request, const ErrorId& id)
{
    const CProgress progress("waiting for the owner");
    const bool acknowledged = Send(request, id);
    if (acknowledged)
        CheckKnown(id);
    return acknowledged;
}

EProgramStatus Report(const SSettings& settings, const SRequest& request)
{
    const ErrorId id = CheckedId(settings, request.id);
    const bool acknowledged = SendTelling(request, id);
    if (settings.json)
    {
        Json document = IdDocument(id.first, id.second);
        document["request"] = request.raise ? "raise" : "clear";
        document["sent"] = true;
        document["acknowledged"] = acknowledged;
        PrintDocument(document);
    }
    else
        std::cout << (request.raise ? "raise" : "clear") << " of " << ErrorName(id.first, id.second) << " ("
                  << ErrorNumber(id.first, id.second) << ") sent to the owner"
                  << (acknowledged ? " and acknowledged" : "") << "\n";
    if (!std::cout.flush()) // what is told of standard output next must not read as if nothing had been sent
        std::fprintf(stderr,
                     "faultkeeperctl: the report was sent to the owner, but that cannot be printed\n");
    return epsDone;
}

void AddOne(CCommandLine& commandLine, bool raise, const char* name, const char* what, const char* details)
{
    const auto request = std::make_shared<SRequest>(SRequest{raise, ""});
    CCommand command = commandLine.Add(
        name, what, details, [request](const SSettings& settings) { return Report(settings, *request); });
    command.Argument("ID", request->id, "the error");
    command.Number("--timeout", request->timeoutSeconds, kMostSeconds,
                   "seconds to wait for the owner's acknowledgement");
}
} // namespace

void AddReport(CCommandLine& commandLine)
{
    AddOne(commandLine, true, "raise", "Report an error as raised",
           "Sends the report to the owner on port 5300. The last field of a name is the failure mode, as "
           "number or\n"
           "name. With a configuration the error must be defined in it.\n"
           "Waits until the owner acknowledges the report: it has applied and stored it then. An owner that "
           "never\n"
           "acknowledges anything counts as one that has taken it; \"and acknowledged\" is missing from the "
           "output then.\n"
           "Exit status 1: the configuration, or the owner's, does not define the error.\n"
           "Exit status 3: nobody listens, an owner that does acknowledge has not done so in time, or the "
           "connection\n"
           "was lost before one has, so that it is not sure whether the report was applied.\n"
           "Example: faultkeeperctl raise \"Positioning:GPS:No Data:2\"");
    AddOne(commandLine, false, "clear", "Report an error as cleared",
           "Sends the report to the owner on port 5300, as \"raise\" does.\n"
           "Example: faultkeeperctl clear 0x40C1B:2");
}

} // namespace Faultkeeper::Apps
