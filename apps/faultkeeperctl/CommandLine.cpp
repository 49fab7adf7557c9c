#include "faultkeeperctl/CommandLine.h"

#include "common/NearestName.h"

#include <Faultkeeper/Version.h>

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
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

constexpr const char* kCommandFooter = "\n--config, --run-dir and --json may stand behind the command, too.";

void Complain(const std::string& message)
{
    std::cout.flush();
    std::fprintf(stderr, "faultkeeperctl: %s\n", message.c_str());
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
} // namespace

void CCommand::Argument(const std::string& name, std::string& value, const std::string& what)
{
    m_app.add_option(name, value, what)->required();
}

void CCommand::Flag(const std::string& name, bool& value, const std::string& what)
{
    m_app.add_flag(name, value, what);
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
    try
    {
        m_app->parse(argumentCount, arguments);
        return Finished(RunChosen());
    }
    catch (const CLI::ParseError& error)
    {
        return Misunderstood(error);
    }
    catch (const CFailure& failure)
    {
        Complain(failure.what());
        return failure.Status();
    }
    catch (const std::exception& error)
    {
        Complain(error.what());
        return epsNo;
    }
}

// Help and version are asked for in the same way as mistakes are told.
int CCommandLine::Misunderstood(const CLI::ParseError& error)
{
    std::vector<std::string> names;
    for (const CLI::App* const command : m_app->get_subcommands([](CLI::App*) { return true; }))
        names.push_back(command->get_name());
    const std::vector<std::string> unknown = m_app->remaining();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) &&
        m_app->get_subcommands().empty() && !unknown.empty())
    {
        const std::string nearest = NearestName(unknown.front(), names);
        Complain("no command is called \"" + unknown.front() + "\"" +
                 (nearest.empty() ? "; see --help" : ", the nearest is \"" + nearest + "\""));
        return epsUsage;
    }
    return m_app->exit(error) == 0 ? Finished(epsDone) : epsUsage;
}

EProgramStatus CCommandLine::RunChosen()
{
    const SSettings settings = ResolvedSettings(m_configuration, m_runDirectory, m_json);
    return m_actions.at(m_app->get_subcommands().front())(settings);
}

} // namespace Faultkeeper::Apps
