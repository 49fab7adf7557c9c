#ifndef FAULTKEEPERCTL_DIFFERENCE_H
#define FAULTKEEPERCTL_DIFFERENCE_H

#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// Where two texts differ, in the lines of a unified diff: "--- before", "+++ after", and for each place
/// "@@ -line,count +line,count @@" with three lines around it; empty if they are the same.
///
/// Fewest lines are marked as long as the differing middles have no more than some thousand lines each; of
/// larger ones all lines are.
std::vector<std::string> Difference(const std::string& beforeName, const std::string& before,
                                    const std::string& afterName, const std::string& after);

} // namespace Faultkeeper::Apps

#endif
