#include "common/Registration.h"
#include "presentation/Benchmarks.h"
#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"

#include <Faultkeeper/ErrorOverlay.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
/// A combination as large as the screen's largest, and one that nothing matches, in turn.
std::vector<std::vector<std::pair<int, int>>> Combinations(std::size_t errors)
{
    const std::vector<std::pair<int, int>> ids = MakeIdPairs(errors);
    std::vector<std::vector<std::pair<int, int>>> combinations;
    for (std::size_t size = 1; size <= 20; ++size)
    {
        std::vector<std::pair<int, int>> combination;
        for (std::size_t member = 0; member < size; ++member)
            combination.push_back(ids[(size * 37 + member * 11) % ids.size()]);
        combinations.push_back(combination);
    }
    return combinations;
}

void FindCode(benchmark::State& state)
{
    const CErrorOverlay overlay(ConfigurationOf(esPlausible, SizeOf(state)));
    const auto combinations = Combinations(SizeOf(state));
    for (auto _ : state)
    {
        for (const auto& combination : combinations)
            benchmark::DoNotOptimize(overlay.FindFriendlyCode(combination));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(combinations.size()));
}

/// Sorting a copy and looking at every pattern, with each of its identifiers looked up on its own.
std::string FindLiterally(const std::vector<SPattern>& patterns, const std::vector<std::pair<int, int>>& ids)
{
    std::vector<std::pair<int, int>> sorted(ids);
    std::sort(sorted.begin(), sorted.end());
    for (const SPattern& pattern : patterns)
    {
        const auto given = [&](const std::pair<int, int>& id)
        { return std::find(ids.begin(), ids.end(), id) != ids.end(); };
        if (pattern.ids == sorted ||
            (pattern.allowPartialMatch && std::all_of(pattern.ids.begin(), pattern.ids.end(), given)))
            return pattern.code;
    }
    return "";
}

/// The patterns that WriteConfiguration writes.
std::vector<SPattern> PatternsOf(std::size_t errors)
{
    const Shape shape = MakeShape(esPlausible, errors);
    const std::vector<std::pair<int, int>> ids = MakeIdPairs(errors);
    std::vector<SPattern> patterns;
    for (std::size_t place = 0; place < errors; ++place)
    {
        if (shape[place].empty())
            continue;
        SPattern pattern{"C-" + std::to_string(place),
                         place >= errors / 2,
                         {ids[place], ids[shape[place].front().triggers.front()]}};
        std::sort(pattern.ids.begin(), pattern.ids.end());
        patterns.push_back(pattern);
    }
    return patterns;
}

void FindCodeLiterally(benchmark::State& state)
{
    const std::vector<SPattern> patterns = PatternsOf(SizeOf(state));
    const auto combinations = Combinations(SizeOf(state));
    for (auto _ : state)
    {
        for (const auto& combination : combinations)
            benchmark::DoNotOptimize(FindLiterally(patterns, combination));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(combinations.size()));
}
} // namespace

void RegisterCodes()
{
    RegisterGrowing("find-code/ours", FindCode);
    RegisterGrowing("find-code/base", FindCodeLiterally);
}

} // namespace Benchmarks
