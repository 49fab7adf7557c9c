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
    return transition.session.empty() ? ", reported" : ", reported by " + WithoutControls(transition.session);
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
    document["cause"] = transition.caused ? IdDocument(transition.causeCode, transition.causeType) : Json();
    document["session"] = transition.session.empty() ? Json() : Json(transition.session);
    return document;
}

} // namespace Faultkeeper::Apps
