#include "faultkeeperctl/check/hierarchy/PatternMatches.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::uint64_t kLargestPosition = std::numeric_limits<std::int32_t>::max();
} // namespace

/// An error whose sets link nothing is no leaf: nothing is counted from it upward.
CPatternMatches::CPatternMatches(const CHierarchy& hierarchy)
    : m_hierarchy(hierarchy), m_positions(hierarchy.Model().errors.size(), 1)
{
    Marks fromLeaf(m_positions.size(), 0);
    for (const std::size_t error : hierarchy.FromLeaves())
    {
        const CHierarchy::Errors& triggers = hierarchy.Triggers(error);
        const bool aboveLeaf = std::any_of(triggers.begin(), triggers.end(),
                                           [&](std::size_t trigger) { return fromLeaf[trigger] != 0; });
        fromLeaf[error] = aboveLeaf || hierarchy.Sets(error).empty() ? 1 : 0;
        for (const std::size_t trigger : triggers)
        {
            if (aboveLeaf)
                m_positions[error] = std::min(m_positions[error] + m_positions[trigger], kLargestPosition);
        }
    }
}

CPatternMatches::Errors CPatternMatches::ErrorsOf(const SPatternModel& pattern)
{
    Errors errors;
    for (const SReference& reference : pattern.ids)
        errors.insert(reference.target);
    return errors;
}

bool CPatternMatches::CanHold(const SPatternModel& pattern) const
{
    const Errors wanted = ErrorsOf(pattern);
    for (std::size_t top = 0; top < m_positions.size(); ++top)
    {
        if (HoldsBelow(top, wanted))
            return true;
    }
    return false;
}

bool CPatternMatches::HoldsBelow(std::size_t top, const Errors& wanted) const
{
    Errors held = {top};
    Errors walked = {top};
    std::vector<std::size_t> next = {top};
    while (!next.empty())
    {
        const std::size_t error = next.back();
        next.pop_back();
        for (const CHierarchy::SSet& set : m_hierarchy.Sets(error))
        {
            for (const std::size_t trigger : set.triggers)
            {
                held.insert(trigger);
                if (set.model->linking != eelmShallow && walked.insert(trigger).second)
                    next.push_back(trigger);
            }
        }
    }
    return std::includes(held.begin(), held.end(), wanted.begin(), wanted.end());
}

// Any error may be active without those that it raises: they can be cleared on their own.
bool CPatternMatches::CanEqual(const SPatternModel& pattern) const
{
    return Equals(pattern, ErrorsOf(pattern));
}

std::vector<std::size_t> CPatternMatches::InTheWay(const SPatternModel& pattern) const
{
    CPropagation propagation(m_hierarchy);
    for (const std::size_t error : ErrorsOf(pattern))
        propagation.Raise(error);
    std::vector<std::size_t> inTheWay;
    for (const std::size_t hindering : Hindering(pattern, propagation))
    {
        if (propagation.Active(hindering))
            inTheWay.push_back(hindering);
        propagation.Clear(hindering);
    }
    std::sort(inTheWay.begin(), inTheWay.end());
    return inTheWay;
}

/// The errors that were raised along, from the leaves upward, so that the order of loading does not matter.
/// One that is defined again stands in no tree.
std::vector<std::size_t> CPatternMatches::RaisedAlong(const Errors& wanted, const CPropagation& raised) const
{
    const SConfigurationModel& model = m_hierarchy.Model();
    std::vector<std::size_t> along;
    for (std::size_t error = 0; error < m_positions.size(); ++error)
    {
        if (raised.Active(error) && wanted.count(error) == 0 && !model.IsReplaced(error))
            along.push_back(error);
    }
    std::sort(along.begin(), along.end(),
              [&](std::size_t left, std::size_t right)
              {
                  return std::make_pair(m_positions[left], model.errors[left].id) <
                         std::make_pair(m_positions[right], model.errors[right].id);
              });
    return along;
}

