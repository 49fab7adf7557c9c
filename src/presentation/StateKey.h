#ifndef FAULTKEEPER_PRESENTATION_STATEKEY_H
#define FAULTKEEPER_PRESENTATION_STATEKEY_H

#include <cstddef>
#include <string>
#include <vector>

namespace Faultkeeper
{

/// A state key is a row of bits, written as upper-case hexadecimal digits:
///
///     bits 0..9    position of the top error in the shared table, most significant bit first
///     bits 10..    for each visited error, depth first, a bit for each trigger: 1 if it was active
///     at the end   zeros up to a multiple of eight
///
/// Example: position 5 without triggers is 0000000101 000000, the key 0140. Bits are handled as texts of "0"
/// and "1". People read keys out to support, so the form is never changed.

/// How many bits the position takes.
constexpr std::size_t kIndexBits = 10;

/// The bits of a position; only its low ten bits are kept, so that -1 is ten ones.
std::string IndexBits(int index);

/// The position that bits begin with. Of fewer than ten bits the last one counts as the lowest: "101" is 5
/// and no bits at all are 0.
/// @throws std::invalid_argument if one of them is neither "0" nor "1"
int IndexOfBits(const std::string& bits);

/// Joins the pieces, pads them and writes the key.
/// @throws std::invalid_argument if a piece holds anything but "0" and "1"
std::string PackStateKey(const std::vector<std::string>& pieces);

/// The bits of a key, four for each digit.
/// @throws std::invalid_argument if a character is none of 0-9 and A-F
std::string ExpandStateKey(const std::string& key);

} // namespace Faultkeeper

#endif
