#ifndef FAULTKEEPERCTL_CONFIGUREDERRORS_H
#define FAULTKEEPERCTL_CONFIGUREDERRORS_H

#include "common/text/ErrorNames.h"

#include <string>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// Reads an identifier as people type it, and takes it only if the configuration defines that error.
/// @param id       untouched if the result is false
/// @param problem  replaced if the result is false: what is wrong, with the nearest right name
bool ParseConfiguredId(const std::string& typed, const CErrorDatabase& database, ErrorId& id,
                       std::string& problem);

/// That the configuration does not define an error, with the nearest one that it does.
std::string NotDefined(const std::string& typed, const ErrorId& id, const CErrorDatabase& database);

/// What a configuration has nearest to a name that cannot be an error's: "; the nearest configured error is
/// ..."; "" if there is none near, or the problem names it already.
std::string NearestHint(const std::string& typed, const std::string& problem, const CErrorDatabase& database);

} // namespace Faultkeeper::Apps

#endif
