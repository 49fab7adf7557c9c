#ifndef FAULTKEEPER_COMMON_DATABASE_CONFIGURATIONFORMAT_H
#define FAULTKEEPER_COMMON_DATABASE_CONFIGURATIONFORMAT_H

#include "Common/database/ConfigurationRules.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/TriggerSet.h>

#include <string>

namespace Faultkeeper
{

/// The words of configuration files, and what may stand where. The database and the patterns read the words
/// from here; whoever checks or describes files without loading them reads the tables as well. Files in the
/// field use all of them: append only.
namespace ConfigurationFormat
{
// Elements of the list of modules.
inline constexpr const char* kFaultkeeper = "Faultkeeper";
inline constexpr const char* kErrorList = "ErrorList";
inline constexpr const char* kModule = "Module"; // also the top element of a module's file

// Elements of a module's file.
inline constexpr const char* kSubModule = "SubModule";
inline constexpr const char* kProblem = "Problem";
inline constexpr const char* kError = "Error";
inline constexpr const char* kText = "Text";
inline constexpr const char* kServiceDescription = "ServiceDescription"; // notes for technicians, not read
inline constexpr const char* kTriggerSets = "TriggerSets";
inline constexpr const char* kTriggerSet = "TriggerSet";
inline constexpr const char* kOptions = "Options";
inline constexpr const char* kOption = "Option";
inline constexpr const char* kTriggers = "Triggers";
inline constexpr const char* kTrigger = "Trigger";

// Elements of the patterns.
inline constexpr const char* kErrorPatterns = "ErrorPatterns"; // usual name; any will do
inline constexpr const char* kPatterns = "Patterns";
inline constexpr const char* kPattern = "pattern";
inline constexpr const char* kPatternError = "error"; // likewise

// Attributes.
inline constexpr const char* kIdentifier = "identifier";
inline constexpr const char* kFile = "file";
inline constexpr const char* kSeverity = "severity";
inline constexpr const char* kVisible = "visible";
inline constexpr const char* kFullScreen = "fullScreen";
inline constexpr const char* kForceShutdown = "forceShutdown";
inline constexpr const char* kIncludeServiceNumber = "includeServiceNumber";
inline constexpr const char* kShouldBeep = "shouldBeep";
inline constexpr const char* kShouldBeepIfGuiding = "shouldBeepIfGuiding";
inline constexpr const char* kType = "type";
inline constexpr const char* kContent = "text";
inline constexpr const char* kName = "name";
inline constexpr const char* kValue = "value";
inline constexpr const char* kId = "id";
inline constexpr const char* kFixedCode = "fixedCode";
inline constexpr const char* kAllowPartialMatch = "allowPartialMatch";

/// What a flag says when it is on; everything else is off.
inline constexpr const char* kFlagOn = "yes";
inline constexpr const char* kFlagOff = "no"; // what people write for it

// Options of a trigger set.
inline constexpr const char* kAutoTrigger = "autoTrigger";
inline constexpr const char* kTriggersNeeded = "triggersNeeded";
inline constexpr const char* kErrorLinking = "errorLinking";
inline constexpr const char* kTitleSource = "titleSource";
inline constexpr const char* kOptionNames[] = {kAutoTrigger, kTriggersNeeded, kErrorLinking, kTitleSource};

/// What an option's word sets; other words leave the setting as it is.
struct SLinkingWord
{
    const char* word;
    EErrorLinkingMode mode;
};
inline constexpr SLinkingWord kLinkingWords[] = {
    {"verbose", eelmVerbose},
    {"shallow", eelmShallow},
    {"childOnly", eelmChildOnly},
};
inline constexpr const char* kTitleFromTrigger = "trigger";

// What listings call the setting of a set that was not told; written out, they leave it as it is.
inline constexpr const char* kUsualLinking = "deep";
inline constexpr const char* kUsualTitle = "parent";

/// A text of an error: the word in its "type", the rule that it must be there (null: it may be left out), and
/// where it is kept.
struct STextForm
{
    const char* type;
    const SConfigurationRule* required;
    void (CError::*set)(const std::string&);
    const std::string& (CError::*get)() const;
};
inline constexpr STextForm kTextForms[] = {
    {"problem", &ConfigurationRules::kErrorHasProblemText, &CError::ProblemText, &CError::ProblemText},
    {"solution", &ConfigurationRules::kErrorHasSolutionText, &CError::SolutionText, &CError::SolutionText},
    {"shortProblem", &ConfigurationRules::kErrorHasShortProblemText, &CError::ShortProblemText,
     &CError::ShortProblemText},
    {"title", nullptr, &CError::TitleText, &CError::TitleText},
};

/// What the value of an attribute is.
enum EAttributeValues
{
    eavAnything = 0,
    eavFile,
    eavModule,
    eavSubModule,
    eavProblem,
    eavFailureMode,
    eavSeverity,
    eavFlag,
    eavTextType,
    eavOptionName,
    eavErrorId, ///< four fields, the failure mode as a number
};

struct SAttributeForm
{
    const char* name = nullptr; ///< null behind an element's last one
    EAttributeValues values = eavAnything;
    bool required = false;
};

inline constexpr int kMostAttributes = 8;

/// What is left to the author.
enum EElementFreedom
{
    eefNothing = 0,
    eefName,    ///< of the element; the one listed is usual
    eefContent, ///< whatever stands in the element is skipped
};

/// An element and where it stands.
struct SElementForm
{
    const char* name;
    const char* parent; ///< null: it is the top element
    /// Broken by a child that is not listed; null: such a child is skipped.
    const SConfigurationRule* onlyKnown;
    SAttributeForm attributes[kMostAttributes];
    EElementFreedom freedom = eefNothing;
};

inline constexpr SElementForm kListElements[] = {
    {kFaultkeeper, nullptr, nullptr, {}},
    {kErrorList, kFaultkeeper, &ConfigurationRules::kListHoldsModules, {}},
    {kModule, kErrorList, nullptr, {{kIdentifier, eavModule, true}, {kFile, eavFile, true}}},
};

inline constexpr SElementForm kModuleElements[] = {
    {kModule, nullptr, &ConfigurationRules::kModuleHoldsSubModules, {}},
    {kSubModule, kModule, &ConfigurationRules::kSubModuleHoldsProblems, {{kIdentifier, eavSubModule, true}}},
    {kProblem, kSubModule, &ConfigurationRules::kProblemHoldsErrors, {{kIdentifier, eavProblem, true}}},
    {kError,
     kProblem,
     &ConfigurationRules::kErrorHoldsTexts,
     {{kIdentifier, eavFailureMode, true},
      {kSeverity, eavSeverity, true},
      {kVisible, eavFlag},
      {kFullScreen, eavFlag},
      {kForceShutdown, eavFlag},
      {kIncludeServiceNumber, eavFlag},
      {kShouldBeep, eavFlag},
      {kShouldBeepIfGuiding, eavFlag}}},
    {kText, kError, nullptr, {{kType, eavTextType, true}, {kContent, eavAnything, true}}},
    {kServiceDescription, kError, nullptr, {}, eefContent},
    {kTriggerSets, kError, &ConfigurationRules::kTriggerSetsHoldTriggerSets, {}},
    {kTriggerSet, kTriggerSets, nullptr, {}},
    {kOptions, kTriggerSet, &ConfigurationRules::kOptionsHoldOptions, {}},
    {kOption, kOptions, nullptr, {{kName, eavOptionName, true}, {kValue, eavAnything, true}}},
    {kTriggers, kTriggerSet, &ConfigurationRules::kTriggersHoldTriggers, {}},
    {kTrigger, kTriggers, nullptr, {{kId, eavErrorId, true}}},
};

inline constexpr SElementForm kPatternElements[] = {
    {kErrorPatterns, nullptr, nullptr, {}, eefName},
    {kPatterns, kErrorPatterns, nullptr, {}},
    {kPattern, kPatterns, nullptr, {{kFixedCode, eavAnything, true}, {kAllowPartialMatch, eavFlag}}},
    {kPatternError, kPattern, nullptr, {{kId, eavErrorId, true}}, eefName},
};
} // namespace ConfigurationFormat

} // namespace Faultkeeper

#endif
