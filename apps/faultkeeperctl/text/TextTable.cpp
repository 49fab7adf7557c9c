#include "faultkeeperctl/text/TextTable.h"

#include "faultkeeperctl/text/TextWidth.h"

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kGap = 2;
constexpr int kLeastLastColumn = 20;
constexpr int kIndent = 4;
constexpr int kLabelWidth = 11;

std::string Blanks(int count)
{
    return std::string(static_cast<std::size_t>(count), ' ');
}

// Puts wrapped lines behind a beginning, and blanks of the same width in front of all but the first.
std::string Continued(const std::string& beginning, const std::vector<std::string>& lines)
{
    const std::string blanks = Blanks(DisplayWidth(beginning));
    std::string text;
    for (const std::string& line : lines)
    {
        std::string whole = (text.empty() ? beginning : blanks) + line;
        whole.erase(whole.find_last_not_of(' ') + 1);
        text += whole + "\n";
    }
    return text;
}
} // namespace

std::vector<int> CTextTable::ColumnWidths() const
{
    std::vector<int> widths(m_rows.front().size(), 0);
    for (const std::vector<std::string>& row : m_rows)
    {
        for (std::size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], DisplayWidth(row[column]));
    }
    return widths;
}

std::string CTextTable::Text(int width) const
{
    const std::vector<int> widths = ColumnWidths();
    std::string text;
    for (const std::vector<std::string>& row : m_rows)
    {
        std::string beginning;
        for (std::size_t column = 0; column + 1 < row.size(); ++column)
            beginning += Padded(row[column], widths[column] + kGap);
        text += Continued(beginning,
                          Wrapped(row.back(), std::max(width - DisplayWidth(beginning), kLeastLastColumn)));
    }
    return text;
}

std::string FieldText(const std::string& label, const std::vector<std::string>& values, int width)
{
    const std::string beginning = Blanks(kIndent) + Padded(label, kLabelWidth);
    std::vector<std::string> lines;
    for (const std::string& value : values)
    {
        for (const std::string& line :
             Wrapped(value, std::max(width - kIndent - kLabelWidth, kLeastLastColumn)))
            lines.push_back(line);
    }
    return Continued(beginning, lines);
}

} // namespace Faultkeeper::Apps
