#include "common/Registration.h"
#include "presentation/Benchmarks.h"
#include "presentation/TreeCopies.h"
#include "subjects/Configurations.h"
#include "subjects/MeasuredIds.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorPresentation.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr std::int64_t kSomeDay = 1600000000;

/// Records in the order of a table, which were raised in quite another one.
std::vector<SErrorEntry> MakeEntries(std::size_t errors)
{
    std::vector<SErrorEntry> entries(errors);
    const std::vector<std::pair<int, int>> ids = MakeIdPairs(errors);
    for (std::size_t place = 0; place < errors; ++place)
    {
        SErrorEntry& entry = entries[place];
        entry.problemCode = ids[place].first;
        entry.problemType = static_cast<std::int16_t>(ids[place].second);
        entry.counter1 = 1;
        entry.counter2 = 1;
        const std::size_t turn = place * ScatterStep(errors) % errors;
        entry.raisedTime = Core::Time(kSomeDay + static_cast<std::int64_t>(turn));
    }
    return entries;
}

void FormatList(benchmark::State& state)
{
    const std::vector<SErrorEntry> entries = MakeEntries(SizeOf(state));
    for (auto _ : state)
    {
        std::vector<SErrorTree> trees;
        CErrorPresentation::FormatErrorList(entries, trees);
        benchmark::DoNotOptimize(trees.data());
    }
}

void CopyList(benchmark::State& state)
{
    std::vector<SErrorTree> trees;
    CErrorPresentation::FormatErrorList(MakeEntries(SizeOf(state)), trees);
    CopyTrees(state, trees);
}

/// Into nothing, so that no disk is measured.
constexpr const char* kNowhere = "/dev/null";

void DumpTexts(benchmark::State& state)
{
    const CErrorDatabase& database = DatabaseOf(esPlausible, SizeOf(state));
    for (auto _ : state)
        CErrorPresentation::DumpLocalisedText(database.GetErrorList(), kNowhere);
}

std::vector<std::string> DumpedLines(std::size_t errors)
{
    const Support::CFreshDirectory directory;
    CErrorPresentation::DumpLocalisedText(DatabaseOf(esPlausible, errors).GetErrorList(),
                                          directory.File("texts"));
    std::istringstream text(Support::ReadFile(directory.File("texts")));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

/// The same lines, each flushed: a console that loses power has whole lines.
void WriteTexts(benchmark::State& state)
{
    static std::map<std::size_t, std::vector<std::string>> dumped;
    std::vector<std::string>& lines = dumped[SizeOf(state)];
    if (lines.empty())
        lines = DumpedLines(SizeOf(state));
    for (auto _ : state)
    {
        std::ofstream file(kNowhere);
        for (const std::string& line : lines)
            file << line << std::endl;
    }
}
} // namespace

void RegisterTexts()
{
    RegisterGrowing("format-list/ours", FormatList);
    RegisterGrowing("format-list/base", CopyList);
    RegisterGrowing("dump-texts/ours", DumpTexts);
    RegisterGrowing("dump-texts/base", WriteTexts);
}

} // namespace Benchmarks
