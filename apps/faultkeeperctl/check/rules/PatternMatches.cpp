#include "faultkeeperctl/check/rules/PatternMatches.h"

#include <algorithm>
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
        for (const STriggerSetModel& set : m_hierarchy.Model().errors[error].sets)
        {
            for (const std::size_t trigger : set.Linked())
            {
                held.insert(trigger);
                if (set.linking != eelmShallow && walked.insert(trigger).second)
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
    Errors active = ErrorsOf(pattern);
    std::vector<std::size_t> inTheWay;
    for (const std::size_t raised : RaisedWith(active))
    {
        Errors more = active;
        if (!more.insert(raised).second)
            continue;
        if (Equals(pattern, more))
            active = more;
        else
            inTheWay.push_back(raised);
    }
    return inTheWay;
}

bool CPatternMatches::Equals(const SPatternModel& pattern, const Errors& active) const
{
    const std::vector<ErrorId> ids = pattern.SortedIds();
    for (const std::size_t top : ErrorsOf(pattern))
    {
        std::vector<ErrorId> collected;
        Collect(top, active, ids.size(), collected);
        std::sort(collected.begin(), collected.end());
        if (collected == ids && IsTop(top, active))
            return true;
    }
    return false;
}

/// Parents follow their triggers.
CPatternMatches::Errors CPatternMatches::RaisedWith(Errors active) const
{
    std::vector<std::size_t> next(active.begin(), active.end());
    while (!next.empty())
    {
        const std::size_t error = next.back();
        next.pop_back();
        for (const std::size_t parent : m_hierarchy.Parents(error))
        {
            if (active.count(parent) == 0 && IsRaised(parent, active))
            {
                active.insert(parent);
                next.push_back(parent);
            }
        }
    }
    return active;
}

bool CPatternMatches::IsRaised(std::size_t error, const Errors& active) const
{
    for (const STriggerSetModel& set : m_hierarchy.Model().errors[error].sets)
    {
        const std::vector<std::size_t> linked = set.Linked();
        const auto raised =
            std::count_if(linked.begin(), linked.end(),
                          [&active](std::size_t trigger) { return active.count(trigger) != 0; });
        if (set.autoTrigger && raised > 0 && set.needed <= raised)
            return true;
    }
    return false;
}

bool CPatternMatches::IsTop(std::size_t error, const Errors& active) const
{
    return std::all_of(active.begin(), active.end(),
                       [&](std::size_t other) { return m_positions[other] <= m_positions[error]; });
}

/// Gives up behind so many: then there are too many in any case.
void CPatternMatches::Collect(std::size_t error, const Errors& active, std::size_t most,
                              std::vector<ErrorId>& collected) const
{
    const SDefinition& definition = m_hierarchy.Model().errors[error];
    collected.push_back(definition.id);
    for (const STriggerSetModel& set : definition.sets)
    {
        for (const std::size_t trigger : set.Linked())
        {
            if (active.count(trigger) == 0 || collected.size() > most)
                continue;
            if (set.linking == eelmShallow)
                collected.push_back(m_hierarchy.Model().errors[trigger].id);
            else
                Collect(trigger, active, most, collected);
        }
    }
}

} // namespace Faultkeeper::Apps
