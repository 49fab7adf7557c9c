#pragma once

#include <Faultkeeper/ErrorDatabase.h>

#include <list>
#include <map>
#include <utility>

namespace Benchmarks
{

/// The grouping step as it is put into words: passes over the list, each error compared with each member.
void GroupLiterally(const std::list<const Faultkeeper::CError*>& errors,
                    std::list<const Faultkeeper::CError*>& tops);

/// The four lists of top errors, made by walking the index and grouping four times.
class CLiteralTree
{
public:
    /// @param database  borrowed
    explicit CLiteralTree(const Faultkeeper::CErrorDatabase& database);

    /// Makes all lists anew and takes back the changed marks.
    void Update();

    const std::list<const Faultkeeper::CError*>& Active() const { return m_activeTops; }
    const std::list<const Faultkeeper::CError*>& Inactive() const { return m_inactiveTops; }

private:
    using Errors = std::list<const Faultkeeper::CError*>;

    // Errors of the database by identifier; the marks are taken back, so these are not const.
    std::map<std::pair<int, int>, Faultkeeper::CError*> m_index;
    Errors m_activeTops;
    Errors m_changedActiveTops;
    Errors m_inactiveTops;
    Errors m_changedInactiveTops;
};

} // namespace Benchmarks
