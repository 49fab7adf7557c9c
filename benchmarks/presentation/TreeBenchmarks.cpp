#include "common/Registration.h"
#include "presentation/Benchmarks.h"
#include "presentation/Screen.h"
#include "presentation/TreeCopies.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <string>
#include <utility>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
using Trees = std::vector<SErrorTree>;

void BuildTrees(benchmark::State& state, bool useTextKeys)
{
    CScreen screen(SizeOf(state));
    Trees trees;
    for (auto _ : state)
        CErrorPresentation::GetErrorTree(screen.View(), screen.Overlay(), screen.Tops(), trees, useTextKeys);
    state.counters["trees"] = static_cast<double>(trees.size());
}

void CopyBuiltTrees(benchmark::State& state, bool useTextKeys)
{
    CScreen screen(SizeOf(state));
    CopyTrees(state, screen.Trees(useTextKeys));
}

/// All trees of the screen, from their keys alone.
void RebuildTrees(benchmark::State& state)
{
    CScreen screen(SizeOf(state));
    const Trees trees = screen.Trees(false);
    for (auto _ : state)
    {
        for (const SErrorTree& tree : trees)
        {
            SErrorTree rebuilt;
            std::vector<std::string> lines;
            std::vector<std::pair<int, int>> codes;
            CErrorPresentation::RegenerateErrorTree(tree.stateKey, screen.Database(), screen.View(), rebuilt,
                                                    lines, codes, false);
            benchmark::DoNotOptimize(lines.data());
        }
    }
}

void CopyRebuiltTrees(benchmark::State& state)
{
    CScreen screen(SizeOf(state));
    const Trees trees = screen.Trees(false);
    Trees rebuilt(trees.size());
    std::vector<std::vector<std::string>> lines(trees.size());
    std::vector<std::vector<std::pair<int, int>>> codes(trees.size());
    for (std::size_t place = 0; place < trees.size(); ++place)
        CErrorPresentation::RegenerateErrorTree(trees[place].stateKey, screen.Database(), screen.View(),
                                                rebuilt[place], lines[place], codes[place], false);
    for (auto _ : state)
    {
        for (std::size_t place = 0; place < trees.size(); ++place)
        {
            // Finding the top error in the table takes its lock.
            screen.Bare().Lock();
            screen.Bare().Unlock();
            benchmark::DoNotOptimize(SErrorTree(rebuilt[place]));
            benchmark::DoNotOptimize(std::vector<std::string>(lines[place]));
            benchmark::DoNotOptimize(std::vector<std::pair<int, int>>(codes[place]));
        }
    }
}
} // namespace

void RegisterTrees()
{
    const Sizes larger{2000, 20000}; // each tree looks through all patterns, so 100 000 take seconds
    RegisterGrowing(
        "build-trees/ours", [](benchmark::State& state) { BuildTrees(state, false); }, larger);
    RegisterGrowing(
        "build-trees/base", [](benchmark::State& state) { CopyBuiltTrees(state, false); }, larger);
    RegisterGrowing(
        "build-trees-keys/ours", [](benchmark::State& state) { BuildTrees(state, true); }, larger);
    RegisterGrowing(
        "build-trees-keys/base", [](benchmark::State& state) { CopyBuiltTrees(state, true); }, larger);
    // A key names the record of its top, so there are no more than the table holds.
    Register("rebuild-trees/ours", RebuildTrees, TableSizes());
    Register("rebuild-trees/base", CopyRebuiltTrees, TableSizes());
}

} // namespace Benchmarks
