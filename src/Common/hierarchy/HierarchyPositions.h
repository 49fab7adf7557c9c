#ifndef FAULTKEEPER_COMMON_HIERARCHY_HIERARCHYPOSITIONS_H
#define FAULTKEEPER_COMMON_HIERARCHY_HIERARCHYPOSITIONS_H

#include <cstddef>
#include <vector>

namespace Faultkeeper
{

class CError;

/// Works out the positions of all errors of a database, each after all of its triggers.
///
/// The result is that of walking upward from the leaves level by level and recalculating every parent that is
/// met, which visits an error once for each path to it; here each link is looked at a few
/// times however many paths there are (more often only to name cycles). Errors that are not above any leaf
/// keep their position.
class CHierarchyPositions
{
public:
    /// @param errors  borrowed; all their triggers and parents are among them
    explicit CHierarchyPositions(std::vector<CError>& errors);

    /// Recalculates all positions.
    /// @return one error of each cycle that was found, the one with the least identifier; empty if there is
    /// none
    std::vector<const CError*> Calculate();

private:
    std::size_t PlaceOf(const CError* error) const;
    void CountLinks();
    void MarkAboveLeaves();
    void SettleReady();
    void Settle(std::size_t place);
    const CError* FindOnCycle();
    bool FindStart();
    void LeaveSettled();
    void TakeStep(const CError* error);
    const CError* WaitedFor(const CError* error) const;

    std::vector<CError>& m_errors;
    std::vector<std::size_t> m_open;    // by place: links from triggers that are not settled yet
    std::vector<char> m_settled;        // by place
    std::vector<char> m_aboveLeaf;      // by place
    std::vector<std::size_t> m_ready;   // places without open links, to be settled
    std::size_t m_firstWaiting = 0;     // every place before it is settled
    std::vector<const CError*> m_way;   // down from an error that waits, each waiting for the next
    std::vector<std::size_t> m_wayStep; // by place: which step of the way, from 1; 0 for none
    std::size_t m_goodSteps = 0;        // of the way; behind them something has been settled
};

} // namespace Faultkeeper

#endif
