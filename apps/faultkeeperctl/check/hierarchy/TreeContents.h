#ifndef FAULTKEEPERCTL_CHECK_HIERARCHY_TREECONTENTS_H
#define FAULTKEEPERCTL_CHECK_HIERARCHY_TREECONTENTS_H

#include "faultkeeperctl/check/hierarchy/Hierarchy.h"

#include <vector>

namespace Faultkeeper::Apps
{

/// For each error, whether what its triggers say can be read anywhere: in its own tree, or in one above it.
/// @param perhaps  also if only a slip that was told hides it
std::vector<char> FindShown(const CHierarchy& hierarchy, bool perhaps);

/// For each error, whether it stands in a tree by a shallow link, which leaves out what its triggers say.
std::vector<char> FindShownAlone(const CHierarchy& hierarchy, const std::vector<char>& shown);

/// For each error, whether what is below it may give a tree its title.
std::vector<char> FindTitlesBelow(const CHierarchy& hierarchy);

} // namespace Faultkeeper::Apps

#endif
