#pragma once

#include <Faultkeeper/ErrorTree.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace Benchmarks
{

/// What making such trees cannot do without: each iteration copies all of them.
inline void CopyTrees(benchmark::State& state, const std::vector<Faultkeeper::SErrorTree>& trees)
{
    for (auto _ : state)
    {
        std::vector<Faultkeeper::SErrorTree> copy;
        for (const Faultkeeper::SErrorTree& tree : trees)
            copy.push_back(tree);
        benchmark::DoNotOptimize(copy.data());
    }
}

} // namespace Benchmarks
