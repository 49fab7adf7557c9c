#ifndef FAULTKEEPERCTL_CHECK_CHECKER_H
#define FAULTKEEPERCTL_CHECK_CHECKER_H

#include "faultkeeperctl/check/Findings.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// What is wrong with a configuration, all of it at once.
struct SCheckResult
{
    std::vector<SCheckFinding> findings; ///< in the order in which they are told
    std::size_t files = 0;               ///< that were looked at

    std::size_t Errors() const;
    std::size_t Warnings() const { return findings.size() - Errors(); }

    /// The finding over which the library would end the process that loads this, or null.
    const SCheckFinding* FirstBrokenRule() const;
};

/// Reads every file of a configuration and tells what is wrong, without loading anything. It knows the rules
/// and words of the library, so that it finds a broken rule exactly if loading ends the process.
/// @param prefix     put in front of every file name as it stands, so it ends with a "/"
/// @param lineWidth  columns of a line, for which texts may be too wide; 0: as wide as it takes
SCheckResult CheckConfiguration(const std::string& prefix, int lineWidth);

} // namespace Faultkeeper::Apps

#endif
