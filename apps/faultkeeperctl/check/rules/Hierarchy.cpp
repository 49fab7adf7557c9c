#include "faultkeeperctl/check/rules/Hierarchy.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

CHierarchy::CHierarchy(const SConfigurationModel& model)
    : m_model(model), m_triggers(model.errors.size()), m_parents(model.errors.size())
{
    for (std::size_t error = 0; error < model.errors.size(); ++error)
    {
        for (const STriggerSetModel& set : model.errors[error].sets)
        {
            for (const std::size_t trigger : set.Linked())
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

bool CHierarchy::Certain() const
{
    const auto certain = [this](const SDefinition& error)
    {
        return error.identified && error.meantMode < 0 &&
               std::all_of(error.sets.begin(), error.sets.end(),
                           [this](const STriggerSetModel& set) { return m_model.IsCertain(set); });
    };
    return m_fromLeaves.size() == m_triggers.size() &&
           std::all_of(m_model.errors.begin(), m_model.errors.end(), certain);
}

std::vector<CHierarchy::Errors> CHierarchy::Cycles() const
{
    std::vector<char> told(m_triggers.size(), 0);
    for (const std::size_t error : m_fromLeaves)
        told[error] = 1;
    std::vector<Errors> cycles;
    for (std::size_t error = 0; error < told.size(); ++error)
    {
        const Errors cycle = told[error] != 0 ? Errors() : CycleFrom(error);
        for (const std::size_t member : cycle)
            told[member] = 1;
        if (!cycle.empty())
            cycles.push_back(cycle);
    }
    return cycles;
}

/// Looks in all directions at once; empty if no way leads back.
CHierarchy::Errors CHierarchy::CycleFrom(std::size_t start) const
{
    Errors from(m_triggers.size(), kNoError);
    Errors met = {start};
    for (std::size_t next = 0; next < met.size() && from[start] == kNoError; ++next)
    {
        for (const std::size_t trigger : m_triggers[met[next]])
        {
            if (from[trigger] != kNoError)
                continue;
            from[trigger] = met[next];
            met.push_back(trigger);
        }
    }
    Errors cycle;
    for (std::size_t error = from[start]; error != kNoError && error != start; error = from[error])
        cycle.push_back(error);
    if (!cycle.empty())
        cycle.push_back(start);
    std::reverse(cycle.begin(), cycle.end());
    return cycle;
}

} // namespace Faultkeeper::Apps
