#ifndef FAULTKEEPERCTL_CHECK_READING_MEANTERRORS_H
#define FAULTKEEPERCTL_CHECK_READING_MEANTERRORS_H

#include "faultkeeperctl/check/ConfigurationModel.h"

namespace Faultkeeper::Apps
{

/// Finds out which errors were probably meant by triggers that are guesses or lead nowhere, once all triggers
/// are read.
void FindMeantErrors(SConfigurationModel& model);

} // namespace Faultkeeper::Apps

#endif
