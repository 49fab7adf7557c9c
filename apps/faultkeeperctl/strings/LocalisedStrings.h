#ifndef FAULTKEEPERCTL_LOCALISEDSTRINGS_H
#define FAULTKEEPERCTL_LOCALISEDSTRINGS_H

#include "faultkeeperctl/strings/TextFile.h"

#include <string>
#include <vector>

namespace Faultkeeper
{
class CError;
}

namespace Faultkeeper::Apps
{

/// The text file that the library writes for translators, as text. It passes through a temporary file,
/// because the library tells nobody when writing fails.
/// @throws CFailure (epsNo) if the temporary file cannot be made or written whole
std::string LocalisedStrings(const std::vector<CError>& errors);

/// The same, taken apart.
std::vector<STextRecord> OriginalTexts(const std::vector<CError>& errors);

} // namespace Faultkeeper::Apps

#endif
