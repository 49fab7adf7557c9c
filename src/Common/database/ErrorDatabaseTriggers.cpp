#include <Faultkeeper/ErrorDatabase.h>

#include "Common/Numbers.h"
#include "Common/XmlAttributes.h"
#include "Common/database/ConfigurationFormat.h"

#include <Core/IO/XMLNode.h>
#include <Core/Utilities/SplitString.h>

#include <iostream>
#include <string>
#include <vector>

namespace Faultkeeper
{

using namespace ConfigurationFormat;
using namespace ConfigurationRules;

namespace
{
void ApplyLinking(CTriggerSet& triggerSet, const std::string& value)
{
    for (const SLinkingWord& linking : kLinkingWords)
    {
        if (value == linking.word)
            triggerSet.LinkingMode(linking.mode);
    }
}

/// Options and words that are not known are passed over, so that older consoles read newer files.
void ApplyOption(CTriggerSet& triggerSet, const std::string& name, const std::string& value)
{
    if (name == kAutoTrigger)
        triggerSet.AutoTrigger(value == kFlagOn);
    else if (name == kTriggersNeeded)
        triggerSet.TriggersRequired(NumberOrZero(value));
    else if (name == kErrorLinking)
        ApplyLinking(triggerSet, value);
    else if (name == kTitleSource && value == kTitleFromTrigger)
        triggerSet.TitleSource(eetsTrigger);
}

/// Identifier of "module:sub-module:problem:failure mode"; ends the process if the text is not of that form.
std::pair<int, int> ReadTriggerId(const std::string& identifier)
{
    Require(!identifier.empty(), kTriggerHasId);
    std::vector<std::string> subStrings;
    Require(Core::Utilities::SplitString(identifier, ":", subStrings, 0), kTriggerIdSplits);
    Require(subStrings.size() == 4, kTriggerIdHasFourFields);
    const EModuleIdentifier moduleId = TranslateModuleId(subStrings[0]);
    const ESubModuleIdentifier subModuleId = TranslateSubModuleId(subStrings[1]);
    const EProblemIdentifier problemId = TranslateProblemId(subStrings[2]);
    Require(moduleId != emiUnknown, kTriggerModuleIsKnown);
    Require(subModuleId != esmiUnknown, kTriggerSubModuleIsKnown);
    Require(problemId != epiUnknown, kTriggerProblemIsKnown);
    const int code = static_cast<int>(moduleId) | static_cast<int>(subModuleId) | static_cast<int>(problemId);
    return {code, NumberOrZero(subStrings[3])};
}
} // namespace

void CErrorDatabase::LoadTriggerSet(CError& error, const Core::IO::XMLNode& triggerSetsNode)
{
    for (const Core::IO::XMLNode& node : triggerSetsNode.Children())
    {
        Require(node.Name() == kTriggerSet, kTriggerSetsHoldTriggerSets);
        CTriggerSet triggerSet(false, 1, eelmDeep, eetsParent);
        for (const Core::IO::XMLNode& child : node.Children())
        {
            if (child.Name() == kOptions)
                LoadTriggerSetOptions(triggerSet, child);
            else if (child.Name() == kTriggers)
                LoadTriggerSetTriggers(error, triggerSet, child);
        }
        error.AddTriggerSet(triggerSet);
    }
}

void CErrorDatabase::LoadTriggerSetOptions(CTriggerSet& triggerSet, const Core::IO::XMLNode& optionsNode)
{
    for (const Core::IO::XMLNode& optionNode : optionsNode.Children())
    {
        Require(optionNode.Name() == kOption, kOptionsHoldOptions);
        const std::string& name = Attribute(optionNode, kName);
        const std::string& value = Attribute(optionNode, kValue);
        Require(!name.empty(), kOptionHasName);
        Require(!value.empty(), kOptionHasValue);
        ApplyOption(triggerSet, name, value);
    }
}

void CErrorDatabase::LoadTriggerSetTriggers(CError& error, CTriggerSet& triggerSet,
                                            const Core::IO::XMLNode& triggersNode)
{
    for (const Core::IO::XMLNode& triggerNode : triggersNode.Children())
    {
        Require(triggerNode.Name() == kTrigger, kTriggersHoldTriggers);
        const std::string& identifier = Attribute(triggerNode, kId);
        const std::pair<int, int> id = ReadTriggerId(identifier);
        if (id.first == error.ProblemCode() && id.second == error.ProblemType())
        {
            std::cerr << "Error " << identifier << " links to itself" << std::endl;
            continue;
        }
        CError* const trigger = FindError(id.first, id.second);
        if (trigger == nullptr)
            continue; // an optional device's errors may be left out of a configuration
        triggerSet.AddTrigger(trigger);
        trigger->AddParent(&error);
    }
}

} // namespace Faultkeeper
