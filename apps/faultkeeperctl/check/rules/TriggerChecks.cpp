#include "faultkeeperctl/check/rules/Checks.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"

#include <set>

namespace Faultkeeper::Apps
{

namespace
{
void CheckTarget(const SReference& trigger, const SConfigurationModel& model, CFindings& findings)
{
    if (trigger.toItself)
        findings.Warning(trigger.place, "the error " + QuotedTyped(trigger.text) +
                                            " links to itself: the trigger is skipped");
    else if (model.LeadsNowhere(trigger))
        findings.Warning(trigger.place, UndefinedError(trigger, model));
}

void CheckRepeated(const STriggerSetModel& set, CFindings& findings)
{
    std::set<std::size_t> before;
    for (const SReference& trigger : set.triggers)
    {
        if (trigger.target != kNoError && !before.insert(trigger.target).second)
            findings.Warning(trigger.place,
                             QuotedTyped(trigger.text) + " stands twice in this set, and counts twice");
    }
}

void CheckEmpty(const STriggerSetModel& set, const SConfigurationModel& model, CFindings& findings)
{
    if (!model.IsCertain(set) || !set.Linked().empty())
        return;
    findings.Warning(set.place,
                     set.triggers.empty()
                         ? "this \"TriggerSet\" has no triggers"
                         : "this \"TriggerSet\" is left without triggers: none names another error");
}

void CheckThreshold(const STriggerSetModel& set, CFindings& findings)
{
    const std::size_t linked = set.Linked().size();
    if (set.needed <= 0)
        findings.Warning(set.neededPlace, "the threshold " + std::to_string(set.needed) +
                                              " is always met: any trigger raises the error, and it is never "
                                              "cleared by its triggers");
    else if (static_cast<std::size_t>(set.needed) > linked)
        findings.Warning(set.neededPlace, "the threshold " + std::to_string(set.needed) +
                                              " can never be met: the set has " + std::to_string(linked) +
                                              (linked == 1 ? " trigger" : " triggers"));
}
} // namespace

SMessage UndefinedError(const SReference& reference, const SConfigurationModel& model)
{
    const std::string nearest = NearestName(reference.text, model.Names());
    return {"no error " + QuotedTyped(reference.text) + " is defined" +
                (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?"),
            nearest};
}

void CheckTriggers(const SConfigurationModel& model, CFindings& findings)
{
    for (const SDefinition& error : model.errors)
    {
        for (const STriggerSetModel& set : error.sets)
        {
            for (const SReference& trigger : set.triggers)
                CheckTarget(trigger, model, findings);
            CheckRepeated(set, findings);
            CheckEmpty(set, model, findings);
        }
    }
}

void CheckThresholds(const SConfigurationModel& model, CFindings& findings)
{
    for (const SDefinition& error : model.errors)
    {
        for (const STriggerSetModel& set : error.sets)
        {
            if (set.autoTrigger && !set.Linked().empty() && model.IsCertain(set))
                CheckThreshold(set, findings);
        }
    }
}

} // namespace Faultkeeper::Apps
