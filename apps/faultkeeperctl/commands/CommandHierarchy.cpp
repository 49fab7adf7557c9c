#include "faultkeeperctl/commands/Commands.h"

#include "common/owner/RunDirectory.h"
#include "common/owner/TableProbe.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/Display.h"
#include "faultkeeperctl/graph/HierarchyGraph.h"
#include "faultkeeperctl/json/HierarchyDocuments.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
struct SHierarchyArguments
{
    bool all = false;
    bool dot = false;
};

// The present state, if there is an owner to tell it.
EProgramStatus DrawHierarchy(const SSettings& settings, SGraphStyle style)
{
    std::string ignored;
    const bool anywhere = EnterDirectory(settings.runDirectory, ignored);
    if (anywhere && ProbeTable().state == etsReady)
    {
        CDisplay display(settings);
        display.RequirePicture();
        style.live = true;
        std::cout << HierarchyGraph(display.Database(), style);
    }
    else
        std::cout << HierarchyGraph(*LoadConfiguration(settings), style);
    return epsDone;
}

EProgramStatus Hierarchy(const SSettings& settings, const SHierarchyArguments& arguments)
{
    if (arguments.dot && settings.json)
        throw CFailure(epsUsage, "--dot is no JSON document; leave out --json");
    if (arguments.dot)
        return DrawHierarchy(settings, {arguments.all, false});
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    if (settings.json)
    {
        Json document;
        document["errors"] = HierarchyListing(*database, arguments.all);
        PrintDocument(document);
    }
    else
        database->PrintHierarchy(arguments.all);
    return epsDone;
}
} // namespace

void AddHierarchy(CCommandLine& commandLine)
{
    const auto arguments = std::make_shared<SHierarchyArguments>();
    CCommand command = commandLine.Add(
        "hierarchy", "Print which errors raise which, from the configuration",
        "Every top error with its trigger sets and what is below them. Needs no owner.\n"
        "With --dot as a picture for Graphviz: boxes are errors, ellipses are sets with the number that\n"
        "they need; dashed ones are not automatic, dotted links shallow. Where an owner runs, active errors\n"
        "have the colour of their severity.\n"
        "Example: faultkeeperctl --config config/example hierarchy\n"
        "         faultkeeperctl --config config/example hierarchy --dot | dot -Tsvg > hierarchy.svg",
        [arguments](const SSettings& settings) { return Hierarchy(settings, *arguments); });
    command.Flag("--all", arguments->all, "also top errors without triggers");
    command.Flag("--dot", arguments->dot, "as a picture for Graphviz");
}

} // namespace Faultkeeper::Apps
