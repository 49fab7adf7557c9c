#ifndef FAULTKEEPERCTL_TEXTTABLE_H
#define FAULTKEEPERCTL_TEXTTABLE_H

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// Rows under a headline, in aligned columns; what is too long for the last column goes on below it.
class CTextTable
{
public:
    explicit CTextTable(const std::vector<std::string>& headline) : m_rows{headline} {}

    /// @param cells  as many as the headline has
    void AddRow(const std::vector<std::string>& cells) { m_rows.push_back(cells); }

    /// @param width  columns of the terminal
    std::string Text(int width) const;

private:
    std::vector<int> ColumnWidths() const;

    std::vector<std::vector<std::string>> m_rows; // the headline first
};

/// "Label      value" with further lines and values below the first one.
/// @param values  one line each, wrapped; none gives ""
std::string FieldText(const std::string& label, const std::vector<std::string>& values, int width);

} // namespace Faultkeeper::Apps

#endif
