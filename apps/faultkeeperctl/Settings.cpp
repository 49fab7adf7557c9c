#include "faultkeeperctl/Settings.h"

#include "common/ConfigurationFiles.h"
#include "common/owner/RunDirectory.h"
#include "common/text/TypedText.h"
#include "faultkeeperctl/json/Json.h"
#include "faultkeeperctl/text/Progress.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kBrokenRule = "the configuration breaks this rule and cannot be used";

// Made before it is needed: a signal handler can only write.
struct SLastWords
{
    std::string message;  // for standard error
    std::string document; // for standard output
    int status = epsNo;
};

SLastWords lastWords;

void Write(int descriptor, const std::string& text)
{
    const ssize_t ignored = write(descriptor, text.data(), text.size());
    static_cast<void>(ignored);
}

void EndAfterBrokenRule(int)
{
    Write(STDERR_FILENO, lastWords.message);
    Write(STDOUT_FILENO, lastWords.document);
    _exit(lastWords.status);
}

std::string MessageLine(const CFailure& failure)
{
    return "faultkeeperctl: " + WithoutControls(failure.what()) + "\n";
}

std::string FailureDocument(const CFailure& failure)
{
    Json document;
    document["error"] = failure.what();
    document["status"] = static_cast<int>(failure.Status());
    return DocumentText(document);
}

// The library ends the process when a rule is broken, with a message that names it. For whoever asked on the
// command line that is an answer, no crash: no core file, and the status of something found wrong.
class CBrokenRuleScope
{
public:
    CBrokenRuleScope(const CFailure* instead, bool json)
    {
        const CFailure broken(epsNo, kBrokenRule);
        lastWords.message = MessageLine(broken) + (instead == nullptr ? "" : MessageLine(*instead));
        lastWords.document = json ? FailureDocument(instead == nullptr ? broken : *instead) : "";
        lastWords.status = instead == nullptr ? broken.Status() : instead->Status();
        struct sigaction action = {};
        action.sa_handler = EndAfterBrokenRule;
        sigaction(SIGABRT, &action, &m_before);
    }
    ~CBrokenRuleScope() { sigaction(SIGABRT, &m_before, nullptr); }
    CBrokenRuleScope(const CBrokenRuleScope&) = delete;
    CBrokenRuleScope& operator=(const CBrokenRuleScope&) = delete;

private:
    struct sigaction m_before = {};
};

bool IsConfigured(const std::string& option, const std::string& prefix)
{
    const char* const variable = std::getenv("FAULTKEEPER_CONFIG");
    if (!option.empty() || (variable != nullptr && *variable != '\0'))
        return true;
    std::error_code ignored;
    return std::filesystem::exists(prefix + "FaultkeeperConfig.xml", ignored);
}

void CheckFiles(const std::string& prefix, const CFailure* instead)
{
    const CConfigurationFiles files(prefix);
    for (const SConfigurationFinding& finding : files.Findings())
        std::fprintf(stderr, "%s\n", WithoutControls(finding.Line()).c_str());
    if (!files.Usable() && instead != nullptr)
        throw *instead;
    if (!files.Usable())
        throw CFailure(epsNo, "the configuration in " + prefix + " cannot be used");
}
} // namespace

void TellFailure(const CFailure& failure, bool json)
{
    if (json)
        std::cout << FailureDocument(failure);
    std::cout.flush();
    std::fputs(MessageLine(failure).c_str(), stderr);
}

SSettings ResolvedSettings(const std::string& configuration, const std::string& runDirectory, bool json)
{
    SSettings settings;
    settings.configuration = DirectoryPrefix(configuration.empty() ? DefaultConfiguration() : configuration);
    settings.configured = IsConfigured(configuration, settings.configuration);
    settings.runDirectory = AbsolutePath(runDirectory.empty() ? DefaultRunDirectory() : runDirectory);
    settings.json = json;
    return settings;
}

std::unique_ptr<CErrorDatabase> LoadConfiguration(const SSettings& settings, const CFailure* instead)
{
    CheckFiles(settings.configuration, instead);
    const CBrokenRuleScope scope(instead, settings.json);
    const CProgress progress("loading the configuration");
    return std::make_unique<CErrorDatabase>(settings.configuration);
}

void EnterRunDirectory(const SSettings& settings)
{
    std::string problem;
    if (!EnterDirectory(settings.runDirectory, problem))
        throw CFailure(epsNoOwner, "no owner: " + problem);
}

} // namespace Faultkeeper::Apps
