#ifndef FAULTKEEPER_COMMON_HIERARCHY_ERRORGROUPS_H
#define FAULTKEEPER_COMMON_HIERARCHY_ERRORGROUPS_H

#include "Common/hierarchy/ErrorGrouping.h"
#include "Common/hierarchy/ErrorLinks.h"

#include <list>
#include <memory_resource>
#include <unordered_map>
#include <vector>

namespace Faultkeeper
{

/// Groups any list of errors, those of one database most quickly, and keeps what was allocated for the next
/// list.
///
/// Ownership: errors are borrowed during a call. Threads: one at a time.
class CErrorGroups
{
public:
    /// @param errors  borrowed; the database's own, which are found by where they stand instead of by look-up
    explicit CErrorGroups(const std::vector<CError>& errors)
        : m_own(errors), m_grouping(m_listed, m_positions, m_links),
          m_ownPlaces(errors.size(), CErrorLinks::kNowhere)
    {
    }

    /// @param errors  left as they are; one listed twice is two errors that are related to the same others
    /// @param tops    replaced; not the same list as `errors`
    void Group(const std::list<const CError*>& errors, std::list<const CError*>& tops);

private:
    typedef CErrorLinks::Place Place;

    void List(const std::list<const CError*>& errors);
    void Forget();
    void CollectLinks();
    Place& PlaceOf(const CError* error);
    Place FindPlace(const CError* error) const;
    bool Own(const CError* error) const;

    const std::vector<CError>& m_own;
    CErrorGrouping::Errors m_listed; // by place
    std::vector<int> m_positions;    // likewise
    CErrorLinks m_links;
    CErrorGrouping m_grouping;
    std::vector<Place> m_ownPlaces; // by where the error stands in m_own; kNowhere between calls
    std::pmr::unsynchronized_pool_resource m_strangersMemory; // is allocated once and not given back
    std::pmr::unordered_map<const CError*, Place> m_strangers{&m_strangersMemory}; // empty between calls
    std::vector<Place> m_firstPlaces; // by place: the first one of the same error
    std::vector<char> m_waits;
    CErrorGrouping::Errors m_tops;
};

} // namespace Faultkeeper

#endif
