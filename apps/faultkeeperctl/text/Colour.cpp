#include "faultkeeperctl/text/Colour.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kPlain = "\x1b[0m";
constexpr const char* kBold = "\x1b[1m";
// Of severities from low to critical: cyan, yellow, red, bold red.
constexpr const char* kSeverityColours[] = {"\x1b[36m", "\x1b[33m", "\x1b[31m", "\x1b[1;31m"};
} // namespace

bool ColoursWanted()
{
    const char* const noColour = std::getenv("NO_COLOR");
    return TerminalKnowsEscapes() && (noColour == nullptr || *noColour == '\0');
}

bool TerminalKnowsEscapes()
{
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && terminal != nullptr && *terminal != '\0' &&
           std::strcmp(terminal, "dumb") != 0;
}

std::string Bold(const std::string& text)
{
    return kBold + text + kPlain;
}

std::string InSeverityColour(const std::string& text, int severity)
{
    return severity < 0 || severity >= static_cast<int>(std::size(kSeverityColours))
               ? text
               : kSeverityColours[severity] + text + kPlain;
}

} // namespace Faultkeeper::Apps
