#include "faultkeeperctl/text/TextWidth.h"

#include "common/text/TypedText.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kUsualWidth = 100;
constexpr int kGreatestWidth = 10000;
constexpr int kLeastWidth = 40; // narrower terminals break the lines themselves

struct SRange
{
    std::uint32_t first, last;
};

constexpr SRange kCombining[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F},
                                 {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20F0},
                                 {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};
constexpr SRange kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xAC00, 0xD7A3},
                            {0xF900, 0xFAFF},   {0xFE30, 0xFE4F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
                            {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <std::size_t Count> bool In(const SRange (&ranges)[Count], std::uint32_t character)
{
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [character](const SRange& range)
                       { return character >= range.first && character <= range.last; });
}

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Bytes of the character that starts at a position; 1 for what is no UTF-8.
std::size_t CharacterBytes(const std::string& text, std::size_t start)
{
    const unsigned char lead = static_cast<unsigned char>(text[start]);
    const std::size_t bytes = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 1; i < bytes; ++i)
    {
        if (start + i >= text.size() || !IsContinuation(text[start + i]))
            return 1;
    }
    return bytes;
}

std::uint32_t Character(const std::string& text, std::size_t start, std::size_t bytes)
{
    std::uint32_t character = static_cast<unsigned char>(text[start]);
    if (bytes > 1)
        character &= 0x7FU >> bytes;
    for (std::size_t i = 1; i < bytes; ++i)
        character = (character << 6) | (static_cast<unsigned char>(text[start + i]) & 0x3FU);
    return character;
}

int CharacterWidth(const std::string& text, std::size_t start, std::size_t bytes)
{
    const std::uint32_t character = Character(text, start, bytes);
    return In(kCombining, character) ? 0 : In(kWide, character) ? 2 : 1;
}

// Where the part of a word ends that starts at a position and fits into `width` columns; it has at least one
// character.
std::size_t FittingEnd(const std::string& word, std::size_t start, int width)
{
    std::size_t end = start;
    for (int used = 0; end < word.size();)
    {
        const std::size_t bytes = CharacterBytes(word, end);
        used += CharacterWidth(word, end, bytes);
        if (used > width && end > start)
            break;
        end += bytes;
    }
    return end;
}

void AddWord(std::vector<std::string>& lines, const std::string& word, int width)
{
    std::string& line = lines.back();
    if (!line.empty() && DisplayWidth(line) + 1 + DisplayWidth(word) <= width)
    {
        line += " " + word;
        return;
    }
    if (!line.empty())
        lines.emplace_back();
    std::size_t start = FittingEnd(word, 0, width);
    lines.back() = word.substr(0, start);
    while (start < word.size())
    {
        const std::size_t end = FittingEnd(word, start, width);
        lines.push_back(word.substr(start, end - start));
        start = end;
    }
}

void AddParagraph(std::vector<std::string>& lines, const std::string& text, int width)
{
    lines.emplace_back();
    std::size_t start = 0;
    while ((start = text.find_first_not_of(" \t\r", start)) != std::string::npos)
    {
        const std::size_t end = std::min(text.find_first_of(" \t\r", start), text.size());
        AddWord(lines, WithoutControls(text.substr(start, end - start)), width);
        start = end;
    }
}

// Whoever collects the output, for a page of their own, says with COLUMNS how wide it is.
int WidthFromEnvironment()
{
    const char* const columns = std::getenv("COLUMNS");
    const std::string text = columns == nullptr ? "" : columns;
    int width = 0;
    const std::from_chars_result read = std::from_chars(text.data(), text.data() + text.size(), width);
    const bool usable = read.ec == std::errc() && read.ptr == text.data() + text.size() && width > 0;
    return usable ? std::clamp(width, kLeastWidth, kGreatestWidth) : kUsualWidth;
}
} // namespace

int DisplayWidth(const std::string& text)
{
    int width = 0;
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t bytes = CharacterBytes(text, start);
        width += CharacterWidth(text, start, bytes);
        start += bytes;
    }
    return width;
}

std::string Padded(const std::string& text, int width)
{
    const int missing = width - DisplayWidth(text);
    return missing > 0 ? text + std::string(static_cast<std::size_t>(missing), ' ') : text;
}

std::vector<std::string> Wrapped(const std::string& text, int width)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (;;)
    {
        const std::size_t end = text.find('\n', start);
        AddParagraph(lines, text.substr(start, end == std::string::npos ? end : end - start),
                     std::max(width, 1));
        if (end == std::string::npos)
            return lines;
        start = end + 1;
    }
}

int OutputWidth()
{
    struct winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return WidthFromEnvironment();
    return std::max<int>(size.ws_col, kLeastWidth);
}

} // namespace Faultkeeper::Apps
