#include <Faultkeeper/ErrorDatabase.h>

#include "Common/database/ErrorGrouping.h"

#include <list>

namespace Faultkeeper
{

void CErrorDatabase::UpdateErrorTree()
{
    std::list<const CError*> active;
    std::list<const CError*> changedActive;
    std::list<const CError*> inactive;
    std::list<const CError*> changedInactive;
    for (const auto& entry : m_index)
    {
        CError& error = m_errors[static_cast<std::size_t>(entry.second)];
        (error.Active() ? active : inactive).push_back(&error);
        if (error.Changed())
            (error.Active() ? changedActive : changedInactive).push_back(&error);
        error.Changed(false);
    }
    UpdateErrorTree(active, m_activeErrors);
    UpdateErrorTree(changedActive, m_changedActiveErrors);
    UpdateErrorTree(inactive, m_inactiveErrors);
    UpdateErrorTree(changedInactive, m_changedInactiveErrors);
}

void CErrorDatabase::UpdateErrorTree(std::list<const CError*>& errors, std::list<const CError*>& tops)
{
    tops.clear();
    CErrorGrouping(errors).FindTops(tops);
}

void CErrorDatabase::SynchronisationComplete()
{
    UpdateErrorTree();
}

const std::list<const CError*>& CErrorDatabase::ActiveErrors(bool changedOnly) const
{
    return changedOnly ? m_changedActiveErrors : m_activeErrors;
}

const std::list<const CError*>& CErrorDatabase::InactiveErrors(bool changedOnly) const
{
    return changedOnly ? m_changedInactiveErrors : m_inactiveErrors;
}

} // namespace Faultkeeper
