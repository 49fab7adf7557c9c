#include "faultkeeperctl/CommandLine.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"
#include "faultkeeperctl/text/HelpText.h"
#include "faultkeeperctl/text/TextWidth.h"

#include <Faultkeeper/Version.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <iterator>
#include <utility>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kFooter =
    "An ID is an error's name, Positioning:GPS:No Data:2, or CODE:TYPE, 0x40C1B:2.\n"
    "Exit status: 0 done; 1 the answer is no, or something was found wrong; 2 usage; 3 no owner.\n"
    "faultkeeperctl COMMAND --help tells more about a command, with an example.";

constexpr const char* kDirectoryOptions[] = {"--config", "--run-dir"};

constexpr const char* kCommandFooter = "\n--config, --run-dir and --json may stand behind the command, too.";

void Complain(const std::string& message)
{
    TellFailure(CFailure(epsNo, message), false);
}

// What could not be written was not answered. A reader that has gone away needs no telling.
EProgramStatus Finished(EProgramStatus status)
{
    std::cout.flush();
    if (std::fflush(stdout) == 0 && std::cout.good())
        return status;
    if (errno != EPIPE)
        Complain(std::string("cannot write to standard output: ") + std::strerror(errno));
    return status == epsDone ? epsNo : status;
}

bool IsOption(const std::string& argument)
{
    return argument.size() > 1 && argument.front() == '-';
}

bool Contains(int argumentCount, const char* const* arguments, const std::string& argument)
{
    return std::find(arguments, arguments + argumentCount, argument) != arguments + argumentCount;
}

CFailure NoDirectory(const std::string& option)
{
    return CFailure(epsUsage, option + " names no directory");
}

bool TakesNext(const std::string& argument)
{
    return std::find(std::begin(kDirectoryOptions), std::end(kDirectoryOptions), argument) !=
           std::end(kDirectoryOptions);
}

/// The place of the command among the arguments, or their number if there is none.
std::size_t PlaceOfCommand(const std::vector<const char*>& arguments)
{
    std::size_t place = 1;
    while (place < arguments.size() && IsOption(arguments[place]))
        place += TakesNext(arguments[place]) ? 2 : 1;
    return std::min(place, arguments.size());
}

// "help COMMAND" means "--help COMMAND"; without a command likewise.
std::vector<const char*> Understood(int argumentCount, const char* const* arguments)
{
    std::vector<const char*> understood(arguments, arguments + argumentCount);
    for (const char* const option : kDirectoryOptions)
    {
        if (Contains(argumentCount, arguments, std::string(option) + "="))
            throw NoDirectory(option); // what follows would be taken for the directory
    }
    const std::size_t command = PlaceOfCommand(understood);
    if (command < understood.size() && understood[command] == std::string("help"))
        understood[command] = "--help";
    return understood;
}

void AddOptionNames(const CLI::App& app, std::vector<std::string>& names)
{
    for (const CLI::Option* const option : app.get_options())
    {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
}

std::string UnknownName(const std::string& what, const std::string& typed,
                        const std::vector<std::string>& names)
{
    const std::string nearest = NearestName(typed, names);
    return "no " + what + " is called " + QuotedTyped(typed) +
           (nearest.empty() ? "; see --help" : ", the nearest is \"" + nearest + "\"");
}
} // namespace

void CCommand::Argument(const std::string& name, std::string& value, const std::string& what)
{
    m_app.add_option(name, value, what)->required();
}

void CCommand::OptionalArgument(const std::string& name, std::string& value, const std::string& what)
{
    m_app.add_option(name, value, what)
        ->check([name](const std::string& given) { return given.empty() ? name + " is empty" : ""; });
}

void CCommand::Words(const std::string& name, std::vector<std::string>& values, bool required,
                     const std::string& what)
{
    m_app.add_option(name, values, what)->required(required);
}

void CCommand::Flag(const std::string& name, bool& value, const std::string& what)
{
    m_app.add_flag(name, value, what);
}

void CCommand::Text(const std::string& name, std::string& value, const std::string& kind,
                    const std::string& what)
{
    const auto given = [name](const std::string& text)
    { return text.empty() ? name + " names nothing" : ""; };
    m_app.add_option(name, value, what)->check(given, "")->type_name(kind);
}

void CCommand::File(const std::string& name, std::string& value, const std::string& what)
{
    const auto refuseNothing = [](const std::string& path)
    { return path.empty() ? std::string("it names no file") : std::string(); };
    m_app.add_option(name, value, what)->type_name("FILE")->check(CLI::Validator(refuseNothing, ""));
}

