#include "faultkeeperctl/reasons/SetStates.h"

#include "common/text/ErrorNames.h"

#include <Faultkeeper/Error.h>

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
void Append(std::string& text, const std::string& reason)
{
    text += (text.empty() ? "" : "; ") + reason;
}
} // namespace

int SSetState::Missing() const
{
    return Satisfied() ? 0 : std::max(needed, 1) - active;
}

std::vector<SSetState> SetStates(const CError& error)
{
    std::vector<SSetState> states;
    for (const CTriggerSet& set : error.TriggerSets())
    {
        SSetState state;
        state.number = static_cast<int>(states.size()) + 1;
        state.automatic = set.AutoTrigger();
        state.needed = set.TriggersRequired();
        state.triggers = static_cast<int>(set.Triggers().size());
        state.active =
            static_cast<int>(std::count_if(set.Triggers().begin(), set.Triggers().end(),
                                           [](const CError* trigger) { return trigger->Active(); }));
        states.push_back(state);
    }
    return states;
}

std::string SetText(const SSetState& set)
{
    return "set " + std::to_string(set.number) + " has " + std::to_string(set.active) + " of " +
           std::to_string(set.triggers) + " active and needs " + std::to_string(set.needed);
}

// A raise takes one set that is satisfied, a clear all of them.
std::string WhyFollowed(const CError& error, const CError& trigger)
{
    std::string text;
    const std::vector<SSetState> states = SetStates(error);
    for (std::size_t i = 0; i < states.size(); ++i)
    {
        if (states[i].automatic && (!trigger.Active() || error.TriggerSets()[i].Raised(&trigger)))
            Append(text, SetText(states[i]));
    }
    return text;
}

std::string WhyNotFollowed(const CError& error, const CError& trigger)
{
    std::string text;
    const std::vector<SSetState> states = SetStates(error);
    for (std::size_t i = 0; i < states.size(); ++i)
    {
        const CTriggerSet& set = error.TriggerSets()[i];
        if (!set.AutoTrigger())
            continue;
        if (set.HasTrigger(&trigger) && (trigger.Active() || !set.Cleared(&trigger)))
            Append(text, SetText(states[i]));
        else if (!set.HasTrigger(&trigger) && !trigger.Active())
            Append(text, "set " + std::to_string(states[i].number) + " does not hold " +
                             ErrorName(trigger.ProblemCode(), trigger.ProblemType()));
    }
    if (!text.empty())
        return text;
    const bool automatic =
        std::any_of(states.begin(), states.end(), [](const SSetState& state) { return state.automatic; });
    return automatic ? "no automatic set holds " + ErrorName(trigger.ProblemCode(), trigger.ProblemType())
                     : "none of its sets is automatic";
}

} // namespace Faultkeeper::Apps
