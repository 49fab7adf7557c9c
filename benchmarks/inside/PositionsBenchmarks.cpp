// Reaches into the library: the positions are worked out once, while a database loads, so nothing that is
// exported measures them alone.
#include "Common/hierarchy/HierarchyPositions.h"

#include "common/Registration.h"
#include "subjects/HandMadeErrors.h"

#include <benchmark/benchmark.h>

#include <list>
#include <string>
#include <vector>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
void Calculate(benchmark::State& state, EShape shape)
{
    CHandMadeErrors made(shape, SizeOf(state), elBothWays);
    for (auto _ : state)
        benchmark::DoNotOptimize(CHierarchyPositions(made.Errors()).Calculate());
}

/// Level by level from the leaves, every parent that is met, as often as it is met.
void CalculateLiterally(std::vector<CError>& errors)
{
    std::list<CError*> level;
    for (CError& error : errors)
    {
        if (error.TriggerSets().empty())
            level.push_back(&error);
    }
    while (!level.empty())
    {
        std::list<CError*> next;
        for (CError* error : level)
        {
            for (CError* parent : error->Parents())
            {
                parent->RecalculatePosition();
                next.push_back(parent);
            }
        }
        level.swap(next);
    }
}

void CalculateLiterally(benchmark::State& state, EShape shape)
{
    CHandMadeErrors made(shape, SizeOf(state), elBothWays);
    for (auto _ : state)
        CalculateLiterally(made.Errors());
}

void RegisterShape(EShape shape)
{
    const std::string name = std::string("positions-") + NameOf(shape);
    const auto ours = [shape](benchmark::State& state) { Calculate(state, shape); };
    const auto base = [shape](benchmark::State& state) { CalculateLiterally(state, shape); };
    const Sizes literal{10, 100, 400, 2000, 20000, 100000};
    Register(name + "/ours", ours, AllSizes());
    Register(name + "/base", base, shape == esDiamonds ? LiteralSizes(shape) : literal);
}
} // namespace

} // namespace Benchmarks

int main(int argumentCount, char** arguments)
{
    using namespace Benchmarks;
    for (const EShape shape : {esPlausible, esChain, esDiamonds})
        RegisterShape(shape);
    return RunAll(argumentCount, arguments);
}
