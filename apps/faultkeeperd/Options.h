#ifndef FAULTKEEPER_FAULTKEEPERD_OPTIONS_H
#define FAULTKEEPER_FAULTKEEPERD_OPTIONS_H

#include <string>

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

private:
    int m_exitStatus;
    std::string m_configuration;
    std::string m_runDirectory;
    unsigned short m_port;
};

} // namespace Faultkeeper::Apps

#endif
