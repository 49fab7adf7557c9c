#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Support
{

/// What a program or a command takes, as its own help tells it: "--timeout=" for an option that takes
/// something, "--all" for one that does not, "ID" for an argument.
struct SProgramHelp
{
    std::set<std::string> options;
    std::set<std::string> arguments;
    std::vector<std::string> commands; ///< in the order of the help
};

/// Runs a program and reads what it prints.
/// @param command  path of the program, then its arguments
SProgramHelp HelpOf(const std::vector<std::string>& command);

} // namespace Support
