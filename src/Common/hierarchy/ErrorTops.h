#ifndef FAULTKEEPER_COMMON_HIERARCHY_ERRORTOPS_H
#define FAULTKEEPER_COMMON_HIERARCHY_ERRORTOPS_H

#include "Common/hierarchy/ErrorGrouping.h"
#include "Common/hierarchy/ErrorLinks.h"

#include <list>
#include <map>
#include <utility>
#include <vector>

namespace Faultkeeper
{

/// Groups the errors that a database finds by identifier, active and inactive ones apart. The links between
/// them are collected once and used until they change.
///
/// Ownership: errors and index are borrowed. Threads: one at a time.
class CErrorTops
{
public:
    typedef std::map<std::pair<int, int>, int> Index; // position of each error in the list, by identifier

    /// @param errors  at their final addresses
    CErrorTops(std::vector<CError>& errors, const Index& index);

    /// Has the links collected anew before the next grouping.
    void LinksChanged() { m_linksKnown = false; }

    /// Looks at the errors' present state. Comes before Group.
    void Take();

    /// @param active       group the active errors, or the others?
    /// @param changedOnly  only those with a changed mark
    /// @param tops         replaced; one of a few lists that are used time and again, as nodes are kept for
    /// them
    void Group(bool active, bool changedOnly, std::list<const CError*>& tops);

    /// Takes back the changed marks that Take has found.
    void TakeBackMarks();

private:
    typedef CErrorLinks::Place Place;

    void CollectLinks();
    void PutTopsInto(std::list<const CError*>& tops);
    std::list<const CError*>::iterator AppendNode(std::list<const CError*>& tops);

    std::vector<CError>& m_errors;
    std::vector<Place> m_places;     // by where the error stands in m_errors; kNowhere if it is not indexed
    CErrorGrouping::Errors m_listed; // in identifier order
    CErrorLinks m_links;
    bool m_linksKnown = false;
    CErrorGrouping m_grouping;    // looks at errors, positions and links
    std::vector<char> m_states;   // by place: bits for active and changed
    std::vector<int> m_positions; // likewise
    std::vector<char> m_waits;
    CErrorGrouping::Errors m_tops;
    std::list<const CError*> m_spareNodes; // of lists that have been longer
};

} // namespace Faultkeeper

#endif
