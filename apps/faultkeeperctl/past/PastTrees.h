#ifndef FAULTKEEPERCTL_PAST_PASTTREES_H
#define FAULTKEEPERCTL_PAST_PASTTREES_H

#include "faultkeeperctl/past/PastState.h"

#include <Faultkeeper/ErrorTree.h>

#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// The trees that a screen would have shown, with the positions that the configuration gives. Only the time
/// of the raise is known of their history, if that.
/// @param database       nothing in it is active; afterwards, what was then is
/// @param configuration  directory of the patterns, with a slash at its end
std::vector<SErrorTree> PastTrees(const SPastState& state, CErrorDatabase& database,
                                  const std::string& configuration);

} // namespace Faultkeeper::Apps

#endif
