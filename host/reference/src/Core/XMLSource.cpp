#include "Core/XMLSource.h"

#include "Core/XMLTagScanner.h"

#include <algorithm>

namespace Core
{
namespace IO
{

namespace
{

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF"; // takes no column
constexpr std::size_t kByteOrderMarkBytes = 3;

bool ContinuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

XMLSource::Position XMLSource::PositionOf(std::size_t byte) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_lines.empty())
        m_lines = FindLines();
    const std::size_t end = std::min(byte, m_text.size());
    const auto next = std::upper_bound(m_lines.begin() + 1, m_lines.end(), end);
    const std::size_t begin = *(next - 1);
    // a file may be one long line, of which every place is asked for
    if (m_lastByte < begin || m_lastByte > end)
    {
        m_lastByte = begin;
        m_lastColumn = 1;
    }
    for (; m_lastByte < end; ++m_lastByte)
        m_lastColumn += m_singleByte || !ContinuesCharacter(m_text[m_lastByte]) ? 1 : 0;
    return {static_cast<int>(next - m_lines.begin()), m_lastColumn};
}

std::vector<std::size_t> XMLSource::FindLines() const
{
    const bool marked = m_text.compare(0, kByteOrderMarkBytes, kByteOrderMark) == 0;
    std::vector<std::size_t> lines(1, marked ? kByteOrderMarkBytes : 0);
    for (std::size_t end = m_text.find_first_of("\r\n"); end != std::string::npos;
         end = m_text.find_first_of("\r\n", end))
    {
        end += m_text.compare(end, 2, "\r\n") == 0 ? 2 : 1;
        lines.push_back(end);
    }
    return lines;
}

bool XMLSource::FindAttribute(std::size_t tag, const std::string& name, Position& position) const
{
    XMLTagScanner scanner(m_text, tag);
    std::string found;
    std::size_t byte = 0;
    while (scanner.NextAttribute(found, byte))
    {
        if (AsUTF8(found) != name)
            continue;
        position = PositionOf(byte);
        return true;
    }
    return false;
}

/// Of the encodings with one byte a character, ISO-8859-1 has the first 256 of Unicode.
std::string XMLSource::AsUTF8(const std::string& name) const
{
    if (!m_singleByte)
        return name;
    std::string result;
    for (const char byte : name)
    {
        const unsigned value = static_cast<unsigned char>(byte);
        if (value >= 0x80)
            result += static_cast<char>(0xC0 | value >> 6);
        result += static_cast<char>(value < 0x80 ? value : 0x80 | (value & 0x3F));
    }
    return result;
}

} // namespace IO
} // namespace Core
