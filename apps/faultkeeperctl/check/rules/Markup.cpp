#include "faultkeeperctl/check/rules/Markup.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kLongest = 2000; // that is looked at, in bytes
constexpr std::size_t kLongestNumber = 10;
constexpr std::size_t kLongestWord = 31;

// Attributes that tags may have without a value.
constexpr const char* kBareAttributes[] = {
    "async",      "autofocus", "autoplay", "checked", "compact",  "controls", "default",  "defer",
    "disabled",   "hidden",    "ismap",    "loop",    "multiple", "muted",    "nohref",   "noresize",
    "novalidate", "noshade",   "nowrap",   "open",    "readonly", "required", "reversed", "selected"};

bool IsLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsHexDigit(char c)
{
    return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool IsLetterOrDigit(char c)
{
    return IsLetter(c) || IsDigit(c);
}

bool IsInName(char c)
{
    return IsLetterOrDigit(c) || c == '-' || c == '_' || c == ':' || c == '.';
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string InLowerCase(std::string name)
{
    for (char& c : name)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return name;
}

bool IsInBareValue(char c)
{
    return !IsBlank(c) && std::strchr("<>\"'=", c) == nullptr;
}

/// Reads the beginning of a text, part by part. A part that is not there is not read at all.
class CMarkupReader
{
public:
    /// @param text  borrowed
    explicit CMarkupReader(const std::string& text) : m_text(&text) {}

    /// How much was read.
    std::size_t Position() const { return m_position; }

    bool Read(const std::string& wanted)
    {
        const bool there = m_text->compare(m_position, wanted.size(), wanted) == 0;
        m_position += there ? wanted.size() : 0;
        return there;
    }

    /// @return how many
    std::size_t ReadAll(bool (*kind)(char))
    {
        const std::size_t before = m_position;
        while (m_position < m_text->size() && kind((*m_text)[m_position]))
            ++m_position;
        return m_position - before;
    }

    /// Reads up to and including what is wanted.
    bool ReadThrough(const std::string& wanted)
    {
        const std::size_t found = m_text->find(wanted, m_position);
        if (found != std::string::npos)
            m_position = found + wanted.size();
        return found != std::string::npos;
    }

    /// Does a letter come next?
    bool ReadsLetter() const { return m_position < m_text->size() && IsLetter((*m_text)[m_position]); }

    /// A letter, and what else names are made of.
    std::string ReadName()
    {
        const std::size_t before = m_position;
        if (ReadsLetter())
            ReadAll(IsInName);
        return m_text->substr(before, m_position - before);
    }

private:
    const std::string* m_text;
    std::size_t m_position = 0;
};

bool ReadValue(CMarkupReader& reader)
{
    for (const char* const quote : {"\"", "'"})
    {
        if (reader.Read(quote))
            return reader.ReadThrough(quote);
    }
    return reader.ReadAll(IsInBareValue) > 0;
}

/// Words of a comparison are not taken for attributes.
bool ReadAttribute(CMarkupReader& reader)
{
    const std::string name = InLowerCase(reader.ReadName());
    const bool bare =
        std::find(std::begin(kBareAttributes), std::end(kBareAttributes), name) != std::end(kBareAttributes);
    CMarkupReader beyond = reader;
    beyond.ReadAll(IsBlank);
    if (name.empty() || !beyond.Read("="))
        return bare;
    reader = beyond;
    reader.ReadAll(IsBlank);
    return ReadValue(reader);
}

bool ReadTag(CMarkupReader& reader)
{
    if ((!reader.Read("</") && !reader.Read("<")) || reader.ReadName().empty())
        return false;
    for (;;)
    {
        const bool apart = reader.ReadAll(IsBlank) > 0;
        if (reader.Read(">") || reader.Read("/>"))
            return true;
        if (!apart || !ReadAttribute(reader))
            return false;
    }
}

bool ReadDeclaration(CMarkupReader& reader)
{
    return (reader.Read("<!") || reader.Read("<?")) && !reader.ReadName().empty() && reader.ReadThrough(">");
}

/// Names of one letter are none: "R&D;". Long ones have no digits.
bool ReadEntityName(CMarkupReader& reader)
{
    const std::size_t letters = reader.ReadAll(IsLetter);
    const std::size_t others = letters == 0 ? 0 : reader.ReadAll(IsLetterOrDigit);
    return letters + others >= 2 && letters + others <= (others == 0 ? kLongestWord : kLongestNumber);
}

/// What stands behind the ampersand.
bool ReadEntity(CMarkupReader& reader)
{
    if (!reader.Read("#"))
        return ReadEntityName(reader) && reader.Read(";");
    const std::size_t digits = reader.ReadAll(reader.Read("x") ? IsHexDigit : IsDigit);
    return digits > 0 && digits <= kLongestNumber && reader.Read(";");
}

bool ReadMarkup(CMarkupReader& reader)
{
    for (const char* const whole : {"<!--", "<![CDATA[", "\\n", "\\r", "\\t"})
    {
        if (reader.Read(whole))
            return true;
    }
    CMarkupReader declaration = reader;
    if (ReadDeclaration(declaration))
    {
        reader = declaration;
        return true;
    }
    return reader.Read("&") ? ReadEntity(reader) : ReadTag(reader);
}
} // namespace

std::string MarkupIn(const std::string& text)
{
    for (std::size_t first = text.find_first_of("<&\\"); first != std::string::npos;
         first = text.find_first_of("<&\\", first + 1))
    {
        const std::string begun = text.substr(first, kLongest);
        CMarkupReader reader(begun);
        if (ReadMarkup(reader))
            return begun.substr(0, reader.Position());
    }
    return "";
}

} // namespace Faultkeeper::Apps
