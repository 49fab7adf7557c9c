#include "store/TransitionCauses.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>

namespace Faultkeeper::Apps
{

namespace
{
bool Satisfies(const CError& child, const CError& parent, bool raised)
{
    const std::vector<CTriggerSet>& sets = parent.TriggerSets();
    const CError* const trigger = &child;
    if (raised)
        return std::any_of(sets.begin(), sets.end(),
                           [trigger](const CTriggerSet& set)
                           { return set.AutoTrigger() && set.Raised(trigger); });
    return std::all_of(sets.begin(), sets.end(),
                       [trigger](const CTriggerSet& set)
                       { return !set.AutoTrigger() || set.Cleared(trigger); });
}

bool Causes(const CError& child, const CError& parent, bool raised)
{
    const auto& parents = child.Parents();
    return std::find(parents.begin(), parents.end(), &parent) != parents.end() &&
           Satisfies(child, parent, raised);
}
} // namespace

const CError* CTransitionCauses::CauseOf(int problemCode, int problemType, bool raised)
{
    const CError* const error = m_database.RetrieveError(problemCode, problemType);
    // What the request was for stays: a definition that another one hides is nobody's parent.
    while (m_way.size() > 1 && (error == nullptr || !Causes(*m_way.back(), *error, raised)))
        m_way.pop_back();
    const CError* const cause = m_way.empty() ? nullptr : m_way.back();
    if (error != nullptr)
        m_way.push_back(error);
    return cause;
}

} // namespace Faultkeeper::Apps
