#ifndef FAULTKEEPER_APPS_NEARESTNAME_H
#define FAULTKEEPER_APPS_NEARESTNAME_H

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// How much typing lies between two texts: 4 for each letter left out, added, replaced or swapped with its
/// neighbour, 1 for each letter in the wrong case.
int TypingDistance(const std::string& typed, const std::string& right);

/// The candidate that `typed` was most probably meant to be, the first among equals; "" if so much differs
/// (half of the letters) that none of them can be meant, or more than 200 bytes were typed.
std::string NearestName(const std::string& typed, const std::vector<std::string>& candidates);

} // namespace Faultkeeper::Apps

#endif
