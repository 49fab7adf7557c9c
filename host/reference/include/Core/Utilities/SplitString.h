#ifndef CORE_UTILITIES_SPLITSTRING_H
#define CORE_UTILITIES_SPLITSTRING_H

#include <Core/Export.h>

#include <string>
#include <vector>

namespace Core
{
namespace Utilities
{

/// Splits a text wherever the separator stands, from left to right.
///
/// Fields may be empty: a text of n separators has n + 1 fields, so an empty text has one empty field.
/// @param separator  one character or several
/// @param fields     replaced by the fields in their order; may be where `text` itself comes from
/// @param limit      most fields wanted, the last of them holding the rest of the text, separators and all; 0
/// or
///                   less: no limit
/// @return false if the separator is empty; `fields` is untouched then
CORE_EXPORT bool SplitString(const std::string& text, const std::string& separator,
                             std::vector<std::string>& fields, int limit = 0);

} // namespace Utilities
} // namespace Core

#endif
