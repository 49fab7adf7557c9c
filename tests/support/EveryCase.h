#pragma once

#include <cstdlib>
#include <string>

namespace Support
{

/// Is a test to try every case, also those that take minutes? FAULTKEEPER_TEST_FULL in the environment, 1 or
/// 0, decides that for all of them.
/// @param usual  if it is not there
inline bool EveryCase(bool usual)
{
    const char* const wish = std::getenv("FAULTKEEPER_TEST_FULL");
    return wish == nullptr ? usual : std::string(wish) == "1";
}

} // namespace Support
