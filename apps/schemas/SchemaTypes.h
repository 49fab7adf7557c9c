#ifndef FAULTKEEPER_APPS_SCHEMAS_SCHEMATYPES_H
#define FAULTKEEPER_APPS_SCHEMAS_SCHEMATYPES_H

#include "schemas/XmlWriter.h"

#include "Common/database/ConfigurationFormat.h"

#include <string>

namespace Faultkeeper::Apps
{

/// The name of the type that attribute values of this kind have in a schema.
std::string TypeName(ConfigurationFormat::EAttributeValues values);

/// Writes that type: the words of the library's table, or what a value looks like.
void WriteType(ConfigurationFormat::EAttributeValues values, CXmlWriter& schema);

} // namespace Faultkeeper::Apps

#endif
