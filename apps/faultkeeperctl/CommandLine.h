#ifndef FAULTKEEPERCTL_COMMANDLINE_H
#define FAULTKEEPERCTL_COMMANDLINE_H

#include "faultkeeperctl/Settings.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
class ParseError;
} // namespace CLI

namespace Faultkeeper::Apps
{

/// What a command does once the command line is understood.
typedef std::function<EProgramStatus(const SSettings&)> CommandAction;

/// A command that was added, for its own arguments and flags. Where they are stored must outlive the command
/// line.
class CCommand
{
public:
    explicit CCommand(CLI::App& app) : m_app(app) {}

    /// Adds an argument that must be given.
    /// @param value  borrowed
    void Argument(const std::string& name, std::string& value, const std::string& what);

    /// Adds an argument that may be left out, but not be empty.
    /// @param value  borrowed; as it is if the argument is not given
    void OptionalArgument(const std::string& name, std::string& value, const std::string& what);

    /// Adds an argument of several words.
    /// @param values    borrowed
    /// @param required  whether there must be at least one
    void Words(const std::string& name, std::vector<std::string>& values, bool required,
               const std::string& what);

    /// @param name   with its dashes
    /// @param value  borrowed; true if the flag is given
    void Flag(const std::string& name, bool& value, const std::string& what);

    /// Adds an option that takes a text, which must not be empty.
    /// @param value  borrowed; untouched if the option is not given
    /// @param kind   what the text is, for help: "FILE"
    void Text(const std::string& name, std::string& value, const std::string& kind, const std::string& what);

    /// Adds an option that takes a file's path; a path without a name is refused.
    /// @param value  borrowed; untouched if the option is not given
    void File(const std::string& name, std::string& value, const std::string& what);

    /// Adds an option that takes a number.
    /// @param value  borrowed; what it holds is used if the option is not given
    /// @param most   the greatest number that is taken; the least is 0
    void Number(const std::string& name, int& value, int most, const std::string& what);

    /// Adds a flag without which the command does nothing.
    void RequiredFlag(const std::string& name, const std::string& what);

private:
    CLI::App& m_app; // not owned
};

/// The program's commands and the options that hold for all of them.
class CCommandLine
{
public:
    CCommandLine();
    ~CCommandLine();
    CCommandLine(const CCommandLine&) = delete;
    CCommandLine& operator=(const CCommandLine&) = delete;

    /// Adds a command.
    /// @param what     one line for the list of commands
    /// @param details  for the command's own help: what it prints, and an example
    CCommand Add(const std::string& name, const std::string& what, const std::string& details,
                 CommandAction action);

    /// Reads the command line and does what it says. Messages go to standard error.
    /// @return the program's exit status
    int Run(int argumentCount, const char* const* arguments);

private:
    EProgramStatus RunChosen();
    void Answer(const CLI::ParseError& error) const;
    bool NamesNoCommand() const;
    std::string Misunderstood(const CLI::ParseError& error) const;
    std::vector<std::string> CommandNames() const;
    std::vector<std::string> OptionNames() const;

    std::unique_ptr<CLI::App> m_app;
    std::string m_configuration;
    std::string m_runDirectory;
    bool m_json = false;
    std::map<const CLI::App*, CommandAction> m_actions;
};

} // namespace Faultkeeper::Apps

#endif
