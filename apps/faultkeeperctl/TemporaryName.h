#ifndef FAULTKEEPERCTL_TEMPORARYNAME_H
#define FAULTKEEPERCTL_TEMPORARYNAME_H

#include <string>

namespace Faultkeeper::Apps
{

/// Where to put something for a moment: a pattern in the user's folder for such things, or in /tmp if the one
/// that is set does not exist. Ends with the six letters that mkstemp(3) and mkdtemp(3) replace.
std::string TemporaryNamePattern();

} // namespace Faultkeeper::Apps

#endif
