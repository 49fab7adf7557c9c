#include "common/text/NearestName.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <limits>

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

/// Makes row i of the table of distances between the first i letters of one text and the first j of the
/// other.
void FillRow(const std::string& typed, const std::string& right, std::size_t i, const Row& last,
             const Row& beforeLast, Row& row)
{
    row[0] = static_cast<int>(i) * kEdit;
    for (std::size_t j = 1; j < row.size(); ++j)
    {
        row[j] = std::min(
            {last[j] + kEdit, row[j - 1] + kEdit, last[j - 1] + Replacing(typed[i - 1], right[j - 1])});
        if (Swapped(typed, right, i, j))
            row[j] = std::min(row[j], beforeLast[j - 2] + kEdit);
    }
}

/// The distance, or any number above `most` if it is larger than that. No number of the table is smaller than
/// the smallest one of a row above it: a swap, which passes over a row, costs as much as a letter there.
int DistanceUpTo(int most, const std::string& typed, const std::string& right)
{
    Row last(right.size() + 1);
    for (std::size_t j = 0; j < last.size(); ++j)
        last[j] = static_cast<int>(j) * kEdit;
    Row beforeLast(last.size());
    Row row(last.size());
    for (std::size_t i = 1; i <= typed.size(); ++i)
    {
        FillRow(typed, right, i, last, beforeLast, row);
        if (*std::min_element(row.begin(), row.end()) > most)
            return most + 1;
        beforeLast.swap(last);
        last.swap(row);
    }
    return last.back();
}

/// Each letter that one text has more than the other was left out.
bool DiffersMoreInLength(int most, const std::string& typed, const std::string& right)
{
    const std::size_t longer = std::max(typed.size(), right.size());
    return kEdit * static_cast<int>(longer - std::min(typed.size(), right.size())) > most;
}
} // namespace

int TypingDistance(const std::string& typed, const std::string& right)
{
    return DistanceUpTo(kEdit * static_cast<int>(typed.size() + right.size()), typed, right);
}

std::string NearestName(const std::string& typed, const std::vector<std::string>& candidates)
{
    if (typed.size() > kLongestTyped)
        return "";
    std::string nearest;
    int least = std::numeric_limits<int>::max();
    for (const std::string& candidate : candidates)
    {
        const int near = kEdit * static_cast<int>(std::max(typed.size(), candidate.size())) / 2;
        const int most = std::min(near, least - 1);
        if (DiffersMoreInLength(most, typed, candidate))
            continue;
        const int distance = DistanceUpTo(most, typed, candidate);
        if (distance > most)
            continue;
        nearest = candidate;
        least = distance;
    }
    return nearest;
}

} // namespace Faultkeeper::Apps
