#include "subjects/MeasuredIds.h"

#include <algorithm>
#include <stdexcept>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr std::size_t kModules = 12;
constexpr std::size_t kSubModules = 54;
constexpr std::size_t kTypes = 21;
constexpr std::size_t kErrorsPerSubModule = 12; // as long as there are enough sub-modules
constexpr int kHighestProblem = 95;

std::vector<EProblemIdentifier> KnownProblems()
{
    std::vector<EProblemIdentifier> problems;
    for (int value = 1; value <= kHighestProblem; ++value)
    {
        const EProblemIdentifier problem = static_cast<EProblemIdentifier>(value);
        if (!TranslateProblemId(problem).empty())
            problems.push_back(problem);
    }
    return problems;
}

std::size_t RoundedUp(std::size_t dividend, std::size_t divisor)
{
    return (dividend + divisor - 1) / divisor;
}
} // namespace

std::string SMeasuredId::Name() const
{
    return TranslateModuleId(module) + ":" + TranslateSubModuleId(subModule) + ":" +
           TranslateProblemId(problem) + ":" + std::to_string(type);
}

std::vector<SMeasuredId> MakeIds(std::size_t count)
{
    const std::vector<EProblemIdentifier> problems = KnownProblems();
    const std::size_t perModule = RoundedUp(count, kModules);
    const std::size_t perSubModule = std::max(kErrorsPerSubModule, RoundedUp(perModule, kSubModules));
    const std::size_t types = std::max<std::size_t>(2, RoundedUp(perSubModule, problems.size()));
    if (types > kTypes)
        throw std::invalid_argument("not so many identifiers");
    std::vector<SMeasuredId> ids;
    for (std::size_t number = 0; number < count; ++number)
    {
        const std::size_t inModule = number % perModule;
        const std::size_t inSubModule = inModule % perSubModule;
        ids.push_back({static_cast<EModuleIdentifier>((number / perModule + 1) << 16),
                       static_cast<ESubModuleIdentifier>((inModule / perSubModule + 1) << 8),
                       problems[inSubModule / types], static_cast<EProblemType>(inSubModule % types)});
    }
    return ids;
}

std::vector<std::pair<int, int>> MakeIdPairs(std::size_t count)
{
    std::vector<std::pair<int, int>> pairs;
    for (const SMeasuredId& id : MakeIds(count))
        pairs.push_back(id.Pair());
    return pairs;
}

} // namespace Benchmarks
