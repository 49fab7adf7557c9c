#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/LocalisedStrings.h"
#include "faultkeeperctl/json/Json.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
void WriteTo(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    if (!file.flush())
        throw CFailure(epsNo, "cannot write " + path + ": " + std::strerror(errno));
}

void Report(const SSettings& settings, const std::string& path, std::size_t errors)
{
    if (settings.json)
    {
        Json document;
        document["file"] = path;
        document["errors"] = errors;
        PrintDocument(document);
    }
    else
        std::cout << "wrote the texts of " << errors << " errors to " << path << "\n";
}

EProgramStatus Strings(const SSettings& settings, const std::string& path)
{
    if (settings.json && path == "-")
        throw CFailure(epsUsage, "\"strings -\" writes the texts themselves, which are no JSON: name a file");
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    const std::string text = LocalisedStrings(database->GetErrorList());
    if (path == "-")
    {
        std::cout << text;
        return epsDone;
    }
    WriteTo(path, text);
    Report(settings, path, database->GetErrorList().size());
    return epsDone;
}
} // namespace

void AddStrings(CCommandLine& commandLine)
{
    const auto path = std::make_shared<std::string>();
    CCommand command = commandLine.Add(
        "strings", "Write the texts of all errors under their keys, for translators",
        "Eight lines for each error: a key in brackets and its text, four times. Needs no owner.\n"
        "Example: faultkeeperctl --config config/example strings texts.txt",
        [path](const SSettings& settings) { return Strings(settings, *path); });
    command.Argument("FILE", *path, "file to write, \"-\" for standard output");
}

} // namespace Faultkeeper::Apps
