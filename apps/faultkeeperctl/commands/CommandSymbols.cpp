#include "faultkeeperctl/commands/Commands.h"

#include "common/text/ErrorNames.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/Json.h"

#include <Faultkeeper/Identifiers.h>

namespace Faultkeeper::Apps
{

namespace
{
Json TableDocument(const std::vector<SNamedValue>& table)
{
    Json rows = Json::array();
    for (const SNamedValue& row : table)
    {
        Json document;
        document["name"] = row.name;
        document["value"] = row.value;
        rows.push_back(document);
    }
    return rows;
}

EProgramStatus Symbols(const SSettings& settings)
{
    if (!settings.json)
    {
        DumpXMLSymbols();
        return epsDone;
    }
    Json document;
    document["modules"] = TableDocument(ModuleNames());
    document["subModules"] = TableDocument(SubModuleNames());
    document["problems"] = TableDocument(ProblemNames());
    document["failureModes"] = TableDocument(FailureModeNames());
    document["severities"] = TableDocument(SeverityNames());
    PrintDocument(document);
    return epsDone;
}
} // namespace

void AddSymbols(CCommandLine& commandLine)
{
    commandLine.Add("symbols", "List the names that configuration files may use",
                    "Needs neither a configuration nor an owner.\n"
                    "Example: faultkeeperctl symbols | grep ^PROBLEM",
                    Symbols);
}

} // namespace Faultkeeper::Apps
