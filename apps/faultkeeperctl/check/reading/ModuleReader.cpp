#include "faultkeeperctl/check/reading/ModuleReader.h"

#include "faultkeeperctl/check/reading/ReferenceReader.h"

#include "common/text/TypedText.h"

#include <Faultkeeper/Identifiers.h>

#include <algorithm>
#include <iterator>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;
using namespace ConfigurationRules;

namespace
{
constexpr int kNotNear = -1;

int ValueIn(const std::vector<SNamedValue>& names, const std::string& name)
{
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&name](const SNamedValue& row) { return row.name == name; });
    return found == names.end() ? kNotNear : found->value;
}

SNameRead Joined(const SNameRead& left, const SNameRead& right)
{
    const bool near = left.value >= 0 && right.value >= 0;
    return {near ? left.value | right.value : kNotNear, left.known && right.known};
}

std::vector<std::string> TextTypes()
{
    std::vector<std::string> types;
    for (const STextForm& form : kTextForms)
        types.emplace_back(form.type);
    return types;
}
} // namespace

SNameRead ReadName(const CElement& element, const char* attribute, const std::string& what,
                   const std::vector<SNamedValue>& names, const SConfigurationRule& rule, CFindings& findings)
{
    const std::string& name = element.Value(attribute);
    const int value = ValueIn(names, name);
    if (value >= 0)
        return {value, true};
    const SMessage message =
        name.empty() ? SMessage{element.Lacks(attribute)} : UnknownName(what, name, NamesOf(names));
    findings.BrokenRule(element.Place(attribute), rule, message);
    return {ValueIn(names, message.suggestion), false};
}

void CModuleReader::Read(const SNameRead& module, const CElement& top)
{
    top.TellUnread(m_findings);
    if (!top.VisitChildren(m_findings, [&](const CElement& child) { ReadSubModule(module, child); }))
        m_model.unreadModules.insert(module.value);
}

void CModuleReader::ReadSubModule(const SNameRead& module, const CElement& subModule)
{
    const SNameRead name =
        ReadName(subModule, kIdentifier, "sub-module", SubModuleNames(), kSubModuleIsKnown, m_findings);
    const SNameRead code = Joined(module, name);
    if (!subModule.VisitChildren(m_findings, [&](const CElement& child) { ReadProblem(code, child); }))
        m_model.unreadModules.insert(module.value);
}

void CModuleReader::ReadProblem(const SNameRead& code, const CElement& problem)
{
    const SNameRead name =
        ReadName(problem, kIdentifier, "problem", ProblemNames(), kProblemIsKnown, m_findings);
    const SNameRead whole = Joined(code, name);
    if (!problem.VisitChildren(m_findings, [&](const CElement& child) { ReadError(whole, child); }))
        m_model.unreadModules.insert(code.value < 0 ? kNotNear : code.value & kModuleMask);
}

void CModuleReader::ReadError(const SNameRead& code, const CElement& error)
{
    SDefinition definition;
    definition.place = error.Place();
    definition.id.first = code.value;
    definition.visible = error.Value(kVisible) == kFlagOn;
    definition.mayBeVisible = error.MayBeOn(kVisible);
    definition.id.second = ReadFailureMode(error, definition);
    definition.identified = code.value >= 0 && definition.id.second >= 0;
    definition.guessed = !code.known;
    definition.severity =
        ReadName(error, kSeverity, "severity", SeverityNames(), kSeverityIsKnown, m_findings).value;
    ReadContent(error, definition);
    RequireTexts(definition);
    Define(definition);
}

/// @return as the library reads it; -1 if there is none
int CModuleReader::ReadFailureMode(const CElement& error, SDefinition& definition)
{
    const std::string& name = error.Value(kIdentifier);
    const int mode = TranslateProblemType(name);
    if (name.empty())
    {
        m_findings.BrokenRule(error.Place(kIdentifier), kErrorHasIdentifier, error.Lacks(kIdentifier));
        return kNotNear;
    }
    const bool exact = mode != eptUnknown && (IsWholeNumber(name) || ValueIn(FailureModeNames(), name) >= 0);
    if (exact)
        return mode;
    const SMessage unknown = UnknownName("failure mode", name, NamesOf(FailureModeNames()),
                                         ", so that the error gets number " + std::to_string(mode));
    m_findings.Warning(error.Place(kIdentifier), unknown);
    definition.meantMode = ValueIn(FailureModeNames(), unknown.suggestion);
    return mode;
}

