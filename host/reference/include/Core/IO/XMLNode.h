#ifndef CORE_IO_XMLNODE_H
#define CORE_IO_XMLNODE_H

#include <Core/Export.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Core
{
namespace IO
{

class XMLSource;

/// One element of a document that XMLDocument has read.
///
/// Ownership: a node owns its children; references and pointers into a document last until the document
/// parses again or goes. Positions count from 1. A column is a character, not a byte: a tab is one, so is a
/// letter with an accent. Line ends are LF, CR LF or CR. They are worked out when they are asked for, from
/// the file's text, which the nodes of a document keep.
class CORE_EXPORT XMLNode
{
public:
    /// The element's name as written, prefix included; empty for the node above the top element.
    const std::string& Name() const { return m_name; }

    /// The child elements in document order.
    const std::vector<XMLNode>& Children() const { return m_children; }

    /// The first child element of that name, or null.
    const XMLNode* Child(const std::string& name) const;

    /// The attributes, name to value. References are replaced; tabs and line ends within a value are blanks.
    const std::map<std::string, std::string>& Attributes() const { return m_attributes; }

    /// The character data directly inside this element, pieces between child elements joined. Always empty if
    /// the document was made not to keep text.
    const std::string& Text() const { return m_text; }

    /// Where the element's "<" stands; 0 for the node above the top element.
    int Line() const;
    /// Its column in that line; 0 for the node above the top element.
    int Column() const;

    /// Finds where the name of an attribute starts in the file.
    /// @return false if there is no such attribute; `line` and `column` are untouched then
    bool AttributePosition(const std::string& name, int& line, int& column) const;

private:
    friend class XMLTreeBuilder;

    std::string m_name;
    std::string m_text;
    std::vector<XMLNode> m_children;
    std::map<std::string, std::string> m_attributes;
    std::shared_ptr<const XMLSource> m_source; // null for the node above the top element
    std::size_t m_byte = 0;                    // of the "<" in the source
};

} // namespace IO
} // namespace Core

#endif
