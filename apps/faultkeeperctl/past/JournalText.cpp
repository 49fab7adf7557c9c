#include "faultkeeperctl/past/JournalText.h"

#include "common/text/ErrorNames.h"
#include "common/text/TypedText.h"
#include "faultkeeperctl/text/TimeText.h"

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kDigits = 3;    // for people
constexpr int kAllDigits = 9; // for programs
constexpr std::int64_t kSecond = 1000000000;

std::string Origin(const STransition& transition)
{
    if (transition.caused)
        return " follows " + ErrorName(transition.causeCode, transition.causeType);
    if (transition.reason == eorConfiguration)
        return ", cleared with the configuration";
    if (transition.reason != eorNone)
        return ", taken from the table";
    return transition.session.empty() ? ", reported" : ", reported by " + WithoutControls(transition.session);
}

/// The same in one word for programs.
const char* OriginName(const STransition& transition)
{
    if (transition.reason == eorNone)
        return transition.caused ? "trigger" : "report";
    return transition.reason == eorConfiguration ? "configuration" : "table";
}
} // namespace

std::string TransitionText(const STransition& transition, const STransition* before)
{
    const bool restarted = before != nullptr && transition.sinceBoot < before->sinceBoot;
    return (restarted ? "(the machine was started again)\n" : "") + ExactTimeText(transition.time, kDigits) +
           (transition.raised ? " + " : " - ") + ErrorName(transition.problemCode, transition.problemType) +
           Origin(transition) + "\n";
}

Json TransitionDocument(const STransition& transition)
{
    Json document = IdDocument(transition.problemCode, transition.problemType);
    document["number"] = transition.number;
    document["raised"] = transition.raised;
    document["changedTime"] = ExactTimeText(transition.time, kAllDigits);
    document["changedSeconds"] = WholeSeconds(transition.time);
    document["sinceBootSeconds"] = transition.sinceBoot / kSecond;
    document["origin"] = OriginName(transition);
    document["cause"] = transition.caused ? IdDocument(transition.causeCode, transition.causeType) : Json();
    document["session"] = transition.session.empty() ? Json() : Json(transition.session);
    return document;
}

} // namespace Faultkeeper::Apps
