#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/json/HierarchyDocuments.h"

#include <Faultkeeper/ErrorPresentation.h>

namespace Faultkeeper::Apps
{

namespace
{
EProgramStatus Active(const SSettings& settings)
{
    CDisplay display(settings);
    display.RequirePicture();
    WarnOfUnknown(display);
    const std::list<const CError*>& tops = display.Database().ActiveErrors(false);
    if (settings.json)
    {
        Json document;
        document["errors"] = ActiveListing(tops);
        PrintDocument(document);
    }
    else
        CErrorPresentation::PrintErrorTree(tops);
    return epsDone;
}
} // namespace

void AddActive(CCommandLine& commandLine)
{
    commandLine.Add("active", "Print the active errors by name, each below the one it raised",
                    "Example: faultkeeperctl --config /etc/faultkeeper active", Active);
}

} // namespace Faultkeeper::Apps
