#ifndef FAULTKEEPER_FAULTKEEPERD_OPTIONS_H
#define FAULTKEEPER_FAULTKEEPERD_OPTIONS_H

#include <cstddef>
#include <string>

namespace CLI
{
class App;
}

namespace Faultkeeper::Apps
{

/// What the owner was asked to do on its command line.
class COptions
{
public:
    static constexpr unsigned short kReportPort = 5300; ///< where every reporting process connects to

    /// Reads the command line. Help and version go to standard output, what is wrong to standard error.
    COptions(int argumentCount, const char* const* arguments);

    /// False if the program is done already: with help, the version, or a command line that is wrong.
    bool Run() const { return m_exitStatus < 0; }
    /// What to end with unless Run(): 0, or 2 for a wrong command line.
    int ExitStatus() const { return m_exitStatus; }

    /// As given, with a "/" at its end.
    const std::string& ConfigurationPrefix() const { return m_configuration; }
    /// As given; empty if it was not.
    const std::string& RunDirectory() const { return m_runDirectory; }
    /// 0 lets the system choose.
    unsigned short Port() const { return m_port; }

    /// Where to keep the state: a file as given, "none" for nowhere; empty if it was not given.
    const std::string& State() const { return m_state; }
    /// How many transitions the journal holds.
    std::size_t JournalLimit() const { return m_journalLimit; }
    /// Is each commit to wait until the medium holds it?
    bool Sync() const { return m_sync; }
    /// How many connections may be up.
    std::size_t Connections() const { return m_connections; }

private:
    void AddStoreOptions(CLI::App& app);

    int m_exitStatus;
    std::string m_configuration;
    std::string m_runDirectory;
    unsigned short m_port;
    std::string m_state;
    std::size_t m_journalLimit;
    bool m_sync = false;
    std::size_t m_connections;
};

} // namespace Faultkeeper::Apps

#endif
