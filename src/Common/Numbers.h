#ifndef FAULTKEEPER_COMMON_NUMBERS_H
#define FAULTKEEPER_COMMON_NUMBERS_H

#include <string>

namespace Faultkeeper
{

/// Reads the decimal number that a text starts with: white space is skipped, a sign accepted, and what
/// follows the digits ignored. Numbers beyond the range of int become its nearest end, on 32 and 64 bit
/// alike.
/// @param number  untouched if there is no digit
/// @return false if there is no digit
bool ReadNumber(const std::string& text, int& number);

/// The same, with 0 where there is no digit.
int NumberOrZero(const std::string& text);

} // namespace Faultkeeper

#endif
