#include "faultkeeperctl/strings/TextFile.h"

#include "faultkeeperctl/Settings.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kMarkOfUtf8 = "\xEF\xBB\xBF";
constexpr std::ptrdiff_t kColons = 3;

bool IsKeyLine(const std::string& line)
{
    return line.size() > 2 && line.front() == '[' && line.find(']') == line.size() - 1 &&
           line.rfind('[') == 0 && std::count(line.begin(), line.end(), ':') == kColons;
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
        else if (!line.empty())
            AddStray(line);
    }

    std::vector<STextRecord> Records() const { return m_records; }

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
    std::size_t start =
        content.compare(0, std::strlen(kMarkOfUtf8), kMarkOfUtf8) == 0 ? std::strlen(kMarkOfUtf8) : 0;
    while (start < content.size())
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
    std::error_code ignored;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (file)
        content << file.rdbuf(); // an empty file puts nothing in, which counts as failed
    if (!file || std::filesystem::is_directory(path, ignored))
        throw CFailure(epsNo,
                       "cannot read " + path + ": " +
                           std::strerror(std::filesystem::is_directory(path, ignored) ? EISDIR : errno));
    return ParsedTexts(content.str());
}

std::string TextFileContent(const std::vector<STextRecord>& records)
{
    std::string content;
    for (const STextRecord& record : records)
        content += "[" + record.key + "]\n" + record.text + "\n";
    return content;
}

} // namespace Faultkeeper::Apps
