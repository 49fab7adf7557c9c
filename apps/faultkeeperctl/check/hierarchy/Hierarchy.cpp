#include "faultkeeperctl/check/hierarchy/Hierarchy.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

CHierarchy::CHierarchy(const SConfigurationModel& model)
    : m_model(model), m_sets(model.errors.size()), m_triggers(model.errors.size()),
      m_parents(model.errors.size())
{
    for (std::size_t error = 0; error < model.errors.size(); ++error)
    {
        for (const STriggerSetModel& set : model.errors[error].sets)
        {
            m_sets[error].push_back({&set, set.Linked()});
            for (const std::size_t trigger : m_sets[error].back().triggers)
            {
                m_triggers[error].push_back(trigger);
                m_parents[trigger].push_back(error);
            }
        }
    }
    Sort();
}

void CHierarchy::Sort()
{
    std::vector<std::size_t> open(m_triggers.size());
    for (std::size_t error = 0; error < m_triggers.size(); ++error)
    {
        open[error] = m_triggers[error].size();
        if (open[error] == 0)
            m_fromLeaves.push_back(error);
    }
    for (std::size_t next = 0; next < m_fromLeaves.size(); ++next)
    {
        for (const std::size_t parent : m_parents[m_fromLeaves[next]])
        {
            if (--open[parent] == 0)
                m_fromLeaves.push_back(parent);
        }
    }
}

/// @param known  is it known of this set, whose triggers are, by which options it acts?
template <typename Known> bool CHierarchy::KnowsAllSets(const Known& known) const
{
    const auto whole = [&](const STriggerSetModel& set) { return m_model.IsCertain(set) && known(set); };
    return m_model.KnowsAllLinks() &&
           std::all_of(m_model.errors.begin(), m_model.errors.end(),
                       [&whole](const SDefinition& error)
                       { return std::all_of(error.sets.begin(), error.sets.end(), whole); });
}

bool CHierarchy::KnowsWhatClears() const
{
    return KnowsAllSets([](const STriggerSetModel& set) { return !set.DoubtsWhatClears(); });
}

bool CHierarchy::Certain() const
{
    return m_fromLeaves.size() == m_triggers.size() &&
           KnowsAllSets([](const STriggerSetModel& set) { return set.doubtful.empty(); }) &&
           std::all_of(m_model.errors.begin(), m_model.errors.end(),
                       [](const SDefinition& error) { return error.identified && error.meantMode < 0; });
}

} // namespace Faultkeeper::Apps
