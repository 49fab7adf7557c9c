#include "common/text/NearestName.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kEdit = 4;
constexpr int kWrongCase = 1;
constexpr std::size_t kLongestTyped = 200; // the time goes with the product of the lengths

typedef std::vector<int> Row;

int Replacing(char typed, char right)
{
    if (typed == right)
        return 0;
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return lower(typed) == lower(right) ? kWrongCase : kEdit;
}

bool Swapped(const std::string& typed, const std::string& right, std::size_t i, std::size_t j)
{
    return i > 1 && j > 1 && Replacing(typed[i - 1], right[j - 2]) < kEdit &&
           Replacing(typed[i - 2], right[j - 1]) < kEdit;
}

// Row i of the table of distances between the first i letters of one text and the first j of the other.
Row NextRow(const std::string& typed, const std::string& right, std::size_t i, const Row& last,
            const Row& beforeLast)
{
    Row row(right.size() + 1, static_cast<int>(i) * kEdit);
    for (std::size_t j = 1; j <= right.size(); ++j)
    {
        row[j] = std::min(
            {last[j] + kEdit, row[j - 1] + kEdit, last[j - 1] + Replacing(typed[i - 1], right[j - 1])});
        if (Swapped(typed, right, i, j))
            row[j] = std::min(row[j], beforeLast[j - 2] + kEdit);
    }
    return row;
}
} // namespace

int TypingDistance(const std::string& typed, const std::string& right)
{
    Row beforeLast;
    Row last(right.size() + 1);
    for (std::size_t j = 0; j < last.size(); ++j)
        last[j] = static_cast<int>(j) * kEdit;
    for (std::size_t i = 1; i <= typed.size(); ++i)
    {
        Row row = NextRow(typed, right, i, last, beforeLast);
        beforeLast.swap(last);
        last.swap(row);
    }
    return last.back();
}

std::string NearestName(const std::string& typed, const std::vector<std::string>& candidates)
{
    if (typed.size() > kLongestTyped)
        return "";
    std::string nearest;
    int least = -1;
    for (const std::string& candidate : candidates)
    {
        const int distance = TypingDistance(typed, candidate);
        const std::size_t longer = std::max(typed.size(), candidate.size());
        const bool near = 2 * distance <= kEdit * static_cast<int>(longer);
        if (near && (least < 0 || distance < least))
        {
            nearest = candidate;
            least = distance;
        }
    }
    return nearest;
}

} // namespace Faultkeeper::Apps
