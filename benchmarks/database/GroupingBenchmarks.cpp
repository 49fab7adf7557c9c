#include "common/Registration.h"
#include "database/Benchmarks.h"
#include "database/LiteralGrouping.h"
#include "subjects/Configurations.h"
#include "subjects/HandMadeErrors.h"

#include <benchmark/benchmark.h>

#include <list>
#include <string>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
using Errors = std::list<const CError*>;

Errors ListOf(const std::vector<CError>& errors)
{
    Errors list;
    for (const CError& error : errors)
        list.push_back(&error);
    return list;
}

/// The grouping step alone, on all errors of a database.
void Group(benchmark::State& state, EShape shape)
{
    CErrorDatabase& database = DatabaseOf(shape, SizeOf(state));
    Errors errors = ListOf(database.GetErrorList());
    Errors tops;
    for (auto _ : state)
        database.UpdateErrorTree(errors, tops);
}

void GroupDatabaseLiterally(benchmark::State& state, EShape shape)
{
    const Errors errors = ListOf(DatabaseOf(shape, SizeOf(state)).GetErrorList());
    Errors tops;
    for (auto _ : state)
        GroupLiterally(errors, tops);
}

/// The same on errors that are no database's own and know each other in one direction only.
void GroupHandMade(benchmark::State& state, EShape shape, ELinking linking)
{
    CHandMadeErrors made(shape, SizeOf(state), linking);
    Errors errors = ListOf(made.Errors());
    Errors tops;
    for (auto _ : state)
        made.Database().UpdateErrorTree(errors, tops);
}

void GroupHandMadeLiterally(benchmark::State& state, EShape shape, ELinking linking)
{
    CHandMadeErrors made(shape, SizeOf(state), linking);
    Errors errors = ListOf(made.Errors());
    Errors tops;
    for (auto _ : state)
        GroupLiterally(errors, tops);
    Errors others;
    made.Database().UpdateErrorTree(errors, others);
    if (tops != others)
        state.SkipWithError("the literal passes find other tops");
}

void RegisterShape(EShape shape)
{
    const std::string loaded = std::string("group-") + NameOf(shape);
    const auto ours = [shape](benchmark::State& state) { Group(state, shape); };
    const auto base = [shape](benchmark::State& state) { GroupDatabaseLiterally(state, shape); };
    Register(loaded + "/ours", ours, AllSizes());
    Register(loaded + "/base", base, LiteralSizes(shape));
}

void RegisterHandMade(EShape shape, ELinking linking)
{
    const std::string name = std::string("group-") + NameOf(shape) +
                             (linking == elTriggersOnly ? "-triggers-only" : "-parents-only");
    const auto ours = [shape, linking](benchmark::State& state) { GroupHandMade(state, shape, linking); };
    const auto base = [shape, linking](benchmark::State& state)
    { GroupHandMadeLiterally(state, shape, linking); };
    Register(name + "/ours", ours, AllSizes());
    Register(name + "/base", base, LiteralSizes(shape));
}
} // namespace

void RegisterGrouping()
{
    for (const EShape shape : {esPlausible, esChain, esDiamonds})
    {
        RegisterShape(shape);
        RegisterHandMade(shape, elTriggersOnly);
        RegisterHandMade(shape, elParentsOnly);
    }
}

} // namespace Benchmarks
