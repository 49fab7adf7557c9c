#include "schemas/XmlWriter.h"

namespace Faultkeeper::Apps
{

namespace
{
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text)
    {
        if (c == '<')
            escaped += "&lt;";
        else if (c == '&')
            escaped += "&amp;";
        else if (c == '"')
            escaped += "&quot;";
        else
            escaped += c;
    }
    return escaped;
}

std::string Tag(const std::string& name, const CXmlWriter::Attributes& attributes)
{
    std::string tag = "<" + name;
    for (const auto& attribute : attributes)
        tag += " " + attribute.first + "=\"" + Escaped(attribute.second) + "\"";
    return tag;
}
} // namespace

void CXmlWriter::Line(const std::string& line)
{
    m_text += std::string(2 * m_open.size(), ' ') + line + "\n";
}

void CXmlWriter::Empty(const std::string& name, const Attributes& attributes)
{
    Line(Tag(name, attributes) + "/>");
}

void CXmlWriter::Text(const std::string& name, const std::string& text)
{
    Line("<" + name + ">" + Escaped(text) + "</" + name + ">");
}

void CXmlWriter::Open(const std::string& name, const Attributes& attributes)
{
    Line(Tag(name, attributes) + ">");
    m_open.push_back(name);
}

void CXmlWriter::Close()
{
    const std::string name = m_open.back();
    m_open.pop_back();
    Line("</" + name + ">");
}

void CXmlWriter::Comment(const std::string& text)
{
    Line("<!-- " + text + " -->");
}

} // namespace Faultkeeper::Apps
