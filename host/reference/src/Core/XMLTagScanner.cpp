#include "Core/XMLTagScanner.h"

#include <cstring>

namespace Core
{
namespace IO
{

namespace
{

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF"; // takes no column
constexpr std::size_t kByteOrderMarkBytes = 3;
constexpr const char* kSpace = " \t\r\n";

bool ContinuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

XMLTagScanner::XMLTagScanner(const std::string& text) : m_text(text)
{
    MoveTo(0);
}

void XMLTagScanner::MoveTo(std::size_t byte)
{
    if (byte < m_byte || m_byte == 0)
    {
        m_byte = m_text.compare(0, kByteOrderMarkBytes, kByteOrderMark) == 0 ? kByteOrderMarkBytes : 0;
        m_line = 1;
        m_column = 1;
    }
    while (m_byte < byte && !AtEnd())
        Step();
}

bool XMLTagScanner::NextAttribute(std::string& name, Position& position)
{
    if (AtAnyOf("<"))
        SkipUpTo(" \t\r\n/>");
    SkipAnyOf(kSpace);
    if (AtEnd() || AtAnyOf("/>"))
        return false;
    position = Here();
    const std::size_t begin = m_byte;
    SkipUpTo(" \t\r\n=");
    name = m_text.substr(begin, m_byte - begin);
    SkipValue();
    return true;
}

bool XMLTagScanner::AtAnyOf(const char* characters) const
{
    return !AtEnd() && m_text[m_byte] != '\0' && std::strchr(characters, m_text[m_byte]) != nullptr;
}

void XMLTagScanner::Step()
{
    const char byte = m_text[m_byte];
    ++m_byte;
    if (byte == '\n' || (byte == '\r' && !AtAnyOf("\n")))
    {
        ++m_line;
        m_column = 1;
    }
    else if (m_singleByte || !ContinuesCharacter(byte))
        ++m_column;
}

void XMLTagScanner::SkipAnyOf(const char* characters)
{
    while (AtAnyOf(characters))
        Step();
}

void XMLTagScanner::SkipUpTo(const char* characters)
{
    while (!AtEnd() && !AtAnyOf(characters))
        Step();
}

void XMLTagScanner::SkipValue()
{
    SkipUpTo("\"'");
    if (AtEnd())
        return;
    const char quote[] = {m_text[m_byte], '\0'};
    Step();
    SkipUpTo(quote);
    if (!AtEnd())
        Step();
}

} // namespace IO
} // namespace Core
