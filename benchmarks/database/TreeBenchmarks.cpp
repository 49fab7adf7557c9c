#include "common/Registration.h"
#include "database/Benchmarks.h"
#include "database/LiteralGrouping.h"
#include "subjects/Configurations.h"
#include "subjects/Turner.h"

#include <benchmark/benchmark.h>

#include <string>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
/// All four lists after one error has changed.
void UpdateTree(benchmark::State& state, EShape shape)
{
    CErrorDatabase& database = DatabaseOf(shape, SizeOf(state));
    CTurner turner(database, shape);
    for (auto _ : state)
    {
        turner.Next();
        database.UpdateErrorTree();
    }
}

void UpdateTreeLiterally(benchmark::State& state, EShape shape)
{
    CErrorDatabase& database = DatabaseOf(shape, SizeOf(state));
    CTurner turner(database, shape);
    CLiteralTree tree(database);
    for (auto _ : state)
    {
        turner.Next();
        tree.Update();
    }
    database.UpdateErrorTree();
    if (tree.Active() != database.ActiveErrors(false) || tree.Inactive() != database.InactiveErrors(false))
        state.SkipWithError("the literal passes find other tops");
}

/// The same when nothing at all has happened since the last call.
void UpdateTreeUnchanged(benchmark::State& state)
{
    CErrorDatabase& database = DatabaseOf(esPlausible, SizeOf(state));
    CTurner turner(database, esPlausible);
    database.UpdateErrorTree();
    for (auto _ : state)
        database.UpdateErrorTree();
}

void UpdateTreeUnchangedLiterally(benchmark::State& state)
{
    CErrorDatabase& database = DatabaseOf(esPlausible, SizeOf(state));
    CTurner turner(database, esPlausible);
    CLiteralTree tree(database);
    for (auto _ : state)
        tree.Update();
}
} // namespace

void RegisterTrees()
{
    for (const EShape shape : {esPlausible, esChain, esDiamonds})
    {
        const std::string name = std::string("tree-") + NameOf(shape);
        const auto ours = [shape](benchmark::State& state) { UpdateTree(state, shape); };
        const auto base = [shape](benchmark::State& state) { UpdateTreeLiterally(state, shape); };
        Register(name + "/ours", ours, AllSizes());
        Register(name + "/base", base, LiteralSizes(shape));
    }
    RegisterGrowing("tree-unchanged/ours", UpdateTreeUnchanged);
    Register("tree-unchanged/base", UpdateTreeUnchangedLiterally, TableSizes());
}

} // namespace Benchmarks
