#ifndef FAULTKEEPERCTL_SETTINGS_H
#define FAULTKEEPERCTL_SETTINGS_H

#include <memory>
#include <stdexcept>
#include <string>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// What the program's exit status says. Scripts rely on the numbers.
enum EProgramStatus : int
{
    epsDone = 0,
    epsNo = 1,      ///< the answer is no, or something was found wrong
    epsUsage = 2,   ///< the command line cannot be understood
    epsNoOwner = 3, ///< nobody owns the faults, or the owner is not ready
};

/// Ends the command: the message goes to standard error, the status to whoever started the program.
class CFailure : public std::runtime_error
{
public:
    CFailure(EProgramStatus status, const std::string& message)
        : std::runtime_error(message), m_status(status)
    {
    }
    EProgramStatus Status() const { return m_status; }

private:
    EProgramStatus m_status;
};

/// Tells a failure on standard error, and with `json` as a document on standard output: "error", "status".
void TellFailure(const CFailure& failure, bool json);

/// The options that hold for every command. Paths are resolved before any command changes the working
/// directory.
struct SSettings
{
    std::string configuration; ///< absolute, with a slash at its end
    bool configured = false;   ///< named by option or environment, or there is one in the usual place
    std::string runDirectory;  ///< absolute
    bool json = false;
};

/// Takes the options as given, "" for one that was not, and fills in what is usual.
SSettings ResolvedSettings(const std::string& configuration, const std::string& runDirectory, bool json);

/// Checks every file of the configuration and loads it. What is wrong with the files goes to standard error,
/// all of it, as "file:line:column: ...".
/// @throws CFailure (epsNo) if it cannot be used
/// A broken rule of the definitions ends the program with the library's own message and status epsNo.
/// @param instead  borrowed: thrown or told, with its status, in place of the configuration's own failure
std::unique_ptr<CErrorDatabase> LoadConfiguration(const SSettings& settings,
                                                  const CFailure* instead = nullptr);

/// Makes the run directory the working directory, so that table and lock are found.
/// @throws CFailure (epsNoOwner)
void EnterRunDirectory(const SSettings& settings);

} // namespace Faultkeeper::Apps

#endif