void CModuleReader::ReadContent(const CElement& error, SDefinition& definition)
{
    const std::size_t before = m_pending.size();
    const bool all = error.VisitChildren(m_findings,
                                         [&](const CElement& child)
                                         {
                                             if (child.Is(kText))
                                                 ReadText(child, definition);
                                             else if (child.Is(kTriggerSets))
                                                 RememberSets(child, before, definition);
                                         });
    definition.titleWhole = definition.titleWhole && all;
    definition.setsWhole = definition.setsWhole && all;
}

/// Of several, the last one counts.
void CModuleReader::RememberSets(const CElement& triggerSets, std::size_t before, SDefinition& definition)
{
    if (m_pending.size() > before)
    {
        const CElement& earlier = m_pending.back().second;
        const bool emptied = triggerSets.IsEmpty() && !earlier.IsEmpty();
        m_findings.Warning(triggerSets.Place(), "a second \"TriggerSets\" in one error: the one in line " +
                                                    std::to_string(earlier.Place().line) + " is not read" +
                                                    (emptied ? ", and there is no \"TriggerSet\" here" : ""));
        definition.setsWhole = definition.setsWhole && earlier.IsEmpty();
        m_pending.pop_back();
    }
    m_pending.emplace_back(m_model.errors.size(), triggerSets);
}

void CModuleReader::ReadText(const CElement& text, SDefinition& definition)
{
    const std::string& type = text.Value(kType);
    const std::string& content = text.Value(kContent);
    if (type.empty())
        m_findings.BrokenRule(text.Place(kType), kTextHasType, text.Lacks(kType));
    if (content.empty())
        m_findings.BrokenRule(text.Place(kContent), kTextHasContent, text.Lacks(kContent));
    const std::vector<std::string> types = TextTypes();
    if (type.empty() || std::find(types.begin(), types.end(), type) == types.end())
    {
        const SMessage unknown = UnknownName("type of text", type, types);
        if (!type.empty())
            m_findings.Warning(text.Place(kType), unknown);
        const bool another = !unknown.suggestion.empty() && unknown.suggestion != kTitle;
        definition.titleWhole = definition.titleWhole && another;
        return;
    }
    const auto added = definition.texts.emplace(type, STextModel());
    if (!added.second)
        m_findings.Warning(text.Place(kType), "a second text \"" + type +
                                                  "\" in one error takes the place of the one in line " +
                                                  std::to_string(added.first->second.place.line));
    added.first->second = {text.Place(kContent), content};
}

void CModuleReader::RequireTexts(const SDefinition& definition)
{
    for (const STextForm& form : kTextForms)
    {
        if (form.required != nullptr && definition.texts.count(form.type) == 0)
            m_findings.BrokenRule(definition.place, *form.required,
                                  "this \"Error\" has no text \"" + std::string(form.type) + "\"");
    }
}

/// Two of which one is guessed are hardly the same: then nobody knows which one that is.
void CModuleReader::Define(const SDefinition& definition)
{
    m_model.errors.push_back(definition);
    const std::size_t before = m_model.Find(definition.id);
    if (before != kNoError && m_model.errors[before].guessed && !definition.guessed)
        Doubt(m_model.errors[before]);
    if (!definition.identified || (before != kNoError && definition.guessed))
    {
        Doubt(m_model.errors.back());
        return;
    }
    m_model.index[definition.id] = m_model.errors.size() - 1;
    if (definition.meantMode >= 0)
        m_model.meant.insert(ErrorId(definition.id.first, definition.meantMode));
}

/// The error may be any one of its failure mode.
void CModuleReader::Doubt(SDefinition& guessed)
{
    guessed.identified = false;
    m_model.unidentifiedModes.insert(guessed.id.second);
}

} // namespace Faultkeeper::Apps
