#ifndef CORE_XMLSOURCE_H
#define CORE_XMLSOURCE_H

#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Core
{
namespace IO
{

/// The text that a document was made from. Documents keep it to tell where things stand in the file, which
/// only few of their users ask for: nothing is worked out before the first question.
///
/// Positions count from 1; a column is a character. Line ends are LF, CR LF and CR; a byte order mark takes
/// no column. Threads: questions may come from any.
class XMLSource
{
public:
    using Position = std::pair<int, int>; // line, column

    explicit XMLSource(std::string text) : m_text(std::move(text)) {}
    XMLSource(const XMLSource&) = delete;
    XMLSource& operator=(const XMLSource&) = delete;

    const std::string& Text() const { return m_text; }

    /// Every byte is a character; without this the text is taken for UTF-8. Before the first question.
    void SingleByte() { m_singleByte = true; }

    /// Where that byte stands; one past the end is the end.
    Position PositionOf(std::size_t byte) const;

    /// Finds the name of an attribute in the well-formed start tag whose "<" is at `tag`.
    /// @param name  in UTF-8, whatever the text's encoding
    /// @return false if it is not there; `position` is untouched then
    bool FindAttribute(std::size_t tag, const std::string& name, Position& position) const;

private:
    std::vector<std::size_t> FindLines() const;
    std::string AsUTF8(const std::string& name) const;

    const std::string m_text;
    bool m_singleByte = false;
    mutable std::mutex m_mutex;               // guards what follows
    mutable std::vector<std::size_t> m_lines; // first byte of each line; empty before the first question
    mutable std::size_t m_lastByte = 0;       // that was asked for, or where its line begins
    mutable int m_lastColumn = 1;             // of that byte
};

} // namespace IO
} // namespace Core

#endif
