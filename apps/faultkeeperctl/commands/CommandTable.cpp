#include "faultkeeperctl/commands/Commands.h"

#include "common/owner/TableProbe.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"

#include <iostream>

namespace Faultkeeper::Apps
{

namespace
{
bool Exists(const STableFacts& facts)
{
    return facts.segment != -1 || facts.semaphore != -1;
}

void Tell(const SSettings& settings, bool removed, const std::string& message)
{
    if (settings.json)
    {
        Json document;
        document["runDirectory"] = settings.runDirectory;
        document["removed"] = removed;
        document["message"] = message;
        PrintDocument(document);
    }
    else
        std::cout << message << "\n";
}

EProgramStatus Remove(const SSettings& settings)
{
    EnterRunDirectory(settings);
    const STableFacts facts = ProbeTable();
    if (!Exists(facts))
    {
        Tell(settings, false, "there is no table in " + settings.runDirectory);
        return epsDone;
    }
    if (OwnerPresent(facts.state) || facts.state == etsForeign || facts.state == etsRefused ||
        facts.state == etsFailed)
        throw CFailure(epsNo, "not removed: " + (facts.state == etsReady || facts.state == etsNotReady
                                                     ? "an owner runs in " + settings.runDirectory
                                                     : StateText(facts, settings.runDirectory)));
    std::string problem;
    if (!RemoveTable(facts, problem))
        throw CFailure(epsNo, problem);
    Tell(settings, true, "removed the table in " + settings.runDirectory);
    return epsDone;
}
} // namespace

void AddTable(CCommandLine& commandLine)
{
    CCommand command = commandLine.Add(
        "table", "Remove a table that an owner has left behind",
        "Table and lock outlive their owner, and the next owner takes them over: removing them is\n"
        "only for cleaning up. Refused while an owner runs.\n"
        "Example: faultkeeperctl --run-dir /run/faultkeeper table --remove",
        Remove);
    command.RequiredFlag("--remove", "remove the shared memory and the lock");
}

} // namespace Faultkeeper::Apps
