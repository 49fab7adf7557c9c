#pragma once

#include <cstddef>
#include <cstdint>

namespace Fuzz
{

/// Makes a new input out of one that is meant to be XML: mostly by copying, removing and exchanging whole
/// elements and attribute values, so that it stays well-formed and reaches what lies behind the parser;
/// sometimes byte by byte.
/// @param bytes  holds `size` bytes, replaced by at most `room`
/// @return how many bytes there are then
std::size_t MutateXml(std::uint8_t* bytes, std::size_t size, std::size_t room, unsigned seed);

} // namespace Fuzz
