#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/HierarchyDocuments.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
EProgramStatus Tree(const SSettings& settings)
{
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    if (settings.json)
    {
        Json document;
        document["errors"] = TreeListing(*database);
        PrintDocument(document);
    }
    else
        database->PrintTree();
    return epsDone;
}
} // namespace

void AddTree(CCommandLine& commandLine)
{
    commandLine.Add("tree", "Print every error of the configuration by its coordinates",
                    "Module, sub-module, problem and failure mode on a line each. Needs no owner.\n"
                    "Example: faultkeeperctl --config config/example tree",
                    Tree);
}

} // namespace Faultkeeper::Apps
