#ifndef FAULTKEEPER_APPS_SCHEMAS_SCHEMA_H
#define FAULTKEEPER_APPS_SCHEMAS_SCHEMA_H

#include "Common/database/ConfigurationFormat.h"

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// The XML schema of one kind of configuration file, from the tables that the library reads such files by.
///
/// It is for editors, which complete names by it: what the library skips without a word is not in it, and
/// what only the whole configuration can tell, "faultkeeperctl check" does.
/// @param elements  that the file may have, the top element first
/// @param what      one line for people
std::string Schema(const std::vector<ConfigurationFormat::SElementForm>& elements, const std::string& what);

} // namespace Faultkeeper::Apps

#endif
