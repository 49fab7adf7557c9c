#include "faultkeeperctl/text/Difference.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::vector<std::string> Lines;

constexpr std::size_t kAround = 3;
constexpr std::size_t kMostCells = std::size_t(1) << 23;
constexpr const char* kNoLineEnd = "\n\\ No newline at end of file";

/// One line of either text, marked " ", "-" or "+".
struct SMarked
{
    char mark;
    std::string line;
};

// A last line without an end is another one than the same line with one.
Lines Split(const std::string& text)
{
    Lines lines;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t end = text.find('\n', at);
        lines.push_back(text.substr(at, end - at) + (end == std::string::npos ? kNoLineEnd : ""));
        at = end == std::string::npos ? text.size() : end + 1;
    }
    return lines;
}

/// Lengths of the longest common subsequences of what is left of both from each pair of lines on.
class CCommonLengths
{
public:
    CCommonLengths(const Lines& before, const Lines& after)
        : m_columns(after.size() + 1), m_cells((before.size() + 1) * m_columns)
    {
        for (std::size_t i = before.size(); i-- > 0;)
        {
            for (std::size_t j = after.size(); j-- > 0;)
                m_cells[i * m_columns + j] =
                    before[i] == after[j] ? At(i + 1, j + 1) + 1 : std::max(At(i + 1, j), At(i, j + 1));
        }
    }

    std::uint32_t At(std::size_t i, std::size_t j) const { return m_cells[i * m_columns + j]; }

private:
    std::size_t m_columns;
    std::vector<std::uint32_t> m_cells;
};

void AddAll(std::vector<SMarked>& marked, char mark, const Lines& lines, std::size_t from, std::size_t end)
{
    for (std::size_t i = from; i < end; ++i)
        marked.push_back({mark, lines[i]});
}

void MarkMiddle(std::vector<SMarked>& marked, const Lines& before, const Lines& after)
{
    std::size_t i = 0;
    std::size_t j = 0;
    if (before.size() <= kMostCells / (after.size() + 1))
    {
        const CCommonLengths common(before, after);
        while (i < before.size() && j < after.size())
        {
            if (before[i] == after[j])
            {
                marked.push_back({' ', before[i++]});
                ++j;
            }
            else if (common.At(i + 1, j) >= common.At(i, j + 1))
                marked.push_back({'-', before[i++]});
            else
                marked.push_back({'+', after[j++]});
        }
    }
    AddAll(marked, '-', before, i, before.size());
    AddAll(marked, '+', after, j, after.size());
}

std::vector<SMarked> Marked(const Lines& before, const Lines& after)
{
    const std::size_t least = std::min(before.size(), after.size());
    const auto beginning = static_cast<std::ptrdiff_t>(least);
    const auto head =
        std::mismatch(before.begin(), before.begin() + beginning, after.begin()).first - before.begin();
    const auto rest = beginning - head;
    const auto tail =
        std::mismatch(before.rbegin(), before.rbegin() + rest, after.rbegin()).first - before.rbegin();
    const auto middle = [head, tail](const Lines& lines)
    { return Lines(lines.begin() + head, lines.end() - tail); };
    std::vector<SMarked> marked;
    AddAll(marked, ' ', before, 0, static_cast<std::size_t>(head));
    MarkMiddle(marked, middle(before), middle(after));
    AddAll(marked, ' ', before, before.size() - static_cast<std::size_t>(tail), before.size());
    return marked;
}

std::string Range(std::size_t first, std::size_t count)
{
    const std::size_t line = count == 0 ? first : first + 1; // nothing stands behind the line before it
    return std::to_string(line) + (count == 1 ? "" : "," + std::to_string(count));
}

/// Cuts the marked lines into places that are far enough apart.
class CPlaces
{
public:
    explicit CPlaces(const std::vector<SMarked>& marked) : m_marked(marked) {}

    Lines Listed()
    {
        Lines lines;
        for (std::size_t at = NextChange(0); at < m_marked.size();)
        {
            const std::size_t begin = at > kAround ? at - kAround : 0;
            std::size_t end = at + 1;
            at = NextChange(end);
            while (at < m_marked.size() && at - end <= 2 * kAround)
            {
                end = at + 1;
                at = NextChange(end);
            }
            AddPlace(lines, begin, std::min(end + kAround, m_marked.size()));
        }
        return lines;
    }

private:
    std::size_t NextChange(std::size_t at) const
    {
        while (at < m_marked.size() && m_marked[at].mark == ' ')
            ++at;
        return at;
    }

    std::size_t Count(std::size_t begin, std::size_t end, char without) const
    {
        return static_cast<std::size_t>(std::count_if(m_marked.begin() + static_cast<std::ptrdiff_t>(begin),
                                                      m_marked.begin() + static_cast<std::ptrdiff_t>(end),
                                                      [without](const SMarked& line)
                                                      { return line.mark != without; }));
    }

    void AddPlace(Lines& lines, std::size_t begin, std::size_t end) const
    {
        lines.push_back("@@ -" + Range(Count(0, begin, '+'), Count(begin, end, '+')) + " +" +
                        Range(Count(0, begin, '-'), Count(begin, end, '-')) + " @@");
        for (std::size_t i = begin; i < end; ++i)
            lines.push_back(m_marked[i].mark + m_marked[i].line);
    }

    const std::vector<SMarked>& m_marked;
};
} // namespace

std::vector<std::string> Difference(const std::string& beforeName, const std::string& before,
                                    const std::string& afterName, const std::string& after)
{
    if (before == after)
        return {};
    const std::vector<SMarked> marked = Marked(Split(before), Split(after));
    Lines lines = {"--- " + beforeName, "+++ " + afterName};
    const Lines places = CPlaces(marked).Listed();
    lines.insert(lines.end(), places.begin(), places.end());
    return lines;
}

} // namespace Faultkeeper::Apps
