#pragma once

#include "subjects/Shapes.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Benchmarks
{

using Sizes = std::vector<std::int64_t>;
using Function = std::function<void(benchmark::State&)>;

/// Up to the most errors that the shared table holds.
Sizes TableSizes();

/// Beyond it, where the library allows as many.
Sizes LargerSizes();

/// Every benchmark is named "what/ours" or "what/base" and runs at each of the sizes; scripts/bench pairs and
/// judges them by that. Real time throughout: much of what is measured is spent in the system.
void Register(const std::string& name, const Function& function, const Sizes& sizes);

/// The same for those that measure by themselves and call SetIterationTime.
void RegisterManual(const std::string& name, const Function& function, const Sizes& sizes);

/// The same two at the sizes of tables, and with few repetitions at the larger ones, which have no limit to
/// keep.
void RegisterGrowing(const std::string& name, const Function& function, const Sizes& larger = LargerSizes());
void RegisterGrowingManual(const std::string& name, const Function& function,
                           const Sizes& larger = LargerSizes());

/// All sizes, and those below 100 that the worst literal passes end at.
Sizes AllSizes();

/// The sizes up to which passes over lists, written down word for word, end within reason: their cost grows
/// with the cube, and in diamonds it doubles with every layer.
Sizes LiteralSizes(EShape shape);

/// The size a benchmark runs at.
inline std::size_t SizeOf(const benchmark::State& state)
{
    return static_cast<std::size_t>(state.range(0));
}

/// Runs what is registered, as the command line says.
/// @return the program's exit status
int RunAll(int argumentCount, char** arguments);

} // namespace Benchmarks
