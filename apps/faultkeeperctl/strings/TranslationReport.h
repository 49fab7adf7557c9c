#ifndef FAULTKEEPERCTL_TRANSLATIONREPORT_H
#define FAULTKEEPERCTL_TRANSLATIONREPORT_H

#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/strings/Translation.h"

#include <string>

namespace Faultkeeper::Apps
{

/// What was found in a translation, as "file:line:column: error: ..." with the texts below it, then a line
/// that counts.
/// @param path  of the file, as it was typed
std::string TranslationText(const std::string& path, const CTranslation& translation);

/// The same as a document.
Json TranslationDocument(const std::string& path, const CTranslation& translation);

} // namespace Faultkeeper::Apps

#endif
