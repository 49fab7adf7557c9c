#include "faultkeeperctl/commands/Commands.h"

#include "faultkeeperctl/CommandLine.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/strings/LocalisedStrings.h"
#include "faultkeeperctl/strings/TranslationReport.h"
#include "faultkeeperctl/typed/FileText.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <vector>

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

/// What is asked for besides the file.
struct SRequest
{
    std::string path;
    bool check = false;
    bool withOriginals = false;
};

EProgramStatus Check(const SSettings& settings, const std::string& path)
{
    const CTranslation translation(OriginalTexts(LoadConfiguration(settings)->GetErrorList()),
                                   TextsOfFile(path));
    const std::vector<STextFinding> findings = translation.Findings();
    if (settings.json)
        PrintDocument(TranslationDocument(FileName(path), translation));
    else
        std::cout << TranslationText(FileName(path), translation);
    return findings.empty() ? epsDone : epsNo;
}

EProgramStatus Write(const SSettings& settings, const SRequest& request)
{
    if (settings.json && request.path == "-")
        throw CFailure(epsUsage, "\"strings -\" writes the texts themselves, which are no JSON: name a file");
    const std::unique_ptr<CErrorDatabase> database = LoadConfiguration(settings);
    const std::vector<CError> errors = LastDefinitions(database->GetErrorList());
    const std::string text = request.withOriginals ? TextFileContent(WithOriginals(OriginalTexts(errors)))
                                                   : LocalisedStrings(errors);
    if (request.path == "-")
    {
        std::cout << text;
        return epsDone;
    }
    WriteTo(request.path, text);
    Report(settings, request.path, errors.size());
    return epsDone;
}

EProgramStatus Strings(const SSettings& settings, const SRequest& request)
{
    if (request.check && request.withOriginals)
        throw CFailure(epsUsage, "--check reads a file and --with-originals writes one: take one of them");
    return request.check ? Check(settings, request.path) : Write(settings, request);
}
} // namespace

void AddStrings(CCommandLine& commandLine)
{
    const auto request = std::make_shared<SRequest>();
    CCommand command = commandLine.Add(
        "strings", "Write the texts of all errors under their keys, or check a translation of them",
        "Eight lines for each error: a key in brackets and its text, four times. With --with-originals each "
        "text\n"
        "stands there a second time, under a key that ends with \".original\": translators leave it as it "
        "is, "
        "and\n"
        "--check tells by it which texts have changed since they were translated. --check names also the "
        "keys\n"
        "that are missing and those that are left over, and ends with 1 if there are any. Needs no owner.\n"
        "Example: faultkeeperctl --config config/example strings --with-originals texts.txt\n"
        "Example: faultkeeperctl --config config/example strings --check german.txt",
        [request](const SSettings& settings) { return Strings(settings, *request); });
    command.Argument("FILE", request->path, "file to write or to check; \"-\" for standard output or input");
    command.Flag("--check", request->check, "check the translation in FILE");
    command.Flag("--with-originals", request->withOriginals,
                 "write each text twice, for translating one of them");
}

} // namespace Faultkeeper::Apps
