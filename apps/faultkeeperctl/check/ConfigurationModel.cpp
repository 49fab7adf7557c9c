#include "faultkeeperctl/check/ConfigurationModel.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

namespace
{
constexpr int kModuleMask = 0xFF0000;
}

std::vector<std::size_t> STriggerSetModel::Linked() const
{
    std::vector<std::size_t> linked;
    for (const SReference& trigger : triggers)
    {
        if (trigger.target != kNoError)
            linked.push_back(trigger.target);
    }
    return linked;
}

bool SDefinition::HasTitle() const
{
    return texts.count(kTitle) != 0;
}

std::vector<ErrorId> SPatternModel::SortedIds() const
{
    std::vector<ErrorId> sorted;
    for (const SReference& reference : ids)
        sorted.push_back(reference.id);
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

std::size_t SConfigurationModel::Find(const ErrorId& id) const
{
    const auto found = index.find(id);
    return found == index.end() ? kNoError : found->second;
}

bool SConfigurationModel::MayExist(const ErrorId& id) const
{
    const bool unidentified = unidentifiedModes.count(id.second) != 0 || unidentifiedModes.count(-1) != 0;
    return !listed || unidentified || index.count(id) != 0 || meant.count(id) != 0 ||
           unreadModules.count(id.first & kModuleMask) != 0;
}

bool SConfigurationModel::LeadsNowhere(const SReference& reference) const
{
    return !reference.doubtful && !reference.toItself && reference.target == kNoError &&
           !MayExist(reference.id);
}

bool SConfigurationModel::IsCertain(const STriggerSetModel& set) const
{
    return set.whole && std::all_of(set.triggers.begin(), set.triggers.end(),
                                    [this](const SReference& trigger)
                                    {
                                        return trigger.toItself || trigger.target != kNoError ||
                                               (LeadsNowhere(trigger) && trigger.meant == kNoError);
                                    });
}

std::vector<std::string> SConfigurationModel::Names() const
{
    std::vector<std::string> names;
    names.reserve(index.size());
    for (const auto& entry : index)
        names.push_back(ErrorName(entry.first.first, entry.first.second));
    return names;
}

} // namespace Faultkeeper::Apps
