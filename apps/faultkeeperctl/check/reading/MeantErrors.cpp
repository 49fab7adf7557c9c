#include "faultkeeperctl/check/reading/MeantErrors.h"

#include "faultkeeperctl/check/NearestErrors.h"

#include "common/text/NearestName.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

namespace Faultkeeper::Apps
{

namespace
{
typedef std::set<std::string> Names;

/// Names that are in a set of triggers already, or that of its owner: nobody means those by another one.
Names NamesIn(const SDefinition& owner, const STriggerSetModel& set, const SConfigurationModel& model)
{
    Names names = {owner.Name()};
    for (const std::size_t trigger : set.Linked())
        names.insert(model.errors[trigger].Name());
    return names;
}

/// @return "" if none comes near
std::string NearestBeside(const Names& taken, const std::string& typed, CNearestErrors& nearest)
{
    const std::string& known = nearest.To(typed);
    if (taken.count(known) == 0)
        return known;
    std::vector<std::string> beside;
    std::remove_copy_if(nearest.Names().begin(), nearest.Names().end(), std::back_inserter(beside),
                        [&taken](const std::string& name) { return taken.count(name) != 0; });
    return NearestName(typed, beside);
}

/// The index and its names are in the same order.
std::size_t ErrorCalled(const std::string& name, const std::vector<std::string>& names,
                        const SConfigurationModel& model)
{
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? kNoError : std::next(model.index.begin(), found - names.begin())->second;
}

/// @return kNoError if the guess is an error that somebody else means, or that is not there
std::size_t GuessedBeside(const Names& taken, const SReference& trigger, const SConfigurationModel& model)
{
    const std::size_t guessed = model.Find(trigger.id);
    return guessed == kNoError || taken.count(model.errors[guessed].Name()) != 0 ? kNoError : guessed;
}

void FindMeantBy(const SDefinition& owner, STriggerSetModel& set, CNearestErrors& nearest,
                 const SConfigurationModel& model)
{
    Names taken;                              // not made before somebody asks: sets can be many
    std::map<std::string, std::size_t> known; // of this set, by what was typed
    for (SReference& trigger : set.triggers)
    {
        if (!trigger.guessed && !model.LeadsNowhere(trigger))
            continue;
        if (taken.empty())
            taken = NamesIn(owner, set, model);
        if (trigger.guessed)
        {
            trigger.meant = GuessedBeside(taken, trigger, model);
            if (trigger.meant != kNoError)
                taken.insert(model.errors[trigger.meant].Name());
            continue;
        }
        const auto added = known.emplace(trigger.text, kNoError);
        if (added.second)
            added.first->second =
                ErrorCalled(NearestBeside(taken, trigger.text, nearest), nearest.Names(), model);
        trigger.meant = added.first->second;
    }
}
} // namespace

void FindMeantErrors(SConfigurationModel& model)
{
    CNearestErrors nearest(model.Names());
    for (SDefinition& error : model.errors)
    {
        for (STriggerSetModel& set : error.sets)
            FindMeantBy(error, set, nearest, model);
    }
}

} // namespace Faultkeeper::Apps
