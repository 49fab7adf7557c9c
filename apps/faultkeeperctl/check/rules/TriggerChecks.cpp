#include "faultkeeperctl/check/rules/Checks.h"

#include "common/text/TypedText.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

namespace
{
void CheckTargets(const STriggerSetModel& set, const SConfigurationModel& model, CFindings& findings)
{
    for (const SReference& trigger : set.triggers)
    {
        const std::string meant = trigger.meant == kNoError ? "" : model.errors[trigger.meant].Name();
        if (trigger.toItself)
            findings.Warning(trigger.place, "the error " + QuotedTyped(trigger.text) +
                                                " links to itself: the trigger is skipped");
        else if (model.LeadsNowhere(trigger))
            findings.Warning(trigger.place, UndefinedError(trigger, meant));
    }
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

bool SameSets(const STriggerSetModel& left, const STriggerSetModel& right)
{
    return left.autoTrigger == right.autoTrigger && left.needed == right.needed &&
           left.linking == right.linking && left.title == right.title && left.Linked() == right.Linked();
}

void CheckSameSets(const std::vector<STriggerSetModel>& sets, const SConfigurationModel& model,
                   CFindings& findings)
{
    for (auto later = sets.begin(); later != sets.end(); ++later)
    {
        const auto earlier = std::find_if(
            sets.begin(), later, [later](const STriggerSetModel& set) { return SameSets(set, *later); });
        if (earlier != later && !later->Linked().empty() && model.IsCertain(*earlier) &&
            model.IsCertain(*later))
            findings.Warning(later->place, "this set is the same as the one in line " +
                                               std::to_string(earlier->place.line) +
                                               ": each of its triggers stands in the tree twice");
    }
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

SMessage UndefinedError(const SReference& reference, const std::string& meant)
{
    return {"no error " + QuotedTyped(reference.text) + " is defined" +
                (meant.empty() ? "" : "; did you mean \"" + meant + "\"?"),
            meant};
}

void CheckTriggers(const SConfigurationModel& model, CFindings& findings)
{
    for (const SDefinition& error : model.errors)
    {
        for (const STriggerSetModel& set : error.sets)
        {
            CheckTargets(set, model, findings);
            CheckRepeated(set, findings);
            CheckEmpty(set, model, findings);
        }
        CheckSameSets(error.sets, model, findings);
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
