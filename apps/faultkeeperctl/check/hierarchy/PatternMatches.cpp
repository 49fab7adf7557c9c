#include "faultkeeperctl/check/hierarchy/PatternMatches.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::uint64_t kLargestPosition = std::numeric_limits<std::int32_t>::max();
}

CPatternMatches::CPatternMatches(const CHierarchy& hierarchy)
    : m_hierarchy(hierarchy), m_positions(hierarchy.Model().errors.size(), 1)
{
    for (const std::size_t error : hierarchy.FromLeaves())
    {
        for (const std::size_t trigger : hierarchy.Triggers(error))
            m_positions[error] = std::min(m_positions[error] + m_positions[trigger], kLargestPosition);
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

/// All errors that have to be cleared, from the leaves upward.
std::vector<std::size_t> CPatternMatches::Hindering(const SPatternModel& pattern,
                                                    const CPropagation& raised) const
{
    Errors active = ErrorsOf(pattern);
    std::vector<std::size_t> hindering;
    for (std::size_t error = 0; error < m_positions.size(); ++error)
    {
        Errors more = active;
        if (!raised.Active(error) || !more.insert(error).second)
            continue;
        if (Equals(pattern, more))
            active = more;
        else
            hindering.push_back(error);
    }
    std::stable_sort(hindering.begin(), hindering.end(),
                     [this](std::size_t left, std::size_t right)
                     { return m_positions[left] < m_positions[right]; });
    return hindering;
}

bool CPatternMatches::Equals(const SPatternModel& pattern, const Errors& active) const
{
    const std::size_t top = TopOf(active);
    if (top == kNoError || ErrorsOf(pattern).count(top) == 0)
        return false;
    const std::vector<ErrorId> ids = pattern.SortedIds();
    std::vector<ErrorId> collected;
    Collect(top, active, ids.size(), collected);
    std::sort(collected.begin(), collected.end());
    return collected == ids;
}

/// The error that heads the tree of those that are active, or kNoError if they are none or form several. An
/// error that is defined again stands in no tree.
std::size_t CPatternMatches::TopOf(const Errors& active) const
{
    const SConfigurationModel& model = m_hierarchy.Model();
    std::vector<std::size_t> waiting;
    std::copy_if(active.begin(), active.end(), std::back_inserter(waiting),
                 [&model](std::size_t error) { return model.Find(model.errors[error].id) == error; });
    if (waiting.empty())
        return kNoError;
    std::sort(waiting.begin(), waiting.end(),
              [&model](std::size_t left, std::size_t right)
              { return model.errors[left].id < model.errors[right].id; });
    Errors related = {waiting.front()};
    std::size_t top = waiting.front();
    while (Join(waiting, related, top))
    {
    }
    return waiting.empty() ? top : kNoError;
}

/// One pass through those that wait, in the order of their identifiers: what is related to one that has
/// joined joins as well. Of several with the largest position the first one to join stays the top.
/// @return true if one has joined
bool CPatternMatches::Join(std::vector<std::size_t>& waiting, Errors& related, std::size_t& top) const
{
    const std::size_t before = waiting.size();
    std::vector<std::size_t> left;
    for (const std::size_t error : waiting)
    {
        if (related.count(error) == 0)
        {
            left.push_back(error);
            continue;
        }
        related.insert(m_hierarchy.Triggers(error).begin(), m_hierarchy.Triggers(error).end());
        related.insert(m_hierarchy.Parents(error).begin(), m_hierarchy.Parents(error).end());
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
