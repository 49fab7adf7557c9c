#ifndef CONSOLE_CORE_UTILITIES_SPLITSTRING_H
#define CONSOLE_CORE_UTILITIES_SPLITSTRING_H

#include <Core/Export.h>

#include <string>
#include <vector>

namespace Core
{
namespace Utilities
{

/// The console's own splitter. Empty fields are kept; with a limit above 0 the last field has all the rest.
/// @return false, and `fields` as it was, for an empty separator
CORE_EXPORT bool SplitString(const std::string& text, const std::string& separator,
                             std::vector<std::string>& fields, int limit = 0);

} // namespace Utilities
} // namespace Core

#endif
