#include <Faultkeeper/ErrorDatabase.h>

#include "Common/hierarchy/ErrorGroups.h"
#include "Common/hierarchy/ErrorTops.h"

#include <functional>
#include <list>
#include <memory>

namespace Faultkeeper
{

void CErrorDatabase::UpdateErrorTree()
{
    if (!m_stateTouched && !m_linksTouched && !m_parentsHandedOut)
    {
        m_changedActiveErrors.clear(); // the marks were taken back by the call before
        m_changedInactiveErrors.clear();
        return;
    }
    if (m_tops == nullptr)
        m_tops = std::make_unique<CErrorTops>(m_errors, m_index);
    if (m_linksTouched || m_parentsHandedOut)
        m_tops->LinksChanged();
    m_tops->Take();
    m_tops->Group(true, false, m_activeErrors);
    m_tops->Group(true, true, m_changedActiveErrors);
    m_tops->Group(false, false, m_inactiveErrors);
    m_tops->Group(false, true, m_changedInactiveErrors);
    m_tops->TakeBackMarks();
    m_stateTouched = false; // last: a call that ran out of memory is made up for by the next one
    m_linksTouched = false;
}

void CErrorDatabase::UpdateErrorTree(std::list<const CError*>& errors, std::list<const CError*>& tops)
{
    if (&errors == &tops)
        return tops.clear(); // the list of tops is emptied first, and then there is nothing to group
    if (m_groups == nullptr)
        m_groups = std::make_unique<CErrorGroups>(m_errors);
    m_groups->Group(errors, tops);
}

/// Who has a list of parents in hand may change it at any time from now on.
void CErrorDatabase::ParentsHandedOut(const CError& error)
{
    const std::less<const CError*> before; // copies of errors lie elsewhere
    const CError* const first = m_errors.data();
    m_parentsHandedOut =
        m_parentsHandedOut || (!before(&error, first) && before(&error, first + m_errors.size()));
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
