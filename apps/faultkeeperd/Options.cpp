#include "faultkeeperd/Options.h"

#include "faultkeeperd/Log.h"
#include "faultkeeperd/store/StateStore.h"

#include <Faultkeeper/Version.h>

#include <MPI/MPISocketServerC.h>

#include <CLI/CLI.hpp>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kUsageError = 2;
constexpr int kHighestPort = 65535;
constexpr std::size_t kLongestJournal = 100000000;
constexpr std::size_t kMostConnections = 100000;

constexpr const char* kDescription =
    "Owns the console's error state: receives what processes report, applies it to the\n"
    "error database and publishes every error's state in shared memory.";
constexpr const char* kFooter =
    "Ends on SIGTERM, SIGINT and SIGHUP (not on SIGHUP if started by nohup) after it has\n"
    "published what is pending. Exit status: 0 ended as told; 1 could not start or go on;\n"
    "2 wrong command line; 134 (SIGABRT) the configuration breaks a rule of the database,\n"
    "which the last line on standard error names.";
} // namespace

COptions::COptions(int argumentCount, const char* const* arguments)
    : m_exitStatus(-1), m_port(kReportPort), m_journalLimit(SStoreSettings::kUsualJournalLimit),
      m_connections(MPISocketServerC::kMaximumConnections)
{
    CLI::App app(kDescription, "faultkeeperd");
    app.footer(kFooter);
    app.set_version_flag("--version", "faultkeeperd " FAULTKEEPER_VERSION);
    app.add_option("--config", m_configuration, "Directory of FaultkeeperConfig.xml and its module files")
        ->required()
        ->type_name("DIR");
    app.add_option("--run-dir", m_runDirectory,
                   "Directory that the shared table is keyed from; must exist. Without it:\n"
                   "$FAULTKEEPER_RUN_DIR, else /run/faultkeeper if there is one, else the\n"
                   "current directory")
        ->type_name("DIR");
    app.add_option("--port", m_port, "Port to listen on; for tests only, as reporters always use 5300")
        ->check(CLI::Range(0, kHighestPort))
        ->type_name("N");
    AddStoreOptions(app);
    try
    {
        app.parse(argumentCount, arguments);
    }
    catch (const CLI::ParseError& failure)
    {
        m_exitStatus = failure.get_exit_code() == 0 ? 0 : kUsageError;
        if (m_exitStatus == 0)
            app.exit(failure); // prints the help or the version that was asked for
        else
            LogError(failure.what() + std::string("; faultkeeperd --help tells more"));
    }
    if (m_configuration.empty() || m_configuration.back() != '/')
        m_configuration += '/';
}

void COptions::AddStoreOptions(CLI::App& app)
{
    app.add_option("--state", m_state,
                   "File that keeps the state over the owner's end, or \"none\". Without it: faultkeeper.db\n"
                   "in the run directory. A file that cannot be written stops no report: it is logged,\n"
                   "and used as soon as it can be")
        ->type_name("FILE");
    app.add_option("--journal-limit", m_journalLimit,
                   "Transitions that the file remembers; the oldest go first")
        ->check(CLI::Range(std::size_t{0}, kLongestJournal))
        ->capture_default_str()
        ->type_name("N");
    app.add_flag("--sync", m_sync,
                 "Acknowledge a report only when the medium holds it. Without it a report survives\n"
                 "every end of the owner, but a loss of power may cost those of the last seconds");
    app.add_option("--connections", m_connections, "Reporters that may be connected at the same time")
        ->check(CLI::Range(std::size_t{1}, kMostConnections))
        ->capture_default_str()
        ->type_name("N");
}

} // namespace Faultkeeper::Apps
