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

/// The loading steps that check them.
namespace ConfigurationSteps
{
inline constexpr const char* kConstructor = "Faultkeeper::CErrorDatabase::CErrorDatabase(const std::string&)";
inline constexpr const char* kLoadModule =
    "void Faultkeeper::CErrorDatabase::LoadModule(Faultkeeper::EModuleIdentifier, const std::string&)";
inline constexpr const char* kLoadSubModule =
    "void Faultkeeper::CErrorDatabase::LoadSubModule(Faultkeeper::EModuleIdentifier, "
    "Faultkeeper::ESubModuleIdentifier, const Core::IO::XMLNode&)";
inline constexpr const char* kLoadError =
    "void Faultkeeper::CErrorDatabase::LoadError(Faultkeeper::EModuleIdentifier, "
    "Faultkeeper::ESubModuleIdentifier, Faultkeeper::EProblemIdentifier, Faultkeeper::EProblemType, "
    "Faultkeeper::EErrorSeverity, const Core::IO::XMLNode&, bool, bool, bool, bool, bool, bool)";
inline constexpr const char* kLoadTriggerSet =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSet(Faultkeeper::CError&, const Core::IO::XMLNode&)";
inline constexpr const char* kLoadOptions =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSetOptions(Faultkeeper::CTriggerSet&, "
    "const Core::IO::XMLNode&)";
inline constexpr const char* kLoadTriggers =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSetTriggers(Faultkeeper::CError&, "
    "Faultkeeper::CTriggerSet&, const Core::IO::XMLNode&)";
} // namespace ConfigurationSteps

/// All rules, in the order in which loading meets them. Those who check files without loading them tell the
/// same.
namespace ConfigurationRules
{
using namespace ConfigurationSteps;

inline constexpr SConfigurationRule kListHoldsModules = {"moduleNode.Name() == \"Module\"", 40, kConstructor};
inline constexpr SConfigurationRule kModuleIsKnown = {"moduleId != emiUnknown", 47, kConstructor};
inline constexpr SConfigurationRule kModuleHoldsSubModules = {"subModuleNode.Name() == \"SubModule\"", 91,
                                                              kLoadModule};
inline constexpr SConfigurationRule kSubModuleIsKnown = {"subModuleId != esmiUnknown", 97, kLoadModule};
inline constexpr SConfigurationRule kSubModuleHoldsProblems = {"problemNode.Name() == \"Problem\"", 111,
                                                               kLoadSubModule};
inline constexpr SConfigurationRule kProblemIsKnown = {"problemId != epiUnknown", 117, kLoadSubModule};
inline constexpr SConfigurationRule kProblemHoldsErrors = {"errorNode.Name() == \"Error\"", 125,
                                                           kLoadSubModule};
inline constexpr SConfigurationRule kErrorHasIdentifier = {"!errorIdentifier.empty()", 136, kLoadSubModule};
inline constexpr SConfigurationRule kSeverityIsKnown = {"errorSeverity != eesUnknown", 143, kLoadSubModule};
inline constexpr SConfigurationRule kErrorHoldsTexts = {"textNode.Name() == \"Text\"", 178, kLoadError};
inline constexpr SConfigurationRule kTextHasType = {"!textType.empty()", 183, kLoadError};
inline constexpr SConfigurationRule kTextHasContent = {"!textContent.empty()", 184, kLoadError};
inline constexpr SConfigurationRule kErrorHasProblemText = {"!newError.ProblemText().empty()", 197,
                                                            kLoadError};
inline constexpr SConfigurationRule kErrorHasSolutionText = {"!newError.SolutionText().empty()", 198,
                                                             kLoadError};
inline constexpr SConfigurationRule kErrorHasShortProblemText = {"!newError.ShortProblemText().empty()", 199,
                                                                 kLoadError};
inline constexpr SConfigurationRule kTriggerSetsHoldTriggerSets = {"triggerSet.Name() == \"TriggerSet\"", 219,
                                                                   kLoadTriggerSet};
inline constexpr SConfigurationRule kOptionsHoldOptions = {"optionNode.Name() == \"Option\"", 249,
                                                           kLoadOptions};
inline constexpr SConfigurationRule kOptionHasName = {"!name.empty()", 254, kLoadOptions};
inline constexpr SConfigurationRule kOptionHasValue = {"!value.empty()", 255, kLoadOptions};
inline constexpr SConfigurationRule kTriggersHoldTriggers = {"triggerNode.Name() == \"Trigger\"", 287,
                                                             kLoadTriggers};
inline constexpr SConfigurationRule kTriggerHasId = {"!identifier.empty()", 291, kLoadTriggers};
inline constexpr SConfigurationRule kTriggerIdSplits = {
    "Core::Utilities::SplitString(identifier, \":\", subStrings)", 295, kLoadTriggers};
inline constexpr SConfigurationRule kTriggerIdHasFourFields = {"subStrings.size() == 4", 297, kLoadTriggers};
inline constexpr SConfigurationRule kTriggerModuleIsKnown = {"moduleId != emiUnknown", 304, kLoadTriggers};
inline constexpr SConfigurationRule kTriggerSubModuleIsKnown = {"subModuleId != esmiUnknown", 305,
                                                                kLoadTriggers};
inline constexpr SConfigurationRule kTriggerProblemIsKnown = {"problemId != epiUnknown", 306, kLoadTriggers};
} // namespace ConfigurationRules

/// Ends the process with the C library's assertion message unless the rule holds.
void Require(bool holds, const SConfigurationRule& rule);

} // namespace Faultkeeper

#endif
