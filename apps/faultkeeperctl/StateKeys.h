#ifndef FAULTKEEPERCTL_STATEKEYS_H
#define FAULTKEEPERCTL_STATEKEYS_H

#include <string>

namespace Faultkeeper::Apps
{

/// A state key as people type it, in capital letters: keys are read out on the phone, where small ones mean
/// the same. What is no key is none with any configuration, so nothing needs to be loaded before.
/// @throws CFailure (epsUsage)
std::string CheckedKey(const std::string& typed);

} // namespace Faultkeeper::Apps

#endif
