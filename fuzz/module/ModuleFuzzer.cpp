// Whatever a module file holds, loading it next to a good one gives a database that can be used or the name
// of the rule that was broken.

#include "harness/ConfigurationFile.h"
#include "harness/DatabaseUse.h"
#include "harness/Expectation.h"
#include "harness/ScratchDirectory.h"
#include "harness/XmlMutation.h"

#include "common/ConfigurationFiles.h"
#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorPresentation.h>

using namespace Faultkeeper;

namespace
{

constexpr std::size_t kGoodErrors = 2;

const std::string& Prefix()
{
    static const Fuzz::CScratchDirectory directory;
    return directory.Prefix();
}

/// One parent over an error of the other file, and one of its own.
void WriteGoodFiles()
{
    Support::CConfigurationBuilder builder;
    builder.Parent("GPS:GPS:No Data:2", {"Positioning:GPS:No Data:2", "GPS:GPS:Communications:9"});
    builder.Leaf("GPS:GPS:Communications:9");
    builder.WriteTo(Prefix());
    Support::WriteFile(Prefix() + "FaultkeeperConfig.xml",
                       "<Faultkeeper><ErrorList>"
                       "<Module identifier=\"Positioning\" file=\"module.xml\"/>"
                       "<Module identifier=\"GPS\" file=\"module0.xml\"/>"
                       "</ErrorList></Faultkeeper>");
}

void Load()
{
    CErrorDatabase database(Prefix());
    Fuzz::Expect(database.Loaded(), "a module file never keeps the others from being loaded");
    Fuzz::Expect(database.GetErrorList().size() >= kGoodErrors, "the errors of the good file are there");
    const Apps::CConfigurationFiles files(Prefix());
    Fuzz::Expect(files.ErrorCount() == static_cast<int>(database.GetErrorList().size()),
                 "as many errors are counted as are loaded");
    Fuzz::UseDatabase(database);
    CErrorPresentation::DumpLocalisedText(database.GetErrorList(), Prefix() + "texts");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    WriteGoodFiles();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    Fuzz::LoadWith(Prefix(), "module.xml", bytes, size, Load);
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t room,
                                               unsigned seed)
{
    return Fuzz::MutateXml(bytes, size, room, seed);
}
