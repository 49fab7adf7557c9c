#include "common/text/TypedText.h"

namespace Faultkeeper::Apps
{

namespace
{
bool IsWithin(unsigned char byte, unsigned first, unsigned last)
{
    return byte >= first && byte <= last;
}

// After some first bytes not every continuation is one: the character could be had with fewer bytes, is half
// of a pair of UTF-16, or would be beyond the last there is.
bool IsSecond(unsigned char byte, unsigned char lead)
{
    switch (lead)
    {
    case 0xE0:
        return IsWithin(byte, 0xA0, 0xBF);
    case 0xED:
        return IsWithin(byte, 0x80, 0x9F);
    case 0xF0:
        return IsWithin(byte, 0x90, 0xBF);
    case 0xF4:
        return IsWithin(byte, 0x80, 0x8F);
    default:
        return IsWithin(byte, 0x80, 0xBF);
    }
}

// Bytes of the character at a position; 0 for what is no UTF-8.
std::size_t CharacterBytes(const std::string& text, std::size_t start)
{
    const unsigned char lead = static_cast<unsigned char>(text[start]);
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    const std::size_t bytes = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 1; i < bytes; ++i)
    {
        if (start + i >= text.size())
            return 0;
        const unsigned char byte = static_cast<unsigned char>(text[start + i]);
        if (i == 1 ? !IsSecond(byte, lead) : !IsWithin(byte, 0x80, 0xBF))
            return 0;
    }
    return bytes;
}

// Terminals obey those below blank, DEL, and the two-byte ones from 0x80 to 0x9F.
bool IsControl(const std::string& text, std::size_t start, std::size_t bytes)
{
    const unsigned char lead = static_cast<unsigned char>(text[start]);
    return lead < 0x20 || lead == 0x7F ||
           (bytes == 2 && lead == 0xC2 && static_cast<unsigned char>(text[start + 1]) < 0xA0);
}

std::string Escaped(char c)
{
    static const char digits[] = "0123456789ABCDEF";
    const unsigned char byte = static_cast<unsigned char>(c);
    return std::string("\\x") + digits[byte >> 4U] + digits[byte & 0xFU];
}

std::string Shown(const std::string& text, std::size_t start, std::size_t bytes)
{
    if (bytes != 0 && !IsControl(text, start, bytes))
        return text.substr(start, bytes);
    std::string shown;
    for (std::size_t i = 0; i < (bytes == 0 ? 1 : bytes); ++i)
        shown += Escaped(text[start + i]);
    return shown;
}
} // namespace

std::string WithoutControls(const std::string& text)
{
    std::string shown;
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t bytes = CharacterBytes(text, start);
        shown += Shown(text, start, bytes);
        start += bytes == 0 ? 1 : bytes;
    }
    return shown;
}

std::string QuotedTyped(const std::string& text, std::size_t mostBytes)
{
    std::string shown = "\"";
    std::size_t start = 0;
    while (start < text.size())
    {
        const std::size_t bytes = CharacterBytes(text, start);
        const std::size_t end = start + (bytes == 0 ? 1 : bytes);
        if (end > mostBytes)
            break;
        shown += text[start] == '\\' || text[start] == '"' ? std::string("\\") + text[start]
                                                           : Shown(text, start, bytes);
        start = end;
    }
    return shown + (start < text.size() ? "\"..." : "\"");
}

} // namespace Faultkeeper::Apps
