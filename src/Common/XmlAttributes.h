#ifndef FAULTKEEPER_COMMON_XMLATTRIBUTES_H
#define FAULTKEEPER_COMMON_XMLATTRIBUTES_H

#include <string>

namespace Core
{
namespace IO
{
class XMLNode;
} // namespace IO
} // namespace Core

namespace Faultkeeper
{

/// Value of an attribute, or "" if the element does not have it.
/// @return valid as long as the node
const std::string& Attribute(const Core::IO::XMLNode& node, const char* name);

/// True exactly if the attribute is there and reads "yes".
bool Flag(const Core::IO::XMLNode& node, const char* name);

} // namespace Faultkeeper

#endif
