#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/HierarchyDocuments.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
EProgramStatus Hierarchy(const SSettings& settings, bool includeLeaves)
{
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    if (settings.json)
    {
        Json document;
        document["errors"] = HierarchyListing(*database, includeLeaves);
        PrintDocument(document);
    }
    else
        database->PrintHierarchy(includeLeaves);
    return epsDone;
}
} // namespace

void AddHierarchy(CCommandLine& commandLine)
{
    const auto all = std::make_shared<bool>(false);
    CCommand command =
        commandLine.Add("hierarchy", "Print which errors raise which, from the configuration",
                        "Every top error with its trigger sets and what is below them. Needs no owner.\n"
                        "Example: faultkeeperctl --config config/example hierarchy",
                        [all](const SSettings& settings) { return Hierarchy(settings, *all); });
    command.Flag("--all", *all, "also top errors without triggers");
}

} // namespace Faultkeeper::Apps
