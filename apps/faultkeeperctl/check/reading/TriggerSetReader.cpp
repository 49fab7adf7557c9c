#include "faultkeeperctl/check/reading/TriggerSetReader.h"

#include "faultkeeperctl/check/reading/ReferenceReader.h"

#include "common/text/TypedText.h"

#include "Common/Numbers.h"

#include <algorithm>
#include <iterator>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;
using namespace ConfigurationRules;

namespace
{
std::vector<std::string> OptionNames()
{
    return {std::begin(kOptionNames), std::end(kOptionNames)};
}

std::vector<std::string> LinkingNames()
{
    std::vector<std::string> names = {kUsualLinking};
    for (const SLinkingWord& word : kLinkingWords)
        names.emplace_back(word.word);
    return names;
}
} // namespace

void CTriggerSetReader::Read(const CElement& triggerSets)
{
    if (!triggerSets.VisitChildren(m_findings, [this](const CElement& child) { ReadSet(child); }))
        m_model.errors[m_error].setsWhole = false;
}

void CTriggerSetReader::ReadSet(const CElement& triggerSet)
{
    STriggerSetModel set;
    set.place = triggerSet.Place();
    set.neededPlace = set.place;
    m_optionLines.clear();
    bool partsWhole = true;
    const bool whole =
        triggerSet.VisitChildren(m_findings,
                                 [&](const CElement& child)
                                 {
                                     const bool options = child.Is(kOptions);
                                     const bool all = child.VisitChildren(
                                         m_findings, [&](const CElement& entry)
                                         { options ? ReadOption(entry, set) : ReadTrigger(entry, set); });
                                     partsWhole = partsWhole && all;
                                 });
    set.whole = whole && partsWhole;
    m_model.errors[m_error].sets.push_back(set);
}

void CTriggerSetReader::ReadOption(const CElement& option, STriggerSetModel& set)
{
    const std::string& name = option.Value(kName);
    const std::string& value = option.Value(kValue);
    if (name.empty())
        m_findings.BrokenRule(option.Place(kName), kOptionHasName, option.Lacks(kName));
    if (value.empty())
        m_findings.BrokenRule(option.Place(kValue), kOptionHasValue, option.Lacks(kValue));
    if (name.empty())
        set.doubtful.insert(std::begin(kOptionNames), std::end(kOptionNames));
    else if (value.empty())
        set.doubtful.insert(name);
    if (name.empty() || value.empty())
        return;
    const auto added = m_optionLines.emplace(name, option.Place().line);
    if (!added.second)
        m_findings.Warning(option.Place(kName), "the option " + QuotedTyped(name) +
                                                    " was given before, in line " +
                                                    std::to_string(added.first->second));
    ApplyOption(option, set);
}

void CTriggerSetReader::ApplyOption(const CElement& option, STriggerSetModel& set)
{
    const std::string& name = option.Value(kName);
    if (name == kAutoTrigger)
        ApplyAutomatic(option, set);
    else if (name == kTriggersNeeded)
        ApplyThreshold(option, set);
    else if (name == kErrorLinking)
        ApplyLinking(option, set);
    else if (name == kTitleSource)
        ApplyTitle(option, set);
    else
        TellUnknown(option, set);
}

void CTriggerSetReader::TellUnknown(const CElement& option, STriggerSetModel& set)
{
    const SMessage unknown = UnknownName("option", option.Value(kName), OptionNames());
    m_findings.Warning(option.Place(kName), unknown);
    if (!unknown.suggestion.empty())
        set.doubtful.insert(unknown.suggestion);
}

void CTriggerSetReader::ApplyAutomatic(const CElement& option, STriggerSetModel& set)
{
    const std::string& value = option.Value(kValue);
    set.autoTrigger = value == kFlagOn;
    const SMessage strange = StrangeFlag(kAutoTrigger, value);
    if (strange.text.empty())
        return;
    m_findings.Warning(option.Place(kValue), strange);
    if (strange.suggestion != kFlagOff)
        set.doubtful.insert(kAutoTrigger);
}

void CTriggerSetReader::ApplyThreshold(const CElement& option, STriggerSetModel& set)
{
    const std::string& value = option.Value(kValue);
    set.needed = NumberOrZero(value);
    set.neededPlace = option.Place(kValue);
    if (IsWholeNumber(value))
        return;
    m_findings.Warning(set.neededPlace, "\"triggersNeeded\" is " + QuotedTyped(value) +
                                            ", which is read as " + std::to_string(set.needed));
    set.doubtful.insert(kTriggersNeeded);
}

void CTriggerSetReader::ApplyLinking(const CElement& option, STriggerSetModel& set)
{
    const std::string& value = option.Value(kValue);
    const auto word = std::find_if(std::begin(kLinkingWords), std::end(kLinkingWords),
                                   [&value](const SLinkingWord& known) { return value == known.word; });
    if (word != std::end(kLinkingWords))
        set.linking = word->mode;
    if (word != std::end(kLinkingWords) || value == kUsualLinking)
        return;
    m_findings.Warning(option.Place(kValue), UnknownName("way of linking", value, LinkingNames()));
    set.doubtful.insert(kErrorLinking);
}

void CTriggerSetReader::ApplyTitle(const CElement& option, STriggerSetModel& set)
{
    const std::string& value = option.Value(kValue);
    if (value == kTitleFromTrigger)
        set.title = eetsTrigger;
    if (value == kTitleFromTrigger || value == kUsualTitle)
        return;
    m_findings.Warning(option.Place(kValue),
                       UnknownName("source of titles", value, {kUsualTitle, kTitleFromTrigger}));
    set.doubtful.insert(kTitleSource);
}

void CTriggerSetReader::ReadTrigger(const CElement& trigger, STriggerSetModel& set)
{
    SReference reference = ReadTriggerReference(trigger, m_findings);
    const SDefinition& owner = m_model.errors[m_error];
    reference.toItself = owner.identified && !reference.guessed && reference.id == owner.id;
    if (!reference.toItself && !reference.guessed)
        reference.target = m_model.Find(reference.id);
    set.triggers.push_back(reference);
}

} // namespace Faultkeeper::Apps
