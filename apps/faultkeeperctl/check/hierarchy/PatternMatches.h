#ifndef FAULTKEEPERCTL_CHECK_HIERARCHY_PATTERNMATCHES_H
#define FAULTKEEPERCTL_CHECK_HIERARCHY_PATTERNMATCHES_H

#include "faultkeeperctl/check/hierarchy/Hierarchy.h"
#include "faultkeeperctl/check/hierarchy/Propagation.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

namespace Faultkeeper::Apps
{

/// Tells which combinations of errors can stand in one tree. The errors of a tree are its top and the active
/// triggers below it, down to and including those of shallow sets.
class CPatternMatches
{
public:
    /// @param hierarchy  borrowed; certain if it is to be asked
    explicit CPatternMatches(const CHierarchy& hierarchy);

    /// Can a tree hold all errors of the pattern, and perhaps others?
    bool CanHold(const SPatternModel& pattern) const;

    /// Can a tree hold the errors of the pattern, each as often as it is listed, and no others?
    /// @param pattern  with at least one id
    bool CanEqual(const SPatternModel& pattern) const;

    /// For a pattern that a tree can equal: the errors that its errors raise, and beside which there is no
    /// such tree. It takes that they were cleared on their own; those that are cleared along are left out.
    std::vector<std::size_t> InTheWay(const SPatternModel& pattern) const;

private:
    typedef std::set<std::size_t> Errors;
    typedef std::vector<char> Marks; // of all errors

    static Errors ErrorsOf(const SPatternModel& pattern);
    bool Equals(const SPatternModel& pattern, const Errors& active) const;
    bool HoldsBelow(std::size_t top, const Errors& wanted) const;
    std::vector<std::size_t> Hindering(const SPatternModel& pattern, const CPropagation& raised) const;
    std::vector<std::size_t> RaisedAlong(const Errors& wanted, const CPropagation& raised) const;
    Errors GroupOf(std::size_t error, const Errors& active) const;
    std::size_t TopOf(const Errors& group) const;
    bool Join(std::vector<std::size_t>& waiting, Marks& related, std::size_t& top) const;
    void Collect(std::size_t error, const Errors& active, std::size_t most,
                 std::vector<ErrorId>& collected) const;

    const CHierarchy& m_hierarchy;
    std::vector<std::uint64_t> m_positions; // the largest of a group heads the tree
};

} // namespace Faultkeeper::Apps

#endif
