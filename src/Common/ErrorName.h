#ifndef FAULTKEEPER_COMMON_ERRORNAME_H
#define FAULTKEEPER_COMMON_ERRORNAME_H

#include <string>

namespace Faultkeeper
{

class CError;

/// "<module>:<sub-module>:<problem>:<failure mode>", the failure mode as a number. Coordinates that have no
/// name give an empty field.
std::string ErrorName(int problemCode, int problemType);
std::string ErrorName(const CError& error);

} // namespace Faultkeeper

#endif
