#ifndef FAULTKEEPERCTL_TYPEDKEY_H
#define FAULTKEEPERCTL_TYPEDKEY_H

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// The words of a command line as one text.
std::string JoinedWords(const std::vector<std::string>& words);

/// The state key that was typed, in one of its two forms: digits, or groups of letters as on the phone.
/// @param words  as they stood on the command line, groups apart or together
/// @return digits 0-9 and A-F, at least as many as name an error
/// @throws CFailure (epsUsage) that tells what is wrong, and in which group
std::string KeyFromTyped(const std::vector<std::string>& words);

} // namespace Faultkeeper::Apps

#endif
