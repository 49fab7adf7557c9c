#ifndef FAULTKEEPERCTL_REASONS_REASONTEXT_H
#define FAULTKEEPERCTL_REASONS_REASONTEXT_H

#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/reasons/Reasons.h"

#include <string>

namespace Faultkeeper::Apps
{

/// The reason in sentences, what is below a set indented.
std::string ReasonText(const SReason& reason);

/// The same as an object: an error with "active", its times, "above", "why" and "sets".
Json ReasonDocument(const SReason& reason);

} // namespace Faultkeeper::Apps

#endif
