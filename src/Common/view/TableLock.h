#ifndef FAULTKEEPER_COMMON_VIEW_TABLELOCK_H
#define FAULTKEEPER_COMMON_VIEW_TABLELOCK_H

#include <Faultkeeper/ErrorDatabaseView.h>

namespace Faultkeeper
{

/// Holds the table lock for one scope. Touch the table only if Held().
class CTableLock
{
public:
    explicit CTableLock(CErrorDatabaseView& view) : m_view(view), m_held(view.GetLock(false)) {}
    ~CTableLock()
    {
        if (m_held)
            m_view.ReleaseLock();
    }
    CTableLock(const CTableLock&) = delete;
    CTableLock& operator=(const CTableLock&) = delete;

    bool Held() const { return m_held; }

private:
    CErrorDatabaseView& m_view;
    const bool m_held;
};

} // namespace Faultkeeper

#endif
