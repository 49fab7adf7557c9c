#include "faultkeeperctl/check/reading/ReferenceReader.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"

#include "Common/Numbers.h"

#include <Core/Utilities/SplitString.h>

#include <functional>

namespace Faultkeeper::Apps
{

using namespace ConfigurationFormat;
using namespace ConfigurationRules;

namespace
{
constexpr const char* kFormHint = "it takes four fields, Module:Sub-module:Problem:Failure mode, such as "
                                  "\"Positioning:GPS:No Data:2\"";
constexpr std::size_t kModeField = 3;
constexpr const char* kWhiteSpace = " \t\n\v\f\r";

/// A field that holds a name.
struct SNameField
{
    const char* what;
    const std::vector<SNamedValue>& (*names)();
    const SConfigurationRule& rule; // for triggers
};

const SNameField kNameFields[] = {
    {"module", &ModuleNames, kTriggerModuleIsKnown},
    {"sub-module", &SubModuleNames, kTriggerSubModuleIsKnown},
    {"problem", &ProblemNames, kTriggerProblemIsKnown},
};

typedef std::function<void(const SConfigurationRule&, const SMessage&)> Tell;

bool Split(const std::string& text, std::vector<std::string>& fields, const Tell& tell)
{
    if (!Core::Utilities::SplitString(text, ":", fields, 0))
        tell(kTriggerIdSplits, SMessage{"the id " + QuotedTyped(text) + " cannot be split at its colons"});
    else if (fields.size() != kModeField + 1)
        tell(kTriggerIdHasFourFields,
             SMessage{"the id " + QuotedTyped(text) + " has " + std::to_string(fields.size()) +
                      (fields.size() == 1 ? " field: " : " fields: ") + kFormHint});
    else
        return true;
    return false;
}

/// Value of a name, or of the one that comes nearest; -1 if none does.
int ValueOf(const SNameField& field, const std::string& name, bool& guessed, const Tell& tell)
{
    const auto named = [&field](const std::string& wanted)
    {
        for (const SNamedValue& row : field.names())
        {
            if (row.name == wanted)
                return row.value;
        }
        return -1;
    };
    const int value = named(name);
    if (value >= 0)
        return value;
    const SMessage unknown = UnknownName(field.what, name, NamesOf(field.names()), " in an id");
    guessed = true;
    tell(field.rule, unknown);
    return named(unknown.suggestion);
}

/// Reads the names of the split text.
void ReadNames(const std::vector<std::string>& fields, SReference& reference, const Tell& tell)
{
    int code = 0;
    for (std::size_t i = 0; i < kModeField; ++i)
        code |= ValueOf(kNameFields[i], fields[i], reference.guessed, tell);
    reference.id = ErrorId(code, NumberOrZero(fields[kModeField]));
    reference.doubtful = reference.guessed;
}

/// Number of the failure mode whose name comes nearest; -1 if none does.
int NearestMode(const std::string& field)
{
    const std::string nearest = NearestName(field, NamesOf(FailureModeNames()));
    for (const SNamedValue& mode : FailureModeNames())
    {
        if (mode.name == nearest)
            return mode.value;
    }
    return -1;
}

/// Failure modes are names where errors are defined, but numbers where they are named; no blanks stand around
/// the colons.
void CheckMode(const std::string& field, SReference& reference, CFindings& findings)
{
    if (IsWholeNumber(field) && field.find_first_of(kWhiteSpace) == std::string::npos)
        return;
    const int meant = NearestMode(field);
    const std::string number = meant < 0 ? "" : std::to_string(meant);
    const std::string question = number.empty() ? "" : "; did you mean \"" + number + "\"?";
    findings.Warning(reference.place,
                     SMessage{"the failure mode in an id is a number, but here it is " + QuotedTyped(field) +
                                  ", which is read as " + std::to_string(reference.id.second) + question,
                              number});
    reference.doubtful = true;
    int read = 0;
    if (meant < 0 && ReadNumber(field, read))
        return;
    reference.guessed = true;
    reference.id.second = meant;
}

SReference Begun(const CElement& element)
{
    SReference reference;
    reference.place = element.Place(kId);
    reference.text = element.Value(kId);
    return reference;
}
} // namespace

bool IsWholeNumber(const std::string& text)
{
    const std::size_t start = text.find_first_not_of(kWhiteSpace);
    if (start == std::string::npos)
        return false;
    const std::size_t digits = start + (text[start] == '+' || text[start] == '-' ? 1 : 0);
    return digits < text.size() && text.find_first_not_of("0123456789", digits) == std::string::npos;
}

SReference ReadTriggerReference(const CElement& element, CFindings& findings)
{
    SReference reference = Begun(element);
    const Tell tell = [&](const SConfigurationRule& rule, const SMessage& message)
    { findings.BrokenRule(reference.place, rule, message); };
    std::vector<std::string> fields;
    if (reference.text.empty())
        tell(kTriggerHasId, SMessage{element.Lacks(kId)});
    else if (Split(reference.text, fields, tell))
    {
        ReadNames(fields, reference, tell);
        CheckMode(fields[kModeField], reference, findings);
    }
    return reference;
}

bool ReadPatternReference(const CElement& element, CFindings& findings, SReference& reference)
{
    SReference read = Begun(element);
    const Tell tell = [&](const SConfigurationRule&, const SMessage& message)
    { findings.Warning(read.place, message); };
    std::vector<std::string> fields;
    if (read.text.empty() && !element.HasMisspelled(kId))
        findings.Warning(read.place, element.Lacks(kId) + " and is not read");
    if (read.text.empty() || !Split(read.text, fields, tell))
        return false;
    ReadNames(fields, read, tell);
    CheckMode(fields[kModeField], read, findings);
    reference = read;
    return true;
}

} // namespace Faultkeeper::Apps
