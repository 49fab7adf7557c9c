#ifndef FAULTKEEPERCTL_CHECK_CHECKREPORT_H
#define FAULTKEEPERCTL_CHECK_CHECKREPORT_H

#include "faultkeeperctl/check/Checker.h"
#include "faultkeeperctl/json/Json.h"

#include <string>

namespace Faultkeeper::Apps
{

/// A line for each finding, and "3 errors, 2 warnings in 5 files".
std::string CheckText(const SCheckResult& result);

/// The same as a document.
Json CheckDocument(const SCheckResult& result);

} // namespace Faultkeeper::Apps

#endif
