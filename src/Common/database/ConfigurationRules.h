#ifndef FAULTKEEPER_COMMON_DATABASE_CONFIGURATIONRULES_H
#define FAULTKEEPER_COMMON_DATABASE_CONFIGURATIONRULES_H

namespace Faultkeeper
{

/// A rule that configuration files must obey. Support staff search logs by its text and position, so both
/// stay as they are when the code around the check moves.
struct SConfigurationRule
{
    const char* condition; ///< what must be true
    unsigned line;         ///< line of src/Common/ErrorDatabase that logs in the field name
    const char* function;  ///< signature of the loading step
};

/// All rules, in the order in which loading meets them.
namespace ConfigurationRules
{
extern const SConfigurationRule kListHoldsModules;
extern const SConfigurationRule kModuleIsKnown;
extern const SConfigurationRule kModuleHoldsSubModules;
extern const SConfigurationRule kSubModuleIsKnown;
extern const SConfigurationRule kSubModuleHoldsProblems;
extern const SConfigurationRule kProblemIsKnown;
extern const SConfigurationRule kProblemHoldsErrors;
extern const SConfigurationRule kErrorHasIdentifier;
extern const SConfigurationRule kSeverityIsKnown;
extern const SConfigurationRule kErrorHoldsTexts;
extern const SConfigurationRule kTextHasType;
extern const SConfigurationRule kTextHasContent;
extern const SConfigurationRule kErrorHasProblemText;
extern const SConfigurationRule kErrorHasSolutionText;
extern const SConfigurationRule kErrorHasShortProblemText;
extern const SConfigurationRule kTriggerSetsHoldTriggerSets;
extern const SConfigurationRule kOptionsHoldOptions;
extern const SConfigurationRule kOptionHasName;
extern const SConfigurationRule kOptionHasValue;
extern const SConfigurationRule kTriggersHoldTriggers;
extern const SConfigurationRule kTriggerHasId;
extern const SConfigurationRule kTriggerIdSplits;
extern const SConfigurationRule kTriggerIdHasFourFields;
extern const SConfigurationRule kTriggerModuleIsKnown;
extern const SConfigurationRule kTriggerSubModuleIsKnown;
extern const SConfigurationRule kTriggerProblemIsKnown;
} // namespace ConfigurationRules

/// Ends the process with the C library's assertion message unless the rule holds.
void Require(bool holds, const SConfigurationRule& rule);

} // namespace Faultkeeper

#endif
