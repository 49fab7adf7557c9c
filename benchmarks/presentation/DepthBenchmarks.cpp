// Trees below one error: as many errors as there are, and in a chain as many levels.
#include "common/Registration.h"
#include "presentation/Benchmarks.h"
#include "presentation/Screen.h"
#include "subjects/Configurations.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <functional>
#include <string>
#include <utility>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
using Codes = std::vector<std::pair<int, int>>;
using Tops = std::vector<const CError*>;

/// The screen's tops that have something below them.
Tops TopsOf(const CScreen& screen)
{
    Tops tops;
    for (const CError* top : screen.Tops())
    {
        if (!top->TriggerSets().empty())
            tops.push_back(top);
    }
    return tops;
}

/// The top of the chain, all of which is active.
Tops TopOfChain(std::size_t errors)
{
    CErrorDatabase& database = DatabaseOf(esChain, errors);
    for (const CError& error : database.GetErrorList())
        database.RaiseError(error.ProblemCode(), error.ProblemType(), true);
    return {&database.GetErrorList().front()};
}

/// What building below an error gives.
struct SBuilt
{
    explicit SBuilt(const CError* top)
    {
        CErrorPresentation::BuildErrorTree(top, tree, activity, false, false, codes);
    }

    /// The bits to rebuild it from, with some behind those of the last error, as there are in keys.
    std::string Bits() const
    {
        std::string bits;
        for (const std::string& piece : activity)
            bits += piece;
        return bits + "00000000";
    }

    SErrorTree tree;
    std::vector<std::string> activity;
    Codes codes;
};

/// What rebuilding below an error gives.
struct SRebuilt
{
    SRebuilt(const CError* top, std::string bits, bool plain)
    {
        CErrorPresentation::RegenerateErrorTree(top, bits, tree, lines, plain, codes, "");
    }

    SErrorTree tree;
    std::vector<std::string> lines;
    Codes codes;
};

void Build(benchmark::State& state, const Tops& tops)
{
    for (auto _ : state)
    {
        for (const CError* top : tops)
            benchmark::DoNotOptimize(SBuilt(top));
    }
}

void CopyBuilt(benchmark::State& state, const Tops& tops)
{
    const std::vector<SBuilt> built(tops.begin(), tops.end());
    for (auto _ : state)
    {
        for (const SBuilt& one : built)
            benchmark::DoNotOptimize(SBuilt(one));
    }
}

std::vector<std::string> BitsOf(const Tops& tops)
{
    std::vector<std::string> bits;
    for (const CError* top : tops)
        bits.push_back(SBuilt(top).Bits());
    return bits;
}

void Rebuild(benchmark::State& state, const Tops& tops, bool plain)
{
    const std::vector<std::string> bits = BitsOf(tops);
    for (auto _ : state)
    {
        for (std::size_t place = 0; place < tops.size(); ++place)
            benchmark::DoNotOptimize(SRebuilt(tops[place], bits[place], plain));
    }
}

void CopyRebuilt(benchmark::State& state, const Tops& tops, bool plain)
{
    const std::vector<std::string> bits = BitsOf(tops);
    std::vector<SRebuilt> rebuilt;
    std::size_t lines = 0;
    for (std::size_t place = 0; place < tops.size(); ++place)
    {
        rebuilt.emplace_back(tops[place], bits[place], plain);
        lines += rebuilt.back().lines.size();
    }
    if (lines < tops.size())
        state.SkipWithError("nothing was rebuilt");
    for (auto _ : state)
    {
        for (std::size_t place = 0; place < tops.size(); ++place)
        {
            benchmark::DoNotOptimize(std::string(bits[place]));
            benchmark::DoNotOptimize(SRebuilt(rebuilt[place]));
        }
    }
}

using Measured = std::function<void(benchmark::State&, const Tops&)>;

Function InFamilies(const Measured& measured)
{
    return [measured](benchmark::State& state)
    {
        const CScreen screen(SizeOf(state));
        measured(state, TopsOf(screen));
    };
}

Function InChain(const Measured& measured)
{
    return [measured](benchmark::State& state) { measured(state, TopOfChain(SizeOf(state))); };
}

Measured Rebuilding(bool plain)
{
    return [plain](benchmark::State& state, const Tops& tops) { Rebuild(state, tops, plain); };
}

Measured CopyingRebuilt(bool plain)
{
    return [plain](benchmark::State& state, const Tops& tops) { CopyRebuilt(state, tops, plain); };
}
} // namespace

void RegisterDepth()
{
    RegisterGrowing("rebuild-below/ours", InFamilies(Rebuilding(false)));
    RegisterGrowing("rebuild-below/base", InFamilies(CopyingRebuilt(false)));
    const Sizes levels{1000, 2000, 4000};
    RegisterGrowing("build-chain/ours", InChain(Build), levels);
    RegisterGrowing("build-chain/base", InChain(CopyBuilt), levels);
    // Without the drawn branches, which alone grow with the square of the levels.
    RegisterGrowing("rebuild-chain/ours", InChain(Rebuilding(true)), levels);
    RegisterGrowing("rebuild-chain/base", InChain(CopyingRebuilt(true)), levels);
}

} // namespace Benchmarks
