#include "common/Registration.h"
#include "database/Benchmarks.h"
#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"
#include "subjects/Turner.h"

#include <Faultkeeper/ErrorDbChanged.h>

#include <benchmark/benchmark.h>

#include <map>
#include <utility>
#include <vector>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
using Id = std::pair<int, int>;
using Ids = std::vector<Id>;
using Index = std::map<Id, int>;

/// Counts what it is told, as cheaply as a listener can.
class CCounter : public CErrorDbChanged
{
public:
    void ErrorRaised(int, int) override { ++m_told; }
    void ErrorCleared(int, int) override { ++m_told; }
    std::uint64_t Told() const { return m_told; }

private:
    std::uint64_t m_told = 0;
};

Index IndexOf(const CErrorDatabase& database)
{
    Index index;
    int place = 0;
    for (const CError& error : database.GetErrorList())
        index[{error.ProblemCode(), error.ProblemType()}] = place++;
    return index;
}

void ClearAll(CErrorDatabase& database)
{
    for (const CError& error : database.GetErrorList())
        database.ClearError(error.ProblemCode(), error.ProblemType(), true);
}

/// In an order that jumps all over the list.
Ids Scattered(const Ids& ids)
{
    Ids scattered;
    for (std::size_t place = 0; place < ids.size(); ++place)
        scattered.push_back(ids[place * ScatterStep(ids.size()) % ids.size()]);
    return scattered;
}

Ids IdsAt(const std::vector<std::size_t>& places, std::size_t errors)
{
    const Ids all = MakeIdPairs(errors);
    Ids ids;
    for (const std::size_t place : places)
        ids.push_back(all[place]);
    return Scattered(ids);
}

/// Each iteration raises and then clears all of them.
void RaiseAndClear(benchmark::State& state, const Ids& ids, bool silent)
{
    CErrorDatabase& database = DatabaseOf(esPlausible, SizeOf(state));
    CCounter counter;
    ClearAll(database);
    database.SetCallback(&counter);
    for (auto _ : state)
    {
        for (const Id& id : ids)
            database.RaiseError(id.first, id.second, silent);
        for (const Id& id : ids)
            database.ClearError(id.first, id.second, silent);
    }
    database.SetCallback(nullptr);
    const double requests = 2.0 * static_cast<double>(ids.size());
    state.counters["told_per_request"] =
        static_cast<double>(counter.Told()) / (requests * static_cast<double>(state.iterations()));
    state.SetItemsProcessed(state.iterations() * 2 * static_cast<std::int64_t>(ids.size()));
}

/// What every request takes: finding the error.
void LookUp(benchmark::State& state, const Ids& ids)
{
    const Index index = IndexOf(DatabaseOf(esPlausible, SizeOf(state)));
    for (auto _ : state)
    {
        for (int turn = 0; turn < 2; ++turn)
        {
            for (const Id& id : ids)
                benchmark::DoNotOptimize(index.find(id)->second);
        }
    }
    state.SetItemsProcessed(state.iterations() * 2 * static_cast<std::int64_t>(ids.size()));
}

void Retrieve(benchmark::State& state)
{
    const CErrorDatabase& database = DatabaseOf(esPlausible, SizeOf(state));
    const Ids ids = Scattered(MakeIdPairs(SizeOf(state)));
    for (auto _ : state)
    {
        for (const Id& id : ids)
            benchmark::DoNotOptimize(database.RetrieveError(id.first, id.second));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ids.size()));
}

void RetrieveLookUp(benchmark::State& state)
{
    const Index index = IndexOf(DatabaseOf(esPlausible, SizeOf(state)));
    const Ids ids = Scattered(MakeIdPairs(SizeOf(state)));
    for (auto _ : state)
    {
        for (const Id& id : ids)
            benchmark::DoNotOptimize(index.find(id)->second);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ids.size()));
}

Ids LeafIds(std::size_t errors)
{
    return IdsAt(LeafPlaces(MakeShape(esPlausible, errors)), errors);
}
} // namespace

void RegisterRaising()
{
    const auto silent = [](benchmark::State& state)
    { RaiseAndClear(state, Scattered(MakeIdPairs(SizeOf(state))), true); };
    const auto silentBase = [](benchmark::State& state)
    { LookUp(state, Scattered(MakeIdPairs(SizeOf(state)))); };
    const auto propagating = [](benchmark::State& state)
    { RaiseAndClear(state, LeafIds(SizeOf(state)), false); };
    const auto propagatingBase = [](benchmark::State& state) { LookUp(state, LeafIds(SizeOf(state))); };
    RegisterGrowing("raise-silent/ours", silent);
    RegisterGrowing("raise-silent/base", silentBase);
    RegisterGrowing("raise-propagating/ours", propagating);
    RegisterGrowing("raise-propagating/base", propagatingBase);
    RegisterGrowing("retrieve-error/ours", Retrieve);
    RegisterGrowing("retrieve-error/base", RetrieveLookUp);
}

} // namespace Benchmarks
