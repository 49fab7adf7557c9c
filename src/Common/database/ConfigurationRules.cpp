#include "Common/database/ConfigurationRules.h"

#undef NDEBUG // the assertion reporter is declared only where assertions are on, and these rules always are
#include <cassert>
#include <cstdio>
#include <cstdlib>

namespace Faultkeeper
{

namespace
{
constexpr const char* kFile = "src/Common/ErrorDatabase";

constexpr const char* kConstructor = "Faultkeeper::CErrorDatabase::CErrorDatabase(const std::string&)";
constexpr const char* kLoadModule =
    "void Faultkeeper::CErrorDatabase::LoadModule(Faultkeeper::EModuleIdentifier, const std::string&)";
constexpr const char* kLoadSubModule =
    "void Faultkeeper::CErrorDatabase::LoadSubModule(Faultkeeper::EModuleIdentifier, "
    "Faultkeeper::ESubModuleIdentifier, const Core::IO::XMLNode&)";
constexpr const char* kLoadError =
    "void Faultkeeper::CErrorDatabase::LoadError(Faultkeeper::EModuleIdentifier, "
    "Faultkeeper::ESubModuleIdentifier, Faultkeeper::EProblemIdentifier, Faultkeeper::EProblemType, "
    "Faultkeeper::EErrorSeverity, const Core::IO::XMLNode&, bool, bool, bool, bool, bool, bool)";
constexpr const char* kLoadTriggerSet =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSet(Faultkeeper::CError&, const Core::IO::XMLNode&)";
constexpr const char* kLoadOptions =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSetOptions(Faultkeeper::CTriggerSet&, "
    "const Core::IO::XMLNode&)";
constexpr const char* kLoadTriggers =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSetTriggers(Faultkeeper::CError&, "
    "Faultkeeper::CTriggerSet&, const Core::IO::XMLNode&)";
} // namespace

namespace ConfigurationRules
{
const SConfigurationRule kListHoldsModules = {"moduleNode.Name() == \"Module\"", 40, kConstructor};
const SConfigurationRule kModuleIsKnown = {"moduleId != emiUnknown", 47, kConstructor};
const SConfigurationRule kModuleHoldsSubModules = {"subModuleNode.Name() == \"SubModule\"", 91, kLoadModule};
const SConfigurationRule kSubModuleIsKnown = {"subModuleId != esmiUnknown", 97, kLoadModule};
const SConfigurationRule kSubModuleHoldsProblems = {"problemNode.Name() == \"Problem\"", 111, kLoadSubModule};
const SConfigurationRule kProblemIsKnown = {"problemId != epiUnknown", 117, kLoadSubModule};
const SConfigurationRule kProblemHoldsErrors = {"errorNode.Name() == \"Error\"", 125, kLoadSubModule};
const SConfigurationRule kErrorHasIdentifier = {"!errorIdentifier.empty()", 136, kLoadSubModule};
const SConfigurationRule kSeverityIsKnown = {"errorSeverity != eesUnknown", 143, kLoadSubModule};
const SConfigurationRule kErrorHoldsTexts = {"textNode.Name() == \"Text\"", 178, kLoadError};
const SConfigurationRule kTextHasType = {"!textType.empty()", 183, kLoadError};
const SConfigurationRule kTextHasContent = {"!textContent.empty()", 184, kLoadError};
const SConfigurationRule kErrorHasProblemText = {"!newError.ProblemText().empty()", 197, kLoadError};
const SConfigurationRule kErrorHasSolutionText = {"!newError.SolutionText().empty()", 198, kLoadError};
const SConfigurationRule kErrorHasShortProblemText = {"!newError.ShortProblemText().empty()", 199,
                                                      kLoadError};
const SConfigurationRule kTriggerSetsHoldTriggerSets = {"triggerSet.Name() == \"TriggerSet\"", 219,
                                                        kLoadTriggerSet};
const SConfigurationRule kOptionsHoldOptions = {"optionNode.Name() == \"Option\"", 249, kLoadOptions};
const SConfigurationRule kOptionHasName = {"!name.empty()", 254, kLoadOptions};
const SConfigurationRule kOptionHasValue = {"!value.empty()", 255, kLoadOptions};
const SConfigurationRule kTriggersHoldTriggers = {"triggerNode.Name() == \"Trigger\"", 287, kLoadTriggers};
const SConfigurationRule kTriggerHasId = {"!identifier.empty()", 291, kLoadTriggers};
const SConfigurationRule kTriggerIdSplits = {"Core::Utilities::SplitString(identifier, \":\", subStrings)",
                                             295, kLoadTriggers};
const SConfigurationRule kTriggerIdHasFourFields = {"subStrings.size() == 4", 297, kLoadTriggers};
const SConfigurationRule kTriggerModuleIsKnown = {"moduleId != emiUnknown", 304, kLoadTriggers};
const SConfigurationRule kTriggerSubModuleIsKnown = {"subModuleId != esmiUnknown", 305, kLoadTriggers};
const SConfigurationRule kTriggerProblemIsKnown = {"problemId != epiUnknown", 306, kLoadTriggers};
} // namespace ConfigurationRules

namespace
{
[[noreturn]] void EndProcess(const SConfigurationRule& rule)
{
#ifdef __GLIBC__
    __assert_fail(rule.condition, kFile, rule.line, rule.function);
#else
    std::fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", kFile, rule.line, rule.function,
                 rule.condition);
    std::abort();
#endif
}
} // namespace

void Require(bool holds, const SConfigurationRule& rule)
{
    if (!holds)
        EndProcess(rule);
}

} // namespace Faultkeeper
