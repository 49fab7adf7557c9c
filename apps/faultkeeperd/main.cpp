#include "common/ConfigurationFiles.h"
#include "common/StandardStreams.h"
#include "common/owner/RunDirectory.h"
#include "faultkeeperd/Log.h"
#include "faultkeeperd/Options.h"
#include "faultkeeperd/service/Service.h"
#include "store/StoreFile.h"

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

/// @param runDirectory  absolute; to be called before it is entered, since the file is named from here
SStoreSettings StoreSettings(const COptions& options, const std::string& runDirectory)
{
    SStoreSettings settings;
    if (options.State().empty())
        settings.path = UsualStorePath(runDirectory);
    else if (options.State() != "none")
        settings.path = AbsolutePath(options.State());
    settings.note = runDirectory + "/faultkeeper.note";
    settings.journalLimit = options.JournalLimit();
    settings.syncEachCommit = options.Sync();
    return settings;
}

bool Own(const COptions& options)
{
    // From the root, so that what is loaded after the change of directory is what was checked before it.
    const std::string configuration = DirectoryPrefix(options.ConfigurationPrefix());
    const std::string runDirectory =
        AbsolutePath(options.RunDirectory().empty() ? DefaultRunDirectory() : options.RunDirectory());
    const SStoreSettings store = StoreSettings(options, runDirectory);
    if (!ConfigurationUsable(configuration) || !Enter(runDirectory))
        return false;
    CService service(runDirectory, store, options.Connections());
    return service.Listen(options.Port()) && service.Claim() && service.Load(configuration) && service.Run();
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
        LimitLog();
        const bool done = Own(options);
        LogLeftOut(true);
        return done ? 0 : 1;
    }
    catch (const std::exception& failure)
    {
        LogError(failure.what());
        return 1;
    }
}
