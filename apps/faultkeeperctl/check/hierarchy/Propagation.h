#ifndef FAULTKEEPERCTL_CHECK_HIERARCHY_PROPAGATION_H
#define FAULTKEEPERCTL_CHECK_HIERARCHY_PROPAGATION_H

#include "faultkeeperctl/check/hierarchy/Hierarchy.h"

#include <vector>

namespace Faultkeeper::Apps
{

/// The errors of a configuration as reports raise and clear them, with what follows by automatic sets.
class CPropagation
{
public:
    /// Nothing is active at first.
    /// @param hierarchy  borrowed
    explicit CPropagation(const CHierarchy& hierarchy)
        : m_hierarchy(hierarchy), m_active(hierarchy.Model().errors.size(), 0)
    {
    }

    bool Active(std::size_t error) const { return m_active[error] != 0; }

    /// No effect on one that is active already.
    void Raise(std::size_t error);
    /// No effect on one that is not active.
    void Clear(std::size_t error);

private:
    void Change(std::size_t error, bool active);
    bool Follows(std::size_t parent, std::size_t child) const;
    bool IsRaisedBy(std::size_t parent, std::size_t child) const;
    bool IsClearedBy(std::size_t parent, std::size_t child) const;
    bool IsSatisfied(const CHierarchy::SSet& set) const;

    const CHierarchy& m_hierarchy;
    std::vector<char> m_active;
};

} // namespace Faultkeeper::Apps

#endif
