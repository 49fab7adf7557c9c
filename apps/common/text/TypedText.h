#ifndef FAULTKEEPER_APPS_TYPEDTEXT_H
#define FAULTKEEPER_APPS_TYPEDTEXT_H

#include <cstddef>
#include <string>

/// Text from outside as it may stand in a message: it can neither steer a terminal nor fill it.
namespace Faultkeeper::Apps
{

/// The text with its control characters, and bytes that are no UTF-8, as "\xNN"; all else as it is.
std::string WithoutControls(const std::string& text);

/// What was typed, in quotation marks, as WithoutControls gives it and with a backslash before each backslash
/// and each quotation mark. Of a long text the first `mostBytes` bytes or a little less, never part of a
/// character, and "..." behind the marks.
std::string QuotedTyped(const std::string& text, std::size_t mostBytes = 200);

} // namespace Faultkeeper::Apps

#endif
