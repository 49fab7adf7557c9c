#include "faultkeeperctl/check/ConfigurationModel.h"

#include "Common/database/ConfigurationFormat.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

namespace
{
/// May the reference name an error that cannot be made out?
bool MayLink(const SReference& reference, const SConfigurationModel& model)
{
    return !reference.toItself && reference.target == kNoError && reference.meant == kNoError &&
           !model.LeadsNowhere(reference);
}
} // namespace

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

bool SConfigurationModel::IsReplaced(std::size_t error) const
{
    return errors[error].identified && Find(errors[error].id) != error;
}

bool SConfigurationModel::MayExist(const ErrorId& id) const
{
    const bool unidentified = unidentifiedModes.count(id.second) != 0 || unidentifiedModes.count(-1) != 0;
    return !listed || unidentified || index.count(id) != 0 || meant.count(id) != 0 ||
           unreadModules.count(id.first & kModuleMask) != 0 || unreadModules.count(-1) != 0;
}

bool SConfigurationModel::LeadsNowhere(const SReference& reference) const
{
    return !reference.doubtful && !reference.toItself && reference.target == kNoError &&
           !MayExist(reference.id);
}

bool STriggerSetModel::DoubtsWhatClears() const
{
    return Doubts(ConfigurationFormat::kAutoTrigger) || Doubts(ConfigurationFormat::kTriggersNeeded);
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

bool SConfigurationModel::KnowsAllLinks() const
{
    const auto known = [this](const STriggerSetModel& set)
    {
        return set.whole &&
               std::none_of(set.triggers.begin(), set.triggers.end(),
                            [this](const SReference& trigger) { return MayLink(trigger, *this); });
    };
    return listed && unreadModules.empty() &&
           std::all_of(errors.begin(), errors.end(),
                       [&known](const SDefinition& error) {
                           return error.setsWhole && std::all_of(error.sets.begin(), error.sets.end(), known);
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
