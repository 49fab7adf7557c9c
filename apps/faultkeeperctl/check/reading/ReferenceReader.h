#ifndef FAULTKEEPERCTL_CHECK_READING_REFERENCEREADER_H
#define FAULTKEEPERCTL_CHECK_READING_REFERENCEREADER_H

#include "faultkeeperctl/check/ConfigurationModel.h"
#include "faultkeeperctl/check/reading/Element.h"

namespace Faultkeeper::Apps
{

/// Is it read as a number to its end? White space in front of it and a sign belong to it.
bool IsWholeNumber(const std::string& text);

/// Reads the "id" of a trigger, as the library does. What breaks a rule is told as such.
SReference ReadTriggerReference(const CElement& element, CFindings& findings);

/// Reads the "id" of an element in a pattern. There nothing breaks a rule: what cannot be read is a warning.
/// @param reference  untouched if the result is false
/// @return false if the library skips the element
bool ReadPatternReference(const CElement& element, CFindings& findings, SReference& reference);

} // namespace Faultkeeper::Apps

#endif
