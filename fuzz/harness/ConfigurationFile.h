#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace Fuzz
{

/// Lets `load` load a configuration in which one file is the input. Where loading is refused by a rule, what
/// the owner asks the configuration before loading has to stand it, too.
/// @param prefix  of the configuration's files
/// @param file    the one that is made of the input
void LoadWith(const std::string& prefix, const std::string& file, const std::uint8_t* bytes, std::size_t size,
              const std::function<void()>& load);

} // namespace Fuzz
