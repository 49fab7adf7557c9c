#ifndef FAULTKEEPER_COMMON_DATABASE_ERRORGROUPING_H
#define FAULTKEEPER_COMMON_DATABASE_ERRORGROUPING_H

#include <cstddef>
#include <list>
#include <unordered_map>
#include <vector>

namespace Faultkeeper
{

class CError;

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
/// stands behind that member, otherwise in the next one, and the earliest pass wins. Cost: near-linear in
/// errors and links.
class CErrorGrouping
{
public:
    /// @param errors  borrowed; one listed twice is two errors that are related to the same others
    explicit CErrorGrouping(const std::list<const CError*>& errors);

    /// Appends one top for each group, in the order of the groups' first members.
    void FindTops(std::list<const CError*>& tops);

private:
    typedef std::vector<std::size_t> Places;

    void CollectLinks();
    void AddLink(const CError* target, std::size_t place);
    const CError* TopOfGroup(std::size_t first);
    void JoinPass(Places& pass, Places& next);
    void ChooseTop(std::size_t candidate);

    std::vector<const CError*> m_errors;
    std::unordered_map<const CError*, Places>
        m_related;               // by member: places of the errors whose lists hold it
    std::vector<char> m_visited; // by place
    std::size_t m_top = 0;
};

} // namespace Faultkeeper

#endif
