#include <Core/Utilities/SplitString.h>

#include <cstddef>

namespace Core
{
namespace Utilities
{

bool SplitString(const std::string& text, const std::string& separator, std::vector<std::string>& fields,
                 int limit)
{
    if (separator.empty())
        return false;
    std::vector<std::string> found; // apart from `fields`, which may hold `text`
    std::size_t begin = 0;
    for (std::size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, begin))
    {
        if (limit > 0 && found.size() + 1 >= static_cast<std::size_t>(limit))
            break;
        found.push_back(text.substr(begin, end - begin));
        begin = end + separator.size();
    }
    found.push_back(text.substr(begin));
    fields.swap(found);
    return true;
}

} // namespace Utilities
} // namespace Core