void CCommand::Number(const std::string& name, int& value, int most, const std::string& what)
{
    m_app.add_option(name, value, what)->check(CLI::Range(0, most))->capture_default_str();
}

void CCommand::RequiredFlag(const std::string& name, const std::string& what)
{
    m_app.add_flag(name, what)->required();
}

CCommandLine::CCommandLine()
    : m_app(std::make_unique<CLI::App>("Reports faults to their owner and shows what it knows.",
                                       "faultkeeperctl"))
{
    m_app->set_version_flag("--version", "faultkeeperctl " FAULTKEEPER_VERSION);
    m_app
        ->add_option("--config", m_configuration,
                     "configuration directory (default: $FAULTKEEPER_CONFIG, then /etc/faultkeeper)")
        ->type_name("DIR");
    m_app
        ->add_option(
            "--run-dir", m_runDirectory,
            "run directory of the owner (default: $FAULTKEEPER_RUN_DIR, then /run/faultkeeper, then the "
            "current directory)")
        ->type_name("DIR");
    m_app->add_flag("--json", m_json, "print one JSON document instead of text");
    m_app->footer(kFooter);
    m_app->require_subcommand(1);
    m_app->fallthrough();
}

CCommandLine::~CCommandLine() = default;

CCommand CCommandLine::Add(const std::string& name, const std::string& what, const std::string& details,
                           CommandAction action)
{
    CLI::App* const command = m_app->add_subcommand(name, what);
    command->footer(details + kCommandFooter);
    m_actions[command] = std::move(action);
    return CCommand(*command);
}

int CCommandLine::Run(int argumentCount, const char* const* arguments)
{
    const bool json = Contains(argumentCount, arguments, "--json");
    try
    {
        const std::vector<const char*> understood = Understood(argumentCount, arguments);
        m_app->parse(static_cast<int>(understood.size()), understood.data());
        return Finished(RunChosen());
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success) &&
            m_app->remaining(true).empty())
        {
            Answer(error);
            return Finished(epsDone);
        }
        TellFailure(CFailure(epsUsage, Misunderstood(error)), json);
        return epsUsage;
    }
    catch (const CFailure& failure)
    {
        TellFailure(failure, json);
        return failure.Status();
    }
    catch (const std::exception& error)
    {
        TellFailure(CFailure(epsNo, error.what()), json);
        return epsNo;
    }
}

// Prints help or version.
void CCommandLine::Answer(const CLI::ParseError& error) const
{
    if (dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr)
        std::cout << FittedHelp(m_app->help(), OutputWidth());
    else
        m_app->exit(error);
}

bool CCommandLine::NamesNoCommand() const
{
    const std::vector<std::string> unknown = m_app->remaining(true);
    return m_app->get_subcommands().empty() && !unknown.empty() && !IsOption(unknown.front());
}

// What is wrong with the command line, with the nearest right name of an option or a command.
std::string CCommandLine::Misunderstood(const CLI::ParseError& error) const
{
    const std::vector<std::string> unknown = m_app->remaining(true);
    if (!unknown.empty() && IsOption(unknown.front()))
        return UnknownName("option", unknown.front().substr(0, unknown.front().find('=')), OptionNames());
    if (NamesNoCommand())
        return UnknownName("command", unknown.front(), CommandNames());
    // help that is asked for is no reason to pass over what is wrong beside it
    const bool answer = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    return std::string(answer ? CLI::ExtrasError(unknown).what() : error.what()) + "; see --help";
}

std::vector<std::string> CCommandLine::CommandNames() const
{
    std::vector<std::string> names;
    for (const auto& action : m_actions)
        names.push_back(action.first->get_name());
    return names;
}

std::vector<std::string> CCommandLine::OptionNames() const
{
    std::vector<std::string> names;
    AddOptionNames(*m_app, names);
    for (const CLI::App* const command : m_app->get_subcommands())
        AddOptionNames(*command, names);
    return names;
}

EProgramStatus CCommandLine::RunChosen()
{
    for (const char* const name : kDirectoryOptions)
    {
        const CLI::Option& option = *m_app->get_option(name);
        if (option.count() > 0 && option.as<std::string>().empty())
            throw NoDirectory(name);
    }
    const SSettings settings = ResolvedSettings(m_configuration, m_runDirectory, m_json);
    return m_actions.at(m_app->get_subcommands().front())(settings);
}

} // namespace Faultkeeper::Apps
