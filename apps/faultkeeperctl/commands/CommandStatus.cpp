#include "faultkeeperctl/commands/Commands.h"

#include "common/owner/TableProbe.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/text/TextTable.h"
#include "faultkeeperctl/text/TextWidth.h"
#include "faultkeeperctl/text/TimeText.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace Faultkeeper::Apps
{

namespace
{
bool HasCopy(const STableFacts& facts)
{
    return facts.state == etsReady || facts.state == etsNotReady;
}

// Of what may not be looked at, nobody can tell whether an owner keeps it.
bool OwnerKnown(ETableState state)
{
    return state != etsRefused && state != etsForeign && state != etsFailed;
}

const char* OwnerText(ETableState state)
{
    return !OwnerKnown(state) ? "unknown" : OwnerPresent(state) ? "running" : "none";
}

int RaisedCount(const SStatusTable& table)
{
    return static_cast<int>(std::count_if(table.records, table.records + RecordCount(table),
                                          [](const SErrorEntry& record)
                                          { return (record.flags & kRaisedFlag) != 0; }));
}

std::string KeyText(key_t key)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(key));
    return text;
}

Json StatusDocument(const STableFacts& facts, const SSettings& settings)
{
    Json document;
    document["runDirectory"] = settings.runDirectory;
    document["key"] = KeyText(facts.key);
    document["state"] = StateName(facts.state);
    document["owner"] = OwnerKnown(facts.state) ? Json(OwnerPresent(facts.state)) : Json();
    document["ready"] = facts.state == etsReady;
    document["message"] = StateText(facts, settings.runDirectory);
    if (facts.state == etsOwnerGone)
        SetTime(document, "lastSeen", facts.lastSeen);
    if (!HasCopy(facts))
        return document;
    document["records"] = RecordCount(facts.table);
    document["raised"] = RaisedCount(facts.table);
    SetTime(document, "lastRaise", WholeSeconds(facts.table.header.lastRaiseTime));
    SetTime(document, "lastClear", WholeSeconds(facts.table.header.lastClearTime));
    return document;
}

void PrintField(const char* label, const std::string& value)
{
    std::cout << FieldText(label, {value}, OutputWidth());
}

void PrintStatus(const STableFacts& facts, const SSettings& settings)
{
    PrintField("Run dir", settings.runDirectory);
    PrintField("Key", KeyText(facts.key));
    PrintField("Owner", OwnerText(facts.state));
    PrintField("Ready", facts.state == etsReady ? "yes" : "no");
    if (!HasCopy(facts))
        return;
    PrintField("Records", std::to_string(RecordCount(facts.table)));
    PrintField("Raised", std::to_string(RaisedCount(facts.table)));
    PrintField("Last raise", TimeOrNever(WholeSeconds(facts.table.header.lastRaiseTime)));
    PrintField("Last clear", TimeOrNever(WholeSeconds(facts.table.header.lastClearTime)));
}

EProgramStatus Status(const SSettings& settings)
{
    EnterRunDirectory(settings);
    const STableFacts facts = ProbeTable();
    if (settings.json)
        PrintDocument(StatusDocument(facts, settings));
    else
        PrintStatus(facts, settings);
    if (facts.state != etsReady)
    {
        std::cout.flush();
        std::fprintf(stderr, "faultkeeperctl: %s\n", StateText(facts, settings.runDirectory).c_str());
    }
    return StatusOf(facts.state);
}
} // namespace

void AddStatus(CCommandLine& commandLine)
{
    commandLine.Add("status", "Tell whether an owner is there and how many errors are raised",
                    "Needs no configuration. Exit status 0 if the table is ready, 3 if there is no owner.\n"
                    "Example: faultkeeperctl status && echo \"faults are being watched\"",
                    Status);
}

} // namespace Faultkeeper::Apps
