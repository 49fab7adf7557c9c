#include "faultkeeperctl/check/rules/Hierarchy.h"

#include <algorithm>
#include <set>

namespace Faultkeeper::Apps
{

namespace
{
/// How far a search has come with an error: what is below it has not been looked at, is, or was.
enum ESearchState : char
{
    essNew = 0,
    essOpen,
    essClosed
};
} // namespace

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
    std::vector<Errors> cycles;
    std::set<Errors> told;
    for (const SLink& link : ClosingLinks())
    {
        Errors cycle = ShortestWay(link.trigger, link.error);
        std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end()), cycle.end());
        if (told.insert(cycle).second)
            cycles.push_back(cycle);
    }
    return cycles;
}

/// The links that lead back to where the search came from. Each cycle has one of them.
std::vector<CHierarchy::SLink> CHierarchy::ClosingLinks() const
{
    std::vector<char> states(m_triggers.size(), essNew);
    for (const std::size_t error : m_fromLeaves)
        states[error] = essClosed;
    std::vector<SLink> links;
    std::vector<std::size_t> followed(m_triggers.size(), 0); // how many links of each error
    for (std::size_t start = 0; start < states.size(); ++start)
    {
        Errors way;
        if (states[start] == essNew)
            way.push_back(start);
        while (!way.empty())
        {
            const std::size_t error = way.back();
            states[error] = essOpen;
            if (followed[error] == m_triggers[error].size())
            {
                states[error] = essClosed;
                way.pop_back();
                continue;
            }
            const std::size_t trigger = m_triggers[error][followed[error]++];
            if (states[trigger] == essOpen)
                links.push_back({error, trigger});
            if (states[trigger] == essNew)
                way.push_back(trigger);
        }
    }
    return links;
}

/// Looks in all directions at once. There is a way, and it ends elsewhere than it begins.
CHierarchy::Errors CHierarchy::ShortestWay(std::size_t first, std::size_t last) const
{
    Errors from(m_triggers.size(), kNoError);
    Errors met = {first};
    from[first] = first;
    for (std::size_t next = 0; from[last] == kNoError; ++next)
    {
        for (const std::size_t trigger : m_triggers[met[next]])
        {
            if (from[trigger] != kNoError)
                continue;
            from[trigger] = met[next];
            met.push_back(trigger);
        }
    }
    Errors way = {last};
    while (way.back() != first)
        way.push_back(from[way.back()]);
    std::reverse(way.begin(), way.end());
    return way;
}

} // namespace Faultkeeper::Apps
