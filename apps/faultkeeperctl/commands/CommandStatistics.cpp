#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/owner/OwnerStatistics.h"
#include "faultkeeperctl/text/Progress.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"

#include <iostream>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::chrono::milliseconds kPatience(2000);

void PrintText(const SOwnerStatistics& statistics)
{
    CTextTable table({"What", "Value"});
    for (const auto& text : statistics.texts)
        table.AddRow({text.first, text.second});
    for (const auto& number : statistics.numbers)
        table.AddRow({number.first, std::to_string(number.second)});
    std::cout << table.Text(OutputWidth());
}

Json Document(const SOwnerStatistics& statistics)
{
    Json document;
    for (const auto& text : statistics.texts)
        document[text.first] = text.second;
    for (const auto& number : statistics.numbers)
        document[number.first] = number.second;
    return document;
}

EOwnerAnswer AskTelling(SOwnerStatistics& statistics)
{
    const CProgress progress("waiting for the owner");
    return AskOwner(kPatience, statistics);
}

EProgramStatus Statistics(const SSettings& settings)
{
    SOwnerStatistics statistics;
    const EOwnerAnswer answer = AskTelling(statistics);
    if (answer == eoaNobody)
        throw CFailure(epsNoOwner, "no owner: nobody listens on port 5300 of this machine");
    if (answer == eoaSilent)
        throw CFailure(epsNoOwner, "no owner: who listens on port 5300 of this machine does not answer");
    if (settings.json)
        PrintDocument(Document(statistics));
    else
        PrintText(statistics);
    return epsDone;
}
} // namespace

void AddStatistics(CCommandLine& commandLine)
{
    commandLine.Add(
        "statistics", "Show what the owner tells of its own work",
        "Reports received, applied, repeated, unknown and malformed; connections; how often the table's\n"
        "lock was busy; commits of the state store and its failures; and what \"acknowledged\" means\n"
        "just now: stored, or only applied. Asks the owner on port 5300; needs no configuration.\n"
        "Example: faultkeeperctl statistics --json",
        Statistics);
}

} // namespace Faultkeeper::Apps
