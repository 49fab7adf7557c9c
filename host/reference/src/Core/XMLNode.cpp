#include <Core/IO/XMLNode.h>

#include "Core/XMLSource.h"

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

int XMLNode::Line() const
{
    return m_source == nullptr ? 0 : m_source->PositionOf(m_byte).first;
}

int XMLNode::Column() const
{
    return m_source == nullptr ? 0 : m_source->PositionOf(m_byte).second;
}

bool XMLNode::AttributePosition(const std::string& name, int& line, int& column) const
{
    XMLSource::Position position;
    if (m_source == nullptr || !m_source->FindAttribute(m_byte, name, position))
        return false;
    line = position.first;
    column = position.second;
    return true;
}

} // namespace IO
} // namespace Core
