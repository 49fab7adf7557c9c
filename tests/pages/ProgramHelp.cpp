#include "pages/ProgramHelp.h"

#include "system/ChildProcess.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Support
{

namespace
{
/// A line of a list in the help: the names, and what stands one blank behind them; the description is further
/// away, or on the next line.
struct SHelpLine
{
    std::string names;
    std::string kind;
};

SHelpLine HelpLine(const std::string& line)
{
    const std::size_t end = line.find(' ', 2);
    SHelpLine read{line.substr(2, end - 2), ""};
    if (end != std::string::npos && line.compare(end, 2, "  ") != 0)
        read.kind = line.substr(end + 1, line.find("  ", end) - end - 1);
    return read;
}

void AddOptions(const SHelpLine& line, std::set<std::string>& options)
{
    const std::string mark = line.kind.empty() || line.kind == "REQUIRED" ? "" : "=";
    std::istringstream names(line.names);
    for (std::string name; std::getline(names, name, ',');)
        options.insert(name + mark);
}
} // namespace

SProgramHelp HelpOf(const std::vector<std::string>& command)
{
    CProgram program(command);
    EXPECT_EQ(program.Wait(), 0) << command.back() << ": " << program.Errors();
    SProgramHelp help;
    std::istringstream lines(program.Output());
    std::string list;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.compare(0, 2, "  ") != 0)
            list = line;
        else if (line.size() < 3 || line[2] == ' ')
            continue; // goes on with a description
        else if (list == "Options:")
            AddOptions(HelpLine(line), help.options);
        else if (list == "Positionals:")
            help.arguments.insert(HelpLine(line).names);
        else if (list == "Subcommands:")
            help.commands.push_back(HelpLine(line).names);
    }
    return help;
}

} // namespace Support
