#include <Core/Utilities/SplitString.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Core
{
namespace Utilities
{

namespace
{
/// Takes what stands in front of the separator off the rest.
std::string_view TakeField(std::string_view& rest, std::string_view separator)
{
    const std::size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view field = rest.substr(0, end);
    rest.remove_prefix(std::min(end + separator.size(), rest.size()));
    return field;
}
} // namespace

bool SplitString(const std::string& text, const std::string& separator, std::vector<std::string>& fields,
                 int limit)
{
    if (separator.empty())
        return false;
    std::vector<std::string> found;
    std::string_view rest(text);
    while (rest.find(separator) != std::string_view::npos &&
           (limit <= 0 || found.size() + 1 < static_cast<std::size_t>(limit)))
        found.emplace_back(TakeField(rest, separator));
    found.emplace_back(rest);
    fields.swap(found); // last of all: the text may be one of the fields
    return true;
}

} // namespace Utilities
} // namespace Core
