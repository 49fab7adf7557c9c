#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/History.h"
#include "faultkeeperctl/json/DisplayDocuments.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TimeText.h"

#include <iostream>

namespace Faultkeeper::Apps
{

namespace
{
std::string Details(const SHistoryEntry& entry)
{
    std::string text = entry.name + "\n" + (entry.known ? entry.problem : "(not in this configuration)");
    if (entry.tree.clearedTime != 0)
        text += "\nlast cleared " + TimeText(entry.tree.clearedTime);
    return text;
}

std::string HistoryText(const std::vector<SHistoryEntry>& entries, int width)
{
    if (entries.empty())
        return "No error has been raised.\n";
    CTextTable table({"Last raised", "State", "Count", "Error and problem"});
    for (const SHistoryEntry& entry : entries)
        table.AddRow({TimeOrNever(entry.tree.raisedTime), entry.raised ? "raised" : "cleared",
                      std::to_string(entry.tree.counter1), Details(entry)});
    return table.Text(width);
}

EProgramStatus ShowHistory(const SSettings& settings)
{
    CDisplay display(settings);
    display.RequirePicture();
    const std::vector<SHistoryEntry> entries = History(display.Records(), display.Database());
    if (settings.json)
    {
        Json document;
        document["entries"] = HistoryDocument(entries);
        PrintDocument(document);
    }
    else
        std::cout << HistoryText(entries, OutputWidth());
    return epsDone;
}
} // namespace

void AddHistory(CCommandLine& commandLine)
{
    commandLine.Add(
        "history", "List every error that was raised as far as owners remember, newest first",
        "Parents and children each have a line of their own. \"Count\" tells how often, modulo 65536.\n"
        "Example: faultkeeperctl --config /etc/faultkeeper history",
        ShowHistory);
}

} // namespace Faultkeeper::Apps