/// All errors that have to be cleared, from the leaves upward.
std::vector<std::size_t> CPatternMatches::Hindering(const SPatternModel& pattern,
                                                    const CPropagation& raised) const
{
    Errors active = ErrorsOf(pattern);
    const std::vector<std::size_t> along = RaisedAlong(active, raised);
    Errors all = active;
    all.insert(along.begin(), along.end());
    if (Equals(pattern, all))
        return {};
    std::vector<std::size_t> hindering;
    for (const std::size_t error : along)
    {
        active.insert(error);
        if (Equals(pattern, active))
            continue;
        active.erase(error);
        hindering.push_back(error);
    }
    return hindering;
}

/// Trees beside the one that holds the pattern's errors have codes of their own, and are no matter.
bool CPatternMatches::Equals(const SPatternModel& pattern, const Errors& active) const
{
    const Errors wanted = ErrorsOf(pattern);
    const std::size_t top = TopOf(GroupOf(*wanted.begin(), active));
    if (wanted.count(top) == 0)
        return false;
    const std::vector<ErrorId> ids = pattern.SortedIds();
    std::vector<ErrorId> collected;
    Collect(top, active, ids.size(), collected);
    std::sort(collected.begin(), collected.end());
    return collected == ids;
}

/// The active errors that are linked to this one, directly or by others of them, and itself.
CPatternMatches::Errors CPatternMatches::GroupOf(std::size_t error, const Errors& active) const
{
    Marks apart(m_positions.size(), 0);
    for (const std::size_t other : active)
        apart[other] = 1;
    apart[error] = 0;
    Errors group = {error};
    std::vector<std::size_t> next = {error};
    while (!next.empty())
    {
        const std::size_t member = next.back();
        next.pop_back();
        for (const auto* const linked : {&m_hierarchy.Triggers(member), &m_hierarchy.Parents(member)})
        {
            for (const std::size_t other : *linked)
            {
                if (apart[other] == 0)
                    continue;
                apart[other] = 0;
                group.insert(other);
                next.push_back(other);
            }
        }
    }
    return group;
}

/// The error that heads the tree of a group.
std::size_t CPatternMatches::TopOf(const Errors& group) const
{
    const SConfigurationModel& model = m_hierarchy.Model();
    std::vector<std::size_t> waiting(group.begin(), group.end());
    std::sort(waiting.begin(), waiting.end(),
              [&model](std::size_t left, std::size_t right)
              { return model.errors[left].id < model.errors[right].id; });
    Marks related(m_positions.size(), 0);
    related[waiting.front()] = 1;
    std::size_t top = waiting.front();
    while (Join(waiting, related, top))
    {
    }
    return top;
}

/// One pass through those that wait, in the order of their identifiers: what is related to one that has
/// joined joins as well. Of several with the largest position the first one to join stays the top.
/// @return true if one has joined
bool CPatternMatches::Join(std::vector<std::size_t>& waiting, Marks& related, std::size_t& top) const
{
    const std::size_t before = waiting.size();
    std::vector<std::size_t> left;
    for (const std::size_t error : waiting)
    {
        if (related[error] == 0)
        {
            left.push_back(error);
            continue;
        }
        for (const std::size_t trigger : m_hierarchy.Triggers(error))
            related[trigger] = 1;
        for (const std::size_t parent : m_hierarchy.Parents(error))
            related[parent] = 1;
        if (m_positions[error] > m_positions[top])
            top = error;
    }
    waiting = left;
    return waiting.size() < before;
}

/// Gives up behind so many: then there are too many in any case.
void CPatternMatches::Collect(std::size_t error, const Errors& active, std::size_t most,
                              std::vector<ErrorId>& collected) const
{
    collected.push_back(m_hierarchy.Model().errors[error].id);
    for (const CHierarchy::SSet& set : m_hierarchy.Sets(error))
    {
        for (const std::size_t trigger : set.triggers)
        {
            if (active.count(trigger) == 0 || collected.size() > most)
                continue;
            if (set.model->linking == eelmShallow)
                collected.push_back(m_hierarchy.Model().errors[trigger].id);
            else
                Collect(trigger, active, most, collected);
        }
    }
}

} // namespace Faultkeeper::Apps
