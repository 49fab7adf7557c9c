#ifndef FAULTKEEPERCTL_HELPTEXT_H
#define FAULTKEEPERCTL_HELPTEXT_H

#include <string>

namespace Faultkeeper::Apps
{

/// Help as it fits a terminal: descriptions go on below where they begin, and sentences, which the program's
/// source breaks where it likes, are broken anew. Examples stay on lines of their own.
std::string FittedHelp(const std::string& help, int width);

} // namespace Faultkeeper::Apps

#endif
