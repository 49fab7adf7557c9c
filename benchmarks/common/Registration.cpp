#include "common/Registration.h"

namespace Benchmarks
{

namespace
{
constexpr int kFewRepetitions = 3;

benchmark::internal::Benchmark* Add(const std::string& name, const Function& function, const Sizes& sizes)
{
    benchmark::internal::Benchmark* const added = benchmark::RegisterBenchmark(name.c_str(), function);
    for (const std::int64_t size : sizes)
        added->Arg(size);
    return added;
}
} // namespace

void Register(const std::string& name, const Function& function, const Sizes& sizes)
{
    Add(name, function, sizes)->UseRealTime();
}

void RegisterManual(const std::string& name, const Function& function, const Sizes& sizes)
{
    Add(name, function, sizes)->UseManualTime();
}

void RegisterGrowing(const std::string& name, const Function& function, const Sizes& larger)
{
    Register(name, function, TableSizes());
    Add(name, function, larger)->UseRealTime()->Repetitions(kFewRepetitions);
}

void RegisterGrowingManual(const std::string& name, const Function& function, const Sizes& larger)
{
    RegisterManual(name, function, TableSizes());
    Add(name, function, larger)->UseManualTime()->Repetitions(kFewRepetitions);
}

Sizes TableSizes()
{
    return {10, 100, 400};
}

Sizes LargerSizes()
{
    return {2000, 20000, 100000};
}

Sizes AllSizes()
{
    return {10, 20, 30, 100, 400, 2000, 20000, 100000};
}

Sizes LiteralSizes(EShape shape)
{
    if (shape == esPlausible)
        return {10, 100, 400, 2000};
    return shape == esChain ? Sizes{10, 100, 400} : Sizes{10, 20, 30};
}

int RunAll(int argumentCount, char** arguments)
{
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace Benchmarks
