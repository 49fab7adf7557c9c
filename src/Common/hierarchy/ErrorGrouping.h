#ifndef FAULTKEEPER_COMMON_HIERARCHY_ERRORGROUPING_H
#define FAULTKEEPER_COMMON_HIERARCHY_ERRORGROUPING_H

#include "Common/hierarchy/ErrorLinks.h"

#include <vector>

namespace Faultkeeper
{

/// Finds the groups of errors that are linked directly to each other, and the top of each.
///
/// A group starts with the first error that belongs to none yet and grows in passes over the errors behind
/// it: in a pass, every error that is related to a member joins, members of the same pass included, until a
/// pass adds nothing. `error.IsRelatedTo(member)` is asked, which looks at the error's own lists, so links
/// that were made in one direction only count in that direction. The top is the member with the largest
/// position; among equals the one that joined first, that is in the earlier pass, and within a pass the
/// earlier in the list.
///
/// Nothing is compared pass after pass: an error joins in the pass of the member it is related to if it
/// stands behind that member, otherwise in the next one, and the earliest pass wins. Cost: linear in errors
/// and links; what has been allocated is used again.
class CErrorGrouping
{
public:
    typedef CErrorLinks::Place Place;
    typedef std::vector<const CError*> Errors;

    /// @param errors     borrowed; by place, in the order that decides ties
    /// @param positions  borrowed; of these errors, side by side: errors lie far apart in memory
    /// @param links      borrowed; between these places
    CErrorGrouping(const Errors& errors, const std::vector<int>& positions, const CErrorLinks& links)
        : m_errors(errors), m_positions(positions), m_links(links)
    {
    }

    /// The one place where the links of an error are that stands at several.
    /// @param firstPlaces  borrowed; by place
    void Repeated(const std::vector<Place>& firstPlaces) { m_firstPlaces = &firstPlaces; }

    /// Groups those errors that wait.
    /// @param waits  by place, 1 or 0; all 0 afterwards
    /// @param tops   replaced: one for each group, in the order of the groups' first members
    void FindTops(std::vector<char>& waits, Errors& tops);

private:
    typedef std::vector<Place> Places;

    Place TopOfGroup(std::vector<char>& waits, Place first);
    void JoinPass(std::vector<char>& waits);
    void StartNextPass(std::vector<char>& waits);
    Place BetterTop(Place top) const;
    Place PlaceOfLinks(Place place) const;

    const Errors& m_errors;
    const std::vector<int>& m_positions;
    const CErrorLinks& m_links;
    const std::vector<Place>* m_firstPlaces = nullptr; // null: no error stands at several places
    Places m_pass;                                     // that have joined in this pass
    Places m_next;                                     // that join in the next one, unless they join before
};

} // namespace Faultkeeper

#endif
