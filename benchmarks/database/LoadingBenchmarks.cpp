#include "common/ExpatPass.h"
#include "common/Registration.h"
#include "common/Stopwatch.h"
#include "database/Benchmarks.h"
#include "subjects/Configurations.h"

#include <Faultkeeper/ErrorOverlay.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
void Load(benchmark::State& state, const std::string& directory)
{
    for (auto _ : state)
    {
        const CStopwatch watch;
        const auto database = std::make_unique<CErrorDatabase>(directory);
        state.SetIterationTime(watch.Seconds()); // without giving everything back
        if (!database->Loaded())
            state.SkipWithError("not loaded");
    }
}

void Parse(benchmark::State& state, const std::string& directory)
{
    const std::vector<std::string> files = FilesOf(directory);
    for (auto _ : state)
    {
        const CStopwatch watch;
        ParseWithoutHandlers(files);
        state.SetIterationTime(watch.Seconds());
    }
}

void LoadPatterns(benchmark::State& state)
{
    const std::string& directory = ConfigurationOf(esPlausible, SizeOf(state));
    for (auto _ : state)
    {
        const CStopwatch watch;
        const auto overlay = std::make_unique<CErrorOverlay>(directory);
        state.SetIterationTime(watch.Seconds());
    }
}

void ParsePatterns(benchmark::State& state)
{
    const std::vector<std::string> files{ConfigurationOf(esPlausible, SizeOf(state)) + "ErrorPatterns.xml"};
    for (auto _ : state)
    {
        const CStopwatch watch;
        ParseWithoutHandlers(files);
        state.SetIterationTime(watch.Seconds());
    }
}

void RegisterShape(EShape shape)
{
    const std::string name = std::string("load-") + NameOf(shape);
    const auto ours = [shape](benchmark::State& state)
    { Load(state, ConfigurationOf(shape, SizeOf(state))); };
    const auto base = [shape](benchmark::State& state)
    { Parse(state, ConfigurationOf(shape, SizeOf(state))); };
    const Sizes sizes{10, 100, 400, 2000, 20000, 100000};
    RegisterManual(name + "/ours", ours, sizes);
    RegisterManual(name + "/base", base, sizes);
}
} // namespace

void RegisterLoading()
{
    for (const EShape shape : {esPlausible, esChain, esDiamonds})
        RegisterShape(shape);
    const auto ours = [](benchmark::State& state) { Load(state, ExampleConfiguration()); };
    const auto base = [](benchmark::State& state) { Parse(state, ExampleConfiguration()); };
    RegisterManual("load-example/ours", ours, {243});
    RegisterManual("load-example/base", base, {243});
    RegisterGrowingManual("load-patterns/ours", LoadPatterns);
    RegisterGrowingManual("load-patterns/base", ParsePatterns);
}

} // namespace Benchmarks
