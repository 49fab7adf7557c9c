#include "faultkeeperctl/commands/Commands.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/simulation/SimulationText.h"
#include "faultkeeperctl/text/Difference.h"
#include "faultkeeperctl/text/Progress.h"
#include "faultkeeperctl/typed/FileText.h"

#include <cstdio>
#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
struct SSimulateArguments
{
    std::string script;
    std::string expected; // file with what should come out; "" if that is of no interest
};

std::string Counted(std::size_t count, const char* what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

SScript ReadScript(const SSimulateArguments& arguments, const std::string& text,
                   const CErrorDatabase& database)
{
    SScript script = ParseScript(text, database);
    for (const SScriptMistake& mistake : script.mistakes)
        std::fprintf(stderr, "%s:%d:%d: error: %s\n", WithoutControls(FileName(arguments.script)).c_str(),
                     mistake.line, mistake.column, mistake.text.c_str());
    if (!script.mistakes.empty())
        throw CFailure(epsNo, "the script has " + Counted(script.mistakes.size(), "mistake") +
                                  "; nothing was played");
    return script;
}

std::vector<SSimulatedStep> Played(const SScript& script, CErrorDatabase& database,
                                   const std::string& configuration)
{
    const CProgress progress("playing the script");
    CSimulation simulation(database, configuration);
    std::vector<SSimulatedStep> steps;
    steps.reserve(script.steps.size());
    for (const SScriptStep& step : script.steps)
        steps.push_back(simulation.Play(step));
    return steps;
}

EProgramStatus Compare(const SSettings& settings, const SSimulateArguments& arguments,
                       const std::string& expected, const std::vector<SSimulatedStep>& steps)
{
    const std::vector<std::string> difference =
        Difference(arguments.expected, expected, "simulation", SimulationText(steps));
    if (settings.json)
    {
        Json document = SimulationDocument(steps);
        document["expected"] = arguments.expected;
        document["same"] = difference.empty();
        document["difference"] = difference;
        PrintDocument(document);
    }
    else if (difference.empty())
        std::cout << Counted(steps.size(), "step") << " played, and all came out as expected\n";
    for (const std::string& line : settings.json ? std::vector<std::string>() : difference)
        std::cout << line << "\n";
    return difference.empty() ? epsDone : epsNo;
}

EProgramStatus Simulate(const SSettings& settings, const SSimulateArguments& arguments)
{
    const std::string text = FileText(arguments.script);
    const bool compared = !arguments.expected.empty();
    const std::string expected = compared ? FileText(arguments.expected) : "";
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    const SScript script = ReadScript(arguments, text, *database);
    const std::vector<SSimulatedStep> steps = Played(script, *database, settings.configuration);
    if (compared)
        return Compare(settings, arguments, expected, steps);
    if (settings.json)
        PrintDocument(SimulationDocument(steps));
    else
        std::cout << SimulationText(steps);
    return epsDone;
}
} // namespace

void AddSimulate(CCommandLine& commandLine)
{
    const auto arguments = std::make_shared<SSimulateArguments>();
    CCommand command = commandLine.Add(
        "simulate", "Play raises and clears against a configuration, without an owner",
        "FILE has one request a line, \"raise ID\" or \"clear ID\"; blank lines and what follows a \"#\" "
        "mean\n"
        "nothing. After each request comes what has changed, what followed and through which trigger set,\n"
        "which parents did not follow and why, and the trees with their keys and friendly codes. Nothing of\n"
        "it depends on the time or the machine, so it can be kept, and compared with --expect: where it\n"
        "differs is printed, and the exit status is 1.\n"
        "Example: faultkeeperctl --config config/example simulate script.txt > expected.txt\n"
        "         faultkeeperctl --config config/example simulate script.txt --expect expected.txt",
        [arguments](const SSettings& settings) { return Simulate(settings, *arguments); });
    command.Argument("FILE", arguments->script, "the script; \"-\" for standard input");
    command.Text("--expect", arguments->expected, "FILE", "what should come out, as printed before");
}

} // namespace Faultkeeper::Apps
