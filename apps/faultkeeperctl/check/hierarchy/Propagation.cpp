#include "faultkeeperctl/check/hierarchy/Propagation.h"

#include <algorithm>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
bool Holds(const CHierarchy::SSet& set, std::size_t child)
{
    return std::find(set.triggers.begin(), set.triggers.end(), child) != set.triggers.end();
}
} // namespace

void CPropagation::Raise(std::size_t error)
{
    if (!Active(error))
        Change(error, true);
}

void CPropagation::Clear(std::size_t error)
{
    if (Active(error))
        Change(error, false);
}

/// Parents hear of it one after the other, and theirs before the next one.
void CPropagation::Change(std::size_t error, bool active)
{
    std::vector<std::pair<std::size_t, std::size_t>> changed; // with how many parents have heard of it
    const auto change = [&](std::size_t next)
    {
        m_active[next] = active ? 1 : 0;
        changed.emplace_back(next, 0);
    };
    change(error);
    while (!changed.empty())
    {
        const std::size_t child = changed.back().first;
        const CHierarchy::Errors& parents = m_hierarchy.Parents(child);
        if (changed.back().second == parents.size())
        {
            changed.pop_back();
            continue;
        }
        const std::size_t parent = parents[changed.back().second++];
        if (Active(parent) != active && Follows(parent, child))
            change(parent);
    }
}

/// The child has changed before.
bool CPropagation::Follows(std::size_t parent, std::size_t child) const
{
    return Active(child) ? IsRaisedBy(parent, child) : IsClearedBy(parent, child);
}

bool CPropagation::IsRaisedBy(std::size_t parent, std::size_t child) const
{
    const std::vector<CHierarchy::SSet>& sets = m_hierarchy.Sets(parent);
    return std::any_of(sets.begin(), sets.end(),
                       [&](const CHierarchy::SSet& set)
                       { return set.model->autoTrigger && Holds(set, child) && IsSatisfied(set); });
}

/// Every automatic set has to hold the child, and none of them may be satisfied without it.
bool CPropagation::IsClearedBy(std::size_t parent, std::size_t child) const
{
    const std::vector<CHierarchy::SSet>& sets = m_hierarchy.Sets(parent);
    const auto automatic = [](const CHierarchy::SSet& set) { return set.model->autoTrigger; };
    return std::any_of(sets.begin(), sets.end(), automatic) &&
           std::all_of(sets.begin(), sets.end(),
                       [&](const CHierarchy::SSet& set)
                       { return !automatic(set) || (Holds(set, child) && !IsSatisfied(set)); });
}

bool CPropagation::IsSatisfied(const CHierarchy::SSet& set) const
{
    return set.model->needed <= std::count_if(set.triggers.begin(), set.triggers.end(),
                                              [this](std::size_t trigger) { return Active(trigger); });
}

} // namespace Faultkeeper::Apps
