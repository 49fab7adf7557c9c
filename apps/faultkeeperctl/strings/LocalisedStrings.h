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

/// Of errors that are defined several times the one that lookups find, which is the last.
std::vector<CError> LastDefinitions(const std::vector<CError>& errors);

/// The text file that the library writes for translators, as text, with the last definition of each error. It
/// passes through a temporary file, because the library tells nobody when writing fails.
/// @throws CFailure (epsNo) if the temporary file cannot be made or written whole
std::string LocalisedStrings(const std::vector<CError>& defined);

/// The same, taken apart.
std::vector<STextRecord> OriginalTexts(const std::vector<CError>& errors);

} // namespace Faultkeeper::Apps

#endif
