#include "Common/XmlAttributes.h"

#include "Common/database/ConfigurationFormat.h"

#include <Core/IO/XMLNode.h>

namespace Faultkeeper
{

const std::string& Attribute(const Core::IO::XMLNode& node, const char* name)
{
    static const std::string kAbsent;
    const auto found = node.Attributes().find(name);
    return found == node.Attributes().end() ? kAbsent : found->second;
}

bool Flag(const Core::IO::XMLNode& node, const char* name)
{
    return Attribute(node, name) == ConfigurationFormat::kFlagOn;
}

} // namespace Faultkeeper
