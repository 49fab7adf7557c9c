#pragma once

#include <string>
#include <vector>

namespace Support
{

/// The fenced blocks of a page in which "```kind" begins and "```" ends one, in the order of the page, each
/// line with its line feed. Fails the test if there is no such page.
std::vector<std::string> PageBlocks(const std::string& path, const std::string& kind);

} // namespace Support
