#ifndef CORE_XMLTAGSCANNER_H
#define CORE_XMLTAGSCANNER_H

#include <cstddef>
#include <string>
#include <utility>

namespace Core
{
namespace IO
{

/// Finds lines and columns in a text, and the attributes of the tags in it: the parser tells where a tag
/// starts, but not where its attributes do.
///
/// Positions count from 1; a column is a character. Line ends are LF, CR LF and CR.
/// Cost: one walk over the text, as long as positions are asked for in ascending order.
class XMLTagScanner
{
public:
    using Position = std::pair<int, int>; // line, column

    /// @param text  borrowed
    explicit XMLTagScanner(const std::string& text);

    /// Every byte is a character from here on; in the beginning the text is taken for UTF-8.
    void SingleByte() { m_singleByte = true; }

    /// Goes to a byte; one past the end is the end.
    void MoveTo(std::size_t byte);

    Position Here() const { return {m_line, m_column}; }

    /// From the "<" of a well-formed start tag, or from where the call before has ended: goes past the next
    /// attribute.
    /// @return false if there is none left; `name` and `position` (of the name) are untouched then
    bool NextAttribute(std::string& name, Position& position);

private:
    bool AtEnd() const { return m_byte >= m_text.size(); }
    bool AtAnyOf(const char* characters) const;
    void Step();
    void SkipAnyOf(const char* characters);
    void SkipUpTo(const char* characters);
    void SkipValue();

    const std::string& m_text;
    bool m_singleByte = false;
    std::size_t m_byte = 0;
    int m_line = 1;
    int m_column = 1;
};

} // namespace IO
} // namespace Core

#endif
