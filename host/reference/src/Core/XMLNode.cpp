#include <Core/IO/XMLNode.h>

namespace Core
{
namespace IO
{

const XMLNode* XMLNode::Child(const std::string& name) const
{
    for (const XMLNode& child : m_children)
    {
        if (child.m_name == name)
            return &child;
    }
    return nullptr;
}

bool XMLNode::AttributePosition(const std::string& name, int& line, int& column) const
{
    const auto found = m_attributePositions.find(name);
    if (found == m_attributePositions.end())
        return false;
    line = found->second.first;
    column = found->second.second;
    return true;
}

} // namespace IO
} // namespace Core
