#pragma once

#include <string>
#include <vector>

namespace Benchmarks
{

/// Reads each file whole and has Expat parse it, without handlers: what any reader of XML cannot do without.
/// @throws std::runtime_error if a file cannot be read or is not well-formed
void ParseWithoutHandlers(const std::vector<std::string>& files);

} // namespace Benchmarks
