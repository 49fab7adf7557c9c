#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/check/CheckReport.h"
#include "faultkeeperctl/text/Progress.h"

#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kWidestLine = 10000;

struct SCheckArguments
{
    std::string directory; // "" if none was given
    int lineWidth = 0;
};

std::string Prefix(const SSettings& settings, const std::string& directory)
{
    if (directory.empty())
        return settings.configuration;
    return directory.back() == '/' ? directory : directory + "/"; // shown in findings as it was typed
}

SCheckResult Checked(const SSettings& settings, const SCheckArguments& arguments)
{
    const CProgress progress("checking the configuration");
    return CheckConfiguration(Prefix(settings, arguments.directory), arguments.lineWidth);
}

EProgramStatus Check(const SSettings& settings, const SCheckArguments& arguments)
{
    const SCheckResult result = Checked(settings, arguments);
    if (settings.json)
        PrintDocument(CheckDocument(result));
    else
        std::cout << CheckText(result);
    return result.findings.empty() ? epsDone : epsNo;
}
} // namespace

void AddCheck(CCommandLine& commandLine)
{
    const auto arguments = std::make_shared<SCheckArguments>();
    CCommand command = commandLine.Add(
        "check", "Check a configuration and tell all that is wrong with it at once",
        "Reads FaultkeeperConfig.xml, the modules that it lists and ErrorPatterns.xml, and prints a line for "
        "each\n"
        "finding: \"file:line:column: error: text\", or \"warning\". An error keeps programs from using the\n"
        "configuration or a part of it; if they would end over it, the rule that they name then stands "
        "behind\n"
        "it. A warning is about what they take without a word, although somebody may have meant otherwise.\n"
        "Without a DIR it is the configuration of --config. Needs no owner.\n"
        "Exit status: 0 nothing found; 1 errors or warnings; 2 usage.\n"
        "Example: faultkeeperctl check config/example",
        [arguments](const SSettings& settings) { return Check(settings, *arguments); });
    command.OptionalArgument("DIR", arguments->directory, "configuration directory");
    command.Number("--line-width", arguments->lineWidth, kWidestLine,
                   "also warn of texts that are wider than so many columns; 0: of none");
}

} // namespace Faultkeeper::Apps
