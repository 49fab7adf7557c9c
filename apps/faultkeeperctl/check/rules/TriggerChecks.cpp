#include "faultkeeperctl/check/rules/Checks.h"

#include "common/text/TypedText.h"

#include "Common/database/ConfigurationFormat.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
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

/// All by which a set differs from others; the order of its triggers does not matter for what it shows.
typedef std::tuple<bool, int, int, int, std::vector<std::size_t>> SetKey;

SetKey KeyOf(const CHierarchy::SSet& set)
{
    std::vector<std::size_t> triggers = set.triggers;
    std::sort(triggers.begin(), triggers.end());
    return SetKey(set.model->autoTrigger, set.model->needed, set.model->linking, set.model->title, triggers);
}

void CheckSameSets(const std::vector<CHierarchy::SSet>& sets, const SConfigurationModel& model,
                   CFindings& findings)
{
    std::map<SetKey, int> lines;
    for (const CHierarchy::SSet& set : sets)
    {
        if (set.triggers.empty() || !set.model->doubtful.empty() || !model.IsCertain(*set.model))
            continue;
        const auto added = lines.emplace(KeyOf(set), set.model->place.line);
        if (!added.second)
            findings.Warning(set.model->place, "this set is the same as the one in line " +
                                                   std::to_string(added.first->second) +
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

void CheckTriggers(const CHierarchy& hierarchy, CFindings& findings)
{
    const SConfigurationModel& model = hierarchy.Model();
    for (std::size_t error = 0; error < model.errors.size(); ++error)
    {
        for (const STriggerSetModel& set : model.errors[error].sets)
        {
            CheckTargets(set, model, findings);
            CheckRepeated(set, findings);
            CheckEmpty(set, model, findings);
        }
        CheckSameSets(hierarchy.Sets(error), model, findings);
    }
}

void CheckThresholds(const SConfigurationModel& model, CFindings& findings)
{
    for (const SDefinition& error : model.errors)
    {
        for (const STriggerSetModel& set : error.sets)
        {
            const bool known = model.IsCertain(set) && !set.Doubts(ConfigurationFormat::kTriggersNeeded);
            if (set.autoTrigger && !set.Linked().empty() && known)
                CheckThreshold(set, findings);
        }
    }
}

} // namespace Faultkeeper::Apps
