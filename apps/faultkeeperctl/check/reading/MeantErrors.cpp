#include "faultkeeperctl/check/reading/MeantErrors.h"

#include "common/text/NearestName.h"

#include <algorithm>
#include <iterator>

namespace Faultkeeper::Apps
{

namespace
{
/// Names that may stand in a set in the place of one that leads nowhere: those of the errors that are neither
/// in the set nor its owner.
std::vector<std::string> NamesBeside(const SDefinition& owner, const STriggerSetModel& set,
                                     const std::vector<std::string>& names, const SConfigurationModel& model)
{
    std::set<std::string> taken = {owner.Name()};
    for (const std::size_t trigger : set.Linked())
        taken.insert(model.errors[trigger].Name());
    std::vector<std::string> beside;
    std::remove_copy_if(names.begin(), names.end(), std::back_inserter(beside),
                        [&taken](const std::string& name) { return taken.count(name) != 0; });
    return beside;
}

/// The index and its names are in the same order.
std::size_t ErrorCalled(const std::string& name, const std::vector<std::string>& names,
                        const SConfigurationModel& model)
{
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? kNoError : std::next(model.index.begin(), found - names.begin())->second;
}

/// @param names  of all errors
void FindMeantBy(const SDefinition& owner, STriggerSetModel& set, const std::vector<std::string>& names,
                 const SConfigurationModel& model)
{
    std::vector<std::string> beside;
    for (SReference& trigger : set.triggers)
    {
        if (trigger.target == kNoError && trigger.meantMode >= 0)
            trigger.meant = model.Find(ErrorId(trigger.id.first, trigger.meantMode));
        if (!model.LeadsNowhere(trigger))
            continue;
        if (beside.empty())
            beside = NamesBeside(owner, set, names, model);
        trigger.meant = ErrorCalled(NearestName(trigger.text, beside), names, model);
    }
}
} // namespace

void FindMeantErrors(SConfigurationModel& model)
{
    const std::vector<std::string> names = model.Names();
    for (SDefinition& error : model.errors)
    {
        for (STriggerSetModel& set : error.sets)
            FindMeantBy(error, set, names, model);
    }
}

} // namespace Faultkeeper::Apps
