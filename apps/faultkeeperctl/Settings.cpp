#include "faultkeeperctl/Settings.h"

#include "common/ConfigurationFiles.h"
#include "common/RunDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Faultkeeper::Apps
{

namespace
{
void EndAfterBrokenRule(int)
{
    const char message[] = "faultkeeperctl: the configuration breaks this rule and cannot be used\n";
    const ssize_t ignored = write(STDERR_FILENO, message, sizeof message - 1);
    static_cast<void>(ignored);
    _exit(epsNo);
}

// The library ends the process when a rule is broken, with a message that names it. For whoever asked on the
// command line that is an answer, no crash: no core file, and the status of something found wrong.
class CBrokenRuleScope
{
public:
    CBrokenRuleScope()
    {
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

void CheckFiles(const std::string& prefix)
{
    const CConfigurationFiles files(prefix);
    for (const SConfigurationFinding& finding : files.Findings())
        std::fprintf(stderr, "%s\n", finding.Line().c_str());
    if (!files.Usable())
        throw CFailure(epsNo, "the configuration in " + prefix + " cannot be used");
}
} // namespace

SSettings ResolvedSettings(const std::string& configuration, const std::string& runDirectory, bool json)
{
    SSettings settings;
    settings.configuration = DirectoryPrefix(configuration.empty() ? DefaultConfiguration() : configuration);
    settings.configured = IsConfigured(configuration, settings.configuration);
    settings.runDirectory = AbsolutePath(runDirectory.empty() ? DefaultRunDirectory() : runDirectory);
    settings.json = json;
    return settings;
}

std::unique_ptr<CErrorDatabase> LoadConfiguration(const SSettings& settings)
{
    CheckFiles(settings.configuration);
    const CBrokenRuleScope scope;
    return std::make_unique<CErrorDatabase>(settings.configuration);
}

void EnterRunDirectory(const SSettings& settings)
{
    std::string problem;
    if (!EnterDirectory(settings.runDirectory, problem))
        throw CFailure(epsNoOwner, "no owner: " + problem);
}

} // namespace Faultkeeper::Apps
