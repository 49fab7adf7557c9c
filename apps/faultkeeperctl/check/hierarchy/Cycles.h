#ifndef FAULTKEEPERCTL_CHECK_HIERARCHY_CYCLES_H
#define FAULTKEEPERCTL_CHECK_HIERARCHY_CYCLES_H

#include "faultkeeperctl/check/hierarchy/Hierarchy.h"

#include <vector>

namespace Faultkeeper::Apps
{

/// So many cycles that each error which is on any is on one of these, and each of them has an error that is
/// on none before it. Short ones come first. Each begins with its error that is loaded first, which stands
/// there only, and goes downward. Which cycles these are does not depend on the order in which errors and
/// links are loaded. Cost: a walk over all links for each error that is on a cycle or above one.
std::vector<CHierarchy::Errors> FindCycles(const CHierarchy& hierarchy);

} // namespace Faultkeeper::Apps

#endif
