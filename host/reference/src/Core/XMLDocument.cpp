#include <Core/IO/XMLDocument.h>

#include "Core/XMLFile.h"
#include "Core/XMLSource.h"
#include "Core/XMLTreeBuilder.h"

#include <memory>
#include <utility>

namespace Core
{
namespace IO
{

XMLDocument::XMLDocument(bool keepText) : m_keepText(keepText) {}

bool XMLDocument::Parse(const std::string& path)
{
    m_root = XMLNode();
    m_error.clear();
    std::string text;
    std::string recoded;
    const std::string unread = ReadXMLFile(path, text, recoded);
    if (!unread.empty())
    {
        m_error = "0:0: " + unread;
        return false;
    }
    const auto source = std::make_shared<XMLSource>(std::move(text));
    return XMLTreeBuilder(source, recoded, m_keepText).Build(m_root, m_error);
}

} // namespace IO
} // namespace Core
