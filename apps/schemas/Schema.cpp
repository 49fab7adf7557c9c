#include "schemas/Schema.h"

#include "schemas/SchemaTypes.h"
#include "schemas/XmlWriter.h"

#include <set>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;

namespace
{
typedef std::vector<SElementForm> Elements;

/// Writes the elements of one kind of file.
class CSchemaWriter
{
public:
    explicit CSchemaWriter(const Elements& elements) : m_elements(elements) {}

    std::string Write(const std::string& what);

private:
    void WriteTypes();
    void WriteElement(const SElementForm& element);
    void WriteContent(const SElementForm& element);
    void WriteChildren(const Elements& children);
    void WriteAttributes(const SElementForm& element);
    Elements Children(const SElementForm& element) const;

    const Elements& m_elements;
    CXmlWriter m_schema;
};

std::string CSchemaWriter::Write(const std::string& what)
{
    m_schema.Comment("Made from the tables of the library by faultkeeper_schemas: do not edit.");
    m_schema.Open("xs:schema", {{"xmlns:xs", "http://www.w3.org/2001/XMLSchema"}});
    m_schema.Open("xs:annotation");
    m_schema.Text("xs:documentation", what);
    m_schema.Close();
    WriteTypes();
    for (const SElementForm& element : m_elements)
    {
        // an element that may have any name is known by its usual one
        if (element.parent == nullptr || element.freedom == eefName)
            WriteElement(element);
    }
    m_schema.Close();
    return m_schema.Written();
}

void CSchemaWriter::WriteTypes()
{
    std::set<EAttributeValues> used;
    for (const SElementForm& element : m_elements)
    {
        for (const SAttributeForm& attribute : element.attributes)
        {
            if (attribute.name != nullptr)
                used.insert(attribute.values);
        }
    }
    for (const EAttributeValues values : used)
        WriteType(values, m_schema);
}

void CSchemaWriter::WriteElement(const SElementForm& element)
{
    const bool free = element.freedom == eefContent;
    m_schema.Open("xs:element", {{"name", element.name}});
    m_schema.Open("xs:complexType",
                  free ? CXmlWriter::Attributes{{"mixed", "true"}} : CXmlWriter::Attributes());
    WriteContent(element);
    WriteAttributes(element);
    m_schema.Close();
    m_schema.Close();
}

void CSchemaWriter::WriteContent(const SElementForm& element)
{
    const CXmlWriter::Attributes anyNumber = {{"minOccurs", "0"}, {"maxOccurs", "unbounded"}};
    const Elements children = Children(element);
    if (element.freedom != eefContent && children.empty())
        return;
    m_schema.Open("xs:choice", anyNumber);
    if (element.freedom == eefContent)
        m_schema.Empty("xs:any", {{"processContents", "skip"}});
    WriteChildren(children);
    m_schema.Close();
}

void CSchemaWriter::WriteChildren(const Elements& children)
{
    for (const SElementForm& child : children)
    {
        if (child.freedom == eefName)
            m_schema.Empty("xs:any", {{"namespace", "##local"}, {"processContents", "lax"}});
        else
            WriteElement(child);
    }
}

void CSchemaWriter::WriteAttributes(const SElementForm& element)
{
    for (const SAttributeForm& attribute : element.attributes)
    {
        if (attribute.name == nullptr)
            break;
        CXmlWriter::Attributes attributes = {{"name", attribute.name}, {"type", TypeName(attribute.values)}};
        if (attribute.required)
            attributes.emplace_back("use", "required");
        m_schema.Empty("xs:attribute", attributes);
    }
    if (element.freedom == eefContent)
        m_schema.Empty("xs:anyAttribute", {{"processContents", "skip"}});
}

Elements CSchemaWriter::Children(const SElementForm& element) const
{
    Elements children;
    for (const SElementForm& other : m_elements)
    {
        if (other.parent != nullptr && std::string(other.parent) == element.name)
            children.push_back(other);
    }
    return children;
}
} // namespace

std::string Schema(const Elements& elements, const std::string& what)
{
    return CSchemaWriter(elements).Write(what);
}

} // namespace Faultkeeper::Apps
