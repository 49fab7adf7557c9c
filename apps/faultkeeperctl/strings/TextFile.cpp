#include "faultkeeperctl/strings/TextFile.h"

#include "faultkeeperctl/typed/FileText.h"

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::ptrdiff_t kColons = 3;
constexpr const char* kBlanks = " \t\n";

bool IsKeyLine(const std::string& line)
{
    return line.size() > 2 && line.front() == '[' && line.find(']') == line.size() - 1 &&
           line.rfind('[') == 0 && std::count(line.begin(), line.end(), ':') == kColons;
}

// Blank lines between the records are for people.
std::string WithoutBlankEnd(const std::string& text)
{
    const std::size_t last = text.find_last_not_of(kBlanks);
    return last == std::string::npos ? text.substr(0, text.find('\n'))
                                     : text.substr(0, text.find('\n', last));
}

class CRecordBuilder
{
public:
    void AddLine(const std::string& line)
    {
        ++m_line;
        if (IsKeyLine(line))
        {
            m_records.push_back({line.substr(1, line.size() - 2), "", m_line});
            m_textLines = 0;
        }
        else if (!m_records.empty())
            m_records.back().text += (m_textLines++ == 0 ? "" : "\n") + line;
        else if (line.find_first_not_of(kBlanks) != std::string::npos)
            AddStray(line);
    }

    std::vector<STextRecord> Records() const
    {
        std::vector<STextRecord> records = m_records;
        for (STextRecord& record : records)
            record.text = WithoutBlankEnd(record.text);
        return records;
    }

private:
    void AddStray(const std::string& line)
    {
        m_records.push_back({"", line, m_line});
        m_textLines = 1;
    }

    std::vector<STextRecord> m_records;
    int m_line = 0;
    int m_textLines = 0;
};
} // namespace

std::vector<STextRecord> ParsedTexts(const std::string& content)
{
    CRecordBuilder builder;
    for (std::size_t start = 0; start < content.size();)
    {
        const std::size_t end = std::min(content.find('\n', start), content.size());
        std::string line = content.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        builder.AddLine(line);
        start = end + 1;
    }
    return builder.Records();
}

std::vector<STextRecord> TextsOfFile(const std::string& path)
{
    return ParsedTexts(FileText(path));
}

std::string TextFileContent(const std::vector<STextRecord>& records)
{
    std::string content;
    for (const STextRecord& record : records)
        content += "[" + record.key + "]\n" + record.text + "\n";
    return content;
}

} // namespace Faultkeeper::Apps
