#pragma once

#include <string>
#include <vector>

namespace Support
{

/// What a program that was started on a terminal of its own has shown there.
struct SShown
{
    int status = -1;
    std::string text; // standard output and standard error as the terminal got them, lines ending "\r\n"
};

/// Runs a program on a terminal so many columns wide.
/// @param command  path of the program, then its arguments
SShown ShownOnTerminal(const std::vector<std::string>& command, unsigned short columns);

} // namespace Support
