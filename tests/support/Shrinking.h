#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace Support
{

/// The smallest case that can be reached from a failing one by steps that each leave it failing.
/// @param smaller  gives the cases that are one step smaller, the boldest steps first
/// @param fails    tells whether a case fails
template <typename Case, typename Smaller, typename Fails>
Case Shrunk(Case failing, const Smaller& smaller, const Fails& fails)
{
    for (bool shrinking = true; shrinking;)
    {
        shrinking = false;
        for (Case& candidate : smaller(failing))
        {
            if (!fails(candidate))
                continue;
            failing = std::move(candidate);
            shrinking = true;
            break;
        }
    }
    return failing;
}

/// The given elements without some that stand together: first half of them, then a quarter, down to one.
template <typename Element> std::vector<std::vector<Element>> Shortened(const std::vector<Element>& elements)
{
    std::vector<std::vector<Element>> result;
    for (std::size_t length = (elements.size() + 1) / 2; length > 0; length /= 2)
    {
        for (std::size_t first = 0; first + length <= elements.size(); first += length)
        {
            std::vector<Element> rest(elements);
            const auto begin = rest.begin() + static_cast<std::ptrdiff_t>(first);
            rest.erase(begin, begin + static_cast<std::ptrdiff_t>(length));
            result.push_back(rest);
        }
    }
    return result;
}

} // namespace Support
