#pragma once

#include <string>
#include <vector>

namespace Support
{

/// A line of a manual page that begins with a macro, and where it stands.
struct SMacroLine
{
    std::string section;            ///< of the last ".Sh"
    std::string part;               ///< of the last ".Ss" in it, or ""
    std::string macro;              ///< without its dot
    std::vector<std::string> words; ///< what follows, quotes taken off
};

/// A manual page as it is written, in mdoc macros.
class CManPage
{
public:
    /// @param path  of the page; fails the test if there is none
    explicit CManPage(const std::string& path);

    const std::vector<SMacroLine>& Lines() const { return m_lines; }

    /// The arguments of all lines with that macro and these words in front, in the order of the page; for
    /// ".It" with "Cm" in a part, say, what follows "Cm".
    /// @param place  a section or a part; "" is the whole page
    std::vector<std::vector<std::string>> Items(const std::string& place, const std::string& marker) const;

    /// The lines of the first literal display of a part.
    std::string Display(const std::string& part) const;

    /// Every option that the page mentions, with its dashes, in the order of the page.
    std::vector<std::string> Options() const;

private:
    void Read(const std::string& line);
    void ReadMacro(const std::string& line);

    std::vector<SMacroLine> m_lines;
    std::vector<std::pair<std::string, std::string>> m_displays; // the part, then the lines
    bool m_inDisplay = false;
    std::string m_section;
    std::string m_part;
};

/// The names of options and arguments of an ".It" line, each once, in the order of the page: "--timeout=" for
/// an option that takes something, "--all" for one that does not, "ID" for an argument.
std::vector<std::string> Synopsis(const std::vector<std::string>& words);

} // namespace Support
