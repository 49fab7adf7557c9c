#include "subjects/Configurations.h"

#include "subjects/MeasuredIds.h"
#include "support/FreshDirectory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>

namespace Benchmarks
{

using namespace Faultkeeper;

namespace
{
constexpr const char* kLinkingModes[] = {"deep", "verbose", "shallow", "childOnly"};
constexpr const char* kTitleSources[] = {"parent", "trigger"};

// What of a problem code tells errors of different modules, sub-modules and problems apart.
constexpr int kModuleMask = 0xFF0000;
constexpr int kSubModuleMask = 0xFFFF00;
constexpr int kProblemMask = 0xFFFFFF;

std::string ModuleFile(EModuleIdentifier module)
{
    return "Module" + std::to_string(module >> 16) + ".xml";
}

void WriteText(std::ostream& file, const char* type, const std::string& text)
{
    file << "                <Text type=\"" << type << "\" text=\"" << text << "\"/>\n";
}

void WriteOption(std::ostream& file, const char* name, const char* value)
{
    file << "                            <Option name=\"" << name << "\" value=\"" << value << "\"/>\n";
}

void WriteSet(std::ostream& file, const SMeasuredSet& set, const std::vector<SMeasuredId>& ids)
{
    file << "                    <TriggerSet>\n                        <Options>\n";
    WriteOption(file, "autoTrigger", set.autoTrigger ? "yes" : "no");
    WriteOption(file, "errorLinking", kLinkingModes[set.linkingMode]);
    WriteOption(file, "titleSource", kTitleSources[set.titleSource]);
    file << "                        </Options>\n                        <Triggers>\n";
    for (const std::size_t trigger : set.triggers)
        file << "                            <Trigger id=\"" << ids[trigger].Name() << "\"/>\n";
    file << "                        </Triggers>\n                    </TriggerSet>\n";
}

void WriteError(std::ostream& file, const SMeasuredId& id, const std::vector<SMeasuredSet>& sets,
                const std::vector<SMeasuredId>& ids)
{
    const std::string device = TranslateSubModuleId(id.subModule);
    file << "            <Error identifier=\"" << TranslateProblemType(id.type)
         << "\" severity=\"High\" visible=\"yes\" shouldBeepIfGuiding=\"yes\">\n";
    WriteText(file, "title", device + " out of order");
    WriteText(file, "problem", "The " + device + " does not deliver what guidance needs from it.");
    WriteText(file, "solution",
              "Check plugs and cable of the " + device + ", then switch it off and on again.");
    WriteText(file, "shortProblem", device + " silent");
    if (!sets.empty())
    {
        file << "                <TriggerSets>\n";
        for (const SMeasuredSet& set : sets)
            WriteSet(file, set, ids);
        file << "                </TriggerSets>\n";
    }
    file << "            </Error>\n";
}

/// The first error behind `first` that differs in what `coordinates` keeps of the problem code.
std::size_t EndOf(const std::vector<SMeasuredId>& ids, std::size_t first, int coordinates)
{
    std::size_t end = first;
    while (end < ids.size() && ((ids[end].Pair().first ^ ids[first].Pair().first) & coordinates) == 0)
        ++end;
    return end;
}

void WriteSubModule(std::ostream& file, const Shape& shape, const std::vector<SMeasuredId>& ids,
                    std::size_t first, std::size_t end)
{
    file << "    <SubModule identifier=\"" << TranslateSubModuleId(ids[first].subModule) << "\">\n";
    for (std::size_t at = first; at < end;)
    {
        file << "        <Problem identifier=\"" << TranslateProblemId(ids[at].problem) << "\">\n";
        for (const std::size_t endOfProblem = EndOf(ids, at, kProblemMask); at < endOfProblem; ++at)
            WriteError(file, ids[at], shape[at], ids);
        file << "        </Problem>\n";
    }
    file << "    </SubModule>\n";
}

/// Writes the errors of one module, which are those from `first` on.
/// @return the first one behind them
std::size_t WriteModule(std::ostream& file, const Shape& shape, const std::vector<SMeasuredId>& ids,
                        std::size_t first)
{
    const std::size_t end = EndOf(ids, first, kModuleMask);
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Module>\n";
    for (std::size_t at = first; at < end; at = EndOf(ids, at, kSubModuleMask))
        WriteSubModule(file, shape, ids, at, EndOf(ids, at, kSubModuleMask));
    file << "</Module>\n";
    return end;
}

/// A code for every owner of triggers: the first half exact, the others partial.
void WritePatterns(std::ostream& file, const Shape& shape, const std::vector<SMeasuredId>& ids)
{
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ErrorPatterns>\n    <Patterns>\n";
    for (std::size_t place = 0; place < shape.size(); ++place)
    {
        if (shape[place].empty())
            continue;
        const bool partial = place >= shape.size() / 2;
        file << "        <pattern fixedCode=\"C-" << place << "\" allowPartialMatch=\""
             << (partial ? "yes" : "no") << "\">\n            <error id=\"" << ids[place].Name()
             << "\"/>\n            <error id=\"" << ids[shape[place].front().triggers.front()].Name()
             << "\"/>\n        </pattern>\n";
    }
    file << "    </Patterns>\n</ErrorPatterns>\n";
}

void CloseFile(std::ofstream& file)
{
    file.close();
    if (!file)
        throw std::runtime_error("cannot write a configuration");
}

/// All configurations of this process, each in a directory of its own.
class CConfigurations
{
public:
    const std::string& Of(EShape shape, std::size_t errors)
    {
        std::string& directory = m_written[{shape, errors}];
        if (directory.empty())
        {
            directory = m_root.Prefix() + NameOf(shape) + "-" + std::to_string(errors) + "/";
            std::filesystem::create_directory(directory);
            WriteConfiguration(directory, shape, errors);
        }
        return directory;
    }

private:
    Support::CFreshDirectory m_root;
    std::map<std::pair<EShape, std::size_t>, std::string> m_written;
};
} // namespace

void WriteConfiguration(const std::string& directory, EShape shape, std::size_t errors)
{
    const Shape hierarchy = MakeShape(shape, errors);
    const std::vector<SMeasuredId> ids = MakeIds(errors);
    std::ofstream list(directory + "FaultkeeperConfig.xml");
    list << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Faultkeeper>\n    <ErrorList>\n";
    for (std::size_t first = 0; first < errors;)
    {
        const std::string name = ModuleFile(ids[first].module);
        list << "        <Module identifier=\"" << TranslateModuleId(ids[first].module) << "\" file=\""
             << name << "\"/>\n";
        std::ofstream file(directory + name);
        first = WriteModule(file, hierarchy, ids, first);
        CloseFile(file);
    }
    list << "    </ErrorList>\n</Faultkeeper>\n";
    CloseFile(list);
    std::ofstream patterns(directory + "ErrorPatterns.xml");
    WritePatterns(patterns, hierarchy, ids);
    CloseFile(patterns);
}

const std::string& ConfigurationOf(EShape shape, std::size_t errors)
{
    static CConfigurations configurations;
    return configurations.Of(shape, errors);
}

std::vector<std::string> FilesOf(const std::string& directory)
{
    std::vector<std::string> files{directory + "FaultkeeperConfig.xml"};
    for (const auto& entry : std::filesystem::directory_iterator(directory))
    {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() == ".xml" && name != "FaultkeeperConfig.xml" &&
            name != "ErrorPatterns.xml")
            files.push_back(entry.path().string());
    }
    std::sort(files.begin() + 1, files.end());
    return files;
}

CErrorDatabase& DatabaseOf(EShape shape, std::size_t errors)
{
    static std::map<std::pair<EShape, std::size_t>, std::unique_ptr<CErrorDatabase>> databases;
    std::unique_ptr<CErrorDatabase>& database = databases[{shape, errors}];
    if (database != nullptr)
        return *database;
    database = std::make_unique<CErrorDatabase>(ConfigurationOf(shape, errors));
    const std::vector<std::pair<int, int>> ids = MakeIdPairs(errors);
    const auto same = [](const CError& error, const std::pair<int, int>& id)
    { return error.ProblemCode() == id.first && error.ProblemType() == id.second; };
    const std::vector<CError>& list = database->GetErrorList();
    if (!std::equal(list.begin(), list.end(), ids.begin(), ids.end(), same))
        throw std::runtime_error("a generated configuration was not loaded as it is");
    return *database;
}

std::string ExampleConfiguration()
{
    return FAULTKEEPER_EXAMPLE_CONFIGURATION;
}

} // namespace Benchmarks
