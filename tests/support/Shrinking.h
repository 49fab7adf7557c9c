#pragma once

#include <cstddef>
#include <string>
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

/// Looks for a difference in so many cases.
/// @param make        makes a case
/// @param smaller     as for Shrunk
/// @param difference  tells how a case differs from what it should be, empty if it does not
/// @param shown       describes a case
/// @return the round and the smallest case that was found to differ, with its difference; empty if none does
template <typename Make, typename Smaller, typename Difference, typename Shown>
std::string SmallestDifference(int rounds, const Make& make, const Smaller& smaller,
                               const Difference& difference, const Shown& shown)
{
    for (int round = 0; round < rounds; ++round)
    {
        const auto tried = make();
        if (difference(tried).empty())
            continue;
        const auto smallest =
            Shrunk(tried, smaller, [&](const auto& each) { return !difference(each).empty(); });
        return "in round " + std::to_string(round) + ", smallest case:\n" + shown(smallest) +
               difference(smallest);
    }
    return "";
}

} // namespace Support
