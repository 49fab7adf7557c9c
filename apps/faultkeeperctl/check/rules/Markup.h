#ifndef FAULTKEEPERCTL_CHECK_RULES_MARKUP_H
#define FAULTKEEPERCTL_CHECK_RULES_MARKUP_H

#include <string>

namespace Faultkeeper::Apps
{

/// What a screen shows as it stands, although the author meant something else by it: the first tag, beginning
/// of a comment or of raw text, declaration, entity or escape; "" if there is none. Comparisons such as
/// "a <b and c> d" are none. Cost: at most two thousand characters are looked at for each one.
std::string MarkupIn(const std::string& text);

} // namespace Faultkeeper::Apps

#endif
