#ifndef FAULTKEEPERCTL_CHECK_READING_PATTERNREADER_H
#define FAULTKEEPERCTL_CHECK_READING_PATTERNREADER_H

#include "faultkeeperctl/check/ConfigurationModel.h"

namespace Faultkeeper::Apps
{

/// Reads ErrorPatterns.xml, in the order of the file, and tells what is wrong in it. A configuration may do
/// without one, but then there are no friendly codes.
/// @param prefix  put in front of the file's name as it stands
/// @param model   gets the patterns that the library would load
void ReadPatterns(const std::string& prefix, SConfigurationModel& model, CFindings& findings);

} // namespace Faultkeeper::Apps

#endif
