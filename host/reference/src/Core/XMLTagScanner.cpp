#include "Core/XMLTagScanner.h"

#include <algorithm>
#include <cstring>

namespace Core
{
namespace IO
{

namespace
{

constexpr const char* kSpace = " \t\r\n";

} // namespace

bool XMLTagScanner::NextAttribute(std::string& name, std::size_t& byte)
{
    if (AtAnyOf("<"))
        SkipUpTo(" \t\r\n/>");
    SkipAnyOf(kSpace);
    if (AtEnd() || AtAnyOf("/>"))
        return false;
    byte = m_byte;
    SkipUpTo(" \t\r\n=");
    name = m_text.substr(byte, m_byte - byte);
    SkipValue();
    return true;
}

bool XMLTagScanner::AtAnyOf(const char* characters) const
{
    return !AtEnd() && m_text[m_byte] != '\0' && std::strchr(characters, m_text[m_byte]) != nullptr;
}

void XMLTagScanner::SkipAnyOf(const char* characters)
{
    m_byte = std::min(m_text.find_first_not_of(characters, m_byte), m_text.size());
}

void XMLTagScanner::SkipUpTo(const char* characters)
{
    m_byte = std::min(m_text.find_first_of(characters, m_byte), m_text.size());
}

void XMLTagScanner::SkipValue()
{
    SkipUpTo("\"'");
    if (AtEnd())
        return;
    const char quote[] = {m_text[m_byte], '\0'};
    ++m_byte;
    SkipUpTo(quote);
    if (!AtEnd())
        ++m_byte;
}

} // namespace IO
} // namespace Core
