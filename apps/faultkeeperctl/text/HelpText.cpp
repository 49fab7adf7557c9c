#include "faultkeeperctl/text/HelpText.h"

#include "faultkeeperctl/text/TextWidth.h"

#include <cstddef>
#include <sstream>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kDescriptionColumn = 30; // where the parser puts descriptions
constexpr std::size_t kGoesOn = 60;            // a shorter line of prose is the end of it
constexpr int kLeastDescription = 20;
constexpr std::size_t kNarrowColumn = 6; // below what is described, where that leaves no room beside it

bool StartsWith(const std::string& line, const char* beginning)
{
    return line.rfind(beginning, 0) == 0;
}

// What is laid out by lines and columns, or stands on a line of its own.
bool IsProse(const std::string& line)
{
    return !line.empty() && line.front() != ' ' && !StartsWith(line, "Example:") &&
           !StartsWith(line, "Usage:") && !StartsWith(line, "Exit status") &&
           !StartsWith(line, "faultkeeperctl ") && !StartsWith(line, "--");
}

std::vector<std::string> JoinedLines(const std::string& help)
{
    std::vector<std::string> lines;
    std::istringstream stream(help);
    bool goesOn = false;
    for (std::string line; std::getline(stream, line);)
    {
        if (goesOn && IsProse(line))
            lines.back() += " " + line;
        else
            lines.push_back(line);
        goesOn = line.size() > kGoesOn && (IsProse(line) || StartsWith(line, "Exit status"));
    }
    return lines;
}

// An option or command with its description behind it.
bool HasDescription(const std::string& line)
{
    return line.size() > kDescriptionColumn && line.front() == ' ' && line[kDescriptionColumn - 1] == ' ' &&
           line[kDescriptionColumn] != ' ';
}

std::string Fitted(const std::string& line, int width)
{
    if (DisplayWidth(line) <= width)
        return line + "\n";
    std::size_t column = HasDescription(line) ? kDescriptionColumn : 0;
    std::string beginning = line.substr(0, column);
    const std::string description = line.substr(column);
    std::string text;
    if (column > 0 && width < static_cast<int>(column) + kLeastDescription)
    {
        const std::size_t end = beginning.find_last_not_of(' ');
        text = end == std::string::npos ? "" : Fitted(beginning.substr(0, end + 1), width);
        column = kNarrowColumn;
        beginning.assign(column, ' ');
    }
    for (const std::string& part : Wrapped(description, width - static_cast<int>(column)))
    {
        text += beginning + part + "\n";
        beginning.assign(column, ' ');
    }
    return text;
}
} // namespace

std::string FittedHelp(const std::string& help, int width)
{
    std::string text;
    for (const std::string& line : JoinedLines(help))
        text += Fitted(line, width);
    return text;
}

} // namespace Faultkeeper::Apps
