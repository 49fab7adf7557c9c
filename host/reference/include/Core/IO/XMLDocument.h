#ifndef CORE_IO_XMLDOCUMENT_H
#define CORE_IO_XMLDOCUMENT_H

#include <Core/Export.h>
#include <Core/IO/XMLNode.h>

#include <cstddef>
#include <string>

namespace Core
{
namespace IO
{

/// An XML file, read whole and checked for being well-formed.
///
/// Value type: a copy has its own nodes.
/// Failure: a file that is missing, unreadable or wrong leaves a document without elements; Error says why.
/// Running out of memory throws std::bad_alloc and leaves a document without elements too.
class CORE_EXPORT XMLDocument
{
public:
    /// Elements may be nested this deep; the top element counts as the first level.
    static constexpr int kMaximumDepth = 256;

    /// A file may have this many bytes.
    static constexpr std::size_t kMaximumBytes = 67108864; // 64 MiB

    /// An empty document.
    /// @param keepText  keep character data between tags, too? Attributes are kept in any case.
    explicit XMLDocument(bool keepText);

    /// Reads a file in UTF-8, UTF-16, ISO-8859-1 or US-ASCII. What was read before goes, whatever the result.
    ///
    /// Refused are: anything but a regular file, files larger than kMaximumBytes ("0:0: File too large"),
    /// text that is not well-formed, document type declarations (so there are no entities but the five built
    /// in), and elements nested deeper than kMaximumDepth.
    /// @return false if the file was refused; Error tells the reason
    bool Parse(const std::string& path);

    /// The node above the top element, which is its only child; without children before the first Parse and
    /// after one that failed.
    const XMLNode& RootNode() const { return m_root; }

    /// Why the last Parse failed, as "line:column: reason" (columns are characters, both count from 1; "0:0"
    /// if the file could not be read at all); empty if it did not fail.
    const std::string& Error() const { return m_error; }

private:
    bool m_keepText;
    XMLNode m_root;
    std::string m_error;
};

} // namespace IO
} // namespace Core

#endif
