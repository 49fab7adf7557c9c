// What screens ask for when something has changed. The bare cost of a result is making a copy of it.
#include "common/Registration.h"
#include "presentation/Screen.h"
#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
using Trees = std::vector<SErrorTree>;

void CopyTrees(benchmark::State& state, const Trees& trees)
{
    for (auto _ : state)
    {
        Trees copy;
        for (const SErrorTree& tree : trees)
            copy.push_back(tree);
        benchmark::DoNotOptimize(copy.data());
    }
}

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

void FormatList(benchmark::State& state)
{
    CScreen screen(SizeOf(state));
    const std::vector<SErrorEntry> entries = screen.Entries();
    for (auto _ : state)
    {
        Trees trees;
        CErrorPresentation::FormatErrorList(entries, trees);
        benchmark::DoNotOptimize(trees.data());
    }
}

void CopyList(benchmark::State& state)
{
    CScreen screen(SizeOf(state));
    Trees trees;
    CErrorPresentation::FormatErrorList(screen.Entries(), trees);
    CopyTrees(state, trees);
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

/// Into nothing, so that no disk is measured.
constexpr const char* kNowhere = "/dev/null";

void DumpTexts(benchmark::State& state)
{
    const CErrorDatabase& database = DatabaseOf(esPlausible, SizeOf(state));
    for (auto _ : state)
        CErrorPresentation::DumpLocalisedText(database.GetErrorList(), kNowhere);
}

/// The same lines, each flushed: a console that loses power has whole lines.
void WriteTexts(benchmark::State& state)
{
    const Support::CFreshDirectory directory;
    CErrorPresentation::DumpLocalisedText(DatabaseOf(esPlausible, SizeOf(state)).GetErrorList(),
                                          directory.File("texts"));
    std::istringstream text(Support::ReadFile(directory.File("texts")));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    for (auto _ : state)
    {
        std::ofstream file(kNowhere);
        for (const std::string& line : lines)
            file << line << std::endl;
    }
}
} // namespace

} // namespace Benchmarks

int main(int argumentCount, char** arguments)
{
    using namespace Benchmarks;
    const Sizes sizes{10, 100, 400};
    Register(
        "build-trees/ours", [](benchmark::State& state) { BuildTrees(state, false); }, sizes);
    Register(
        "build-trees/base", [](benchmark::State& state) { CopyBuiltTrees(state, false); }, sizes);
    Register(
        "build-trees-keys/ours", [](benchmark::State& state) { BuildTrees(state, true); }, sizes);
    Register(
        "build-trees-keys/base", [](benchmark::State& state) { CopyBuiltTrees(state, true); }, sizes);
    Register("format-list/ours", FormatList, sizes);
    Register("format-list/base", CopyList, sizes);
    Register("rebuild-trees/ours", RebuildTrees, sizes);
    Register("rebuild-trees/base", CopyRebuiltTrees, sizes);
    Register("find-code/ours", FindCode, sizes);
    Register("find-code/base", FindCodeLiterally, sizes);
    Register("dump-texts/ours", DumpTexts, sizes);
    Register("dump-texts/base", WriteTexts, sizes);
    return RunAll(argumentCount, arguments);
}
