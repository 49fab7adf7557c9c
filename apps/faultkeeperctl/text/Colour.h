#ifndef FAULTKEEPERCTL_COLOUR_H
#define FAULTKEEPERCTL_COLOUR_H

#include <string>

namespace Faultkeeper::Apps
{

/// Does whoever reads standard output want colours? A terminal that knows them does, unless $NO_COLOR is set.
bool ColoursWanted();

/// Does standard output go to a terminal that understands escapes?
bool TerminalKnowsEscapes();

/// The text in bold letters. Padding and wrapping come before, since the escapes have no width.
std::string Bold(const std::string& text);

/// The text in the colour of an error's severity; of an unknown one as it is.
/// @param severity  0..3
std::string InSeverityColour(const std::string& text, int severity);

} // namespace Faultkeeper::Apps

#endif
