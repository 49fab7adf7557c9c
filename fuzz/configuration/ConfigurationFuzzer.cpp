// Whatever FaultkeeperConfig.xml holds, loading it next to good module files gives a database that can be
// used, an empty one, or the name of the rule that was broken.

#include "harness/ConfigurationFile.h"
#include "harness/DatabaseUse.h"
#include "harness/Expectation.h"
#include "harness/ScratchDirectory.h"
#include "harness/XmlMutation.h"

#include "common/ConfigurationFiles.h"
#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

using namespace Faultkeeper;

namespace
{

/// module0.xml (Positioning, the parents) and module1.xml (GPS). The same file can be listed for any module.
void WriteModules(const std::string& prefix)
{
    Support::CConfigurationBuilder builder;
    builder.Parent("Positioning:GPS:No Data:2", {"GPS:GPS:Communications:9", "GPS:Battery:Power:2"});
    builder.Parent("Positioning:GPS:Connection:11", {"Positioning:GPS:No Data:2"});
    builder.Leaf("GPS:GPS:Communications:9").Leaf("GPS:Battery:Power:2");
    builder.WriteTo(prefix);
}

const std::string& Prefix()
{
    static const Fuzz::CScratchDirectory directory;
    return directory.Prefix();
}

void Load()
{
    CErrorDatabase database(Prefix());
    const Apps::CConfigurationFiles files(Prefix());
    Fuzz::Expect(database.Loaded() || !files.Usable(), "a list that cannot be read is found to be so");
    if (!database.Loaded())
        return;
    Fuzz::Expect(files.ErrorCount() == static_cast<int>(database.GetErrorList().size()),
                 "as many errors are counted as are loaded");
    Fuzz::UseDatabase(database);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    WriteModules(Prefix());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    Fuzz::LoadWith(Prefix(), "FaultkeeperConfig.xml", bytes, size, Load);
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t room,
                                               unsigned seed)
{
    return Fuzz::MutateXml(bytes, size, room, seed);
}
