#ifndef FAULTKEEPER_APPS_SCHEMAS_XMLWRITER_H
#define FAULTKEEPER_APPS_SCHEMAS_XMLWRITER_H

#include <string>
#include <utility>
#include <vector>

namespace Faultkeeper::Apps
{

/// Writes elements into a text, each on a line of its own and indented by where it stands.
class CXmlWriter
{
public:
    typedef std::vector<std::pair<std::string, std::string>> Attributes;

    /// A tag with nothing in it.
    void Empty(const std::string& name, const Attributes& attributes = {});
    /// An element with nothing but text in it.
    void Text(const std::string& name, const std::string& text);
    void Open(const std::string& name, const Attributes& attributes = {});
    /// Closes the element that was opened last.
    void Close();
    void Comment(const std::string& text);

    const std::string& Written() const { return m_text; }

private:
    void Line(const std::string& line);

    std::string m_text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    std::vector<std::string> m_open;
};

} // namespace Faultkeeper::Apps

#endif
