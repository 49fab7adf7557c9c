#ifndef CORE_XMLTAGSCANNER_H
#define CORE_XMLTAGSCANNER_H

#include <cstddef>
#include <string>

namespace Core
{
namespace IO
{

/// Finds the attributes of a tag in a text: the parser tells where a tag starts, but not where its attributes
/// do. Cost: one walk over the tag.
class XMLTagScanner
{
public:
    /// @param text  borrowed
    /// @param tag   where the "<" of a well-formed start tag stands
    XMLTagScanner(const std::string& text, std::size_t tag) : m_text(text), m_byte(tag) {}

    /// Goes past the next attribute.
    /// @return false if there is none left; `name` and `byte` (where the name starts) are untouched then
    bool NextAttribute(std::string& name, std::size_t& byte);

private:
    bool AtEnd() const { return m_byte >= m_text.size(); }
    bool AtAnyOf(const char* characters) const;
    void SkipAnyOf(const char* characters);
    void SkipUpTo(const char* characters);
    void SkipValue();

    const std::string& m_text;
    std::size_t m_byte;
};

} // namespace IO
} // namespace Core

#endif
