#pragma once

#include <Faultkeeper/Identifiers.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Benchmarks
{

/// The coordinates of one measured error.
struct SMeasuredId
{
    Faultkeeper::EModuleIdentifier module;
    Faultkeeper::ESubModuleIdentifier subModule;
    Faultkeeper::EProblemIdentifier problem;
    Faultkeeper::EProblemType type;

    std::pair<int, int> Pair() const { return {int{module} | int{subModule} | int{problem}, type}; }
    /// "Positioning:GPS:No Data:2"
    std::string Name() const;
};

/// So many different identifiers in ascending order, spread over all modules. At most 100 000 or so.
std::vector<SMeasuredId> MakeIds(std::size_t count);

/// The same as pairs.
std::vector<std::pair<int, int>> MakeIdPairs(std::size_t count);

} // namespace Benchmarks
