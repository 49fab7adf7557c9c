#include "common/ConfigurationFiles.h"
#include "common/RunDirectory.h"
#include "common/StandardStreams.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/Options.h"
#include "faultkeeperd/Service.h"

#include <cstdio>
#include <exception>
#include <string>

using namespace Faultkeeper::Apps;

namespace
{
bool ConfigurationUsable(const std::string& prefix)
{
    const CConfigurationFiles files(prefix);
    for (const SConfigurationFinding& finding : files.Findings())
        std::fprintf(stderr, "%s\n", finding.Line().c_str());
    if (!files.Usable())
        LogError("the configuration cannot be used; nothing was changed");
    return files.Usable();
}

bool Enter(const std::string& directory)
{
    std::string problem;
    const bool entered = EnterDirectory(directory, problem);
    if (!entered)
        LogError("run directory: " + problem);
    return entered;
}

bool Own(const COptions& options)
{
    // From the root, so that what is loaded after the change of directory is what was checked before it.
    const std::string configuration = DirectoryPrefix(options.ConfigurationPrefix());
    const std::string runDirectory =
        AbsolutePath(options.RunDirectory().empty() ? DefaultRunDirectory() : options.RunDirectory());
    if (!ConfigurationUsable(configuration) || !Enter(runDirectory))
        return false;
    CService service;
    return service.Listen(options.Port()) && service.Claim(runDirectory) && service.Load(configuration) &&
           service.Run();
}
} // namespace

int main(int argumentCount, char** arguments)
{
    OpenStandardStreams();
    try
    {
        const COptions options(argumentCount, arguments);
        if (!options.Run())
            return options.ExitStatus();
        return Own(options) ? 0 : 1;
    }
    catch (const std::exception& failure)
    {
        LogError(failure.what());
        return 1;
    }
}
