#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorOverlay.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

// The example's files as a power cut during their installation leaves them: each of them cut off at every
// byte. A file counts whole or not at all, so nothing is left to the rules of configuration, which would end
// the process.
//
// FAULTKEEPER_TRUNCATION_STEP in the environment says how many bytes lie between one cut and the next.
// Without it that is 1, and 7 where code runs slowly: in an emulator, with sanitizers or while coverage is
// counted.
namespace
{

using namespace Faultkeeper;

struct SFile
{
    const char* name;
    const char* module; ///< as the list of modules calls it
};

const SFile kModules[] = {
    {"Audio", "Audio"},
    {"Base", "Base"},
    {"BaseRadio", "Base Radio"},
    {"CAN", "CAN"},
    {"CellRadio", "Cell Radio"},
    {"GPS", "GPS"},
    {"NMEA", "NMEA"},
    {"NTrip", "NTrip"},
    {"NavigationAndControl", "Navigation And Control"},
    {"Positioning", "Positioning"},
    {"Service", "Service"},
    {"System", "System"},
};

std::size_t Step()
{
    const char* const chosen = std::getenv("FAULTKEEPER_TRUNCATION_STEP");
    const int step = chosen == nullptr ? FAULTKEEPER_TEST_TRUNCATION_STEP : std::atoi(chosen);
    return step > 0 ? static_cast<std::size_t>(step) : 1;
}

std::string Example(const std::string& name)
{
    return Support::ReadFile(FAULTKEEPER_TEST_EXAMPLE + name);
}

class TruncatedFilesTest : public testing::Test
{
protected:
    /// Cuts a file shorter and shorter, from its whole length to nothing.
    /// @param look  told whether the top element's end is still there; false if what it found is wrong
    void CutAtEveryByte(const std::string& name, const std::string& text,
                        const std::function<bool(bool)>& look)
    {
        const std::string path = m_directory.File(name);
        const std::size_t end = text.find_last_of('>') + 1;
        Support::WriteFile(path, text);
        ASSERT_TRUE(look(true)) << name << " as it is";
        for (std::size_t size : {end, end - 1, std::size_t(0)}) // the ends, whatever the step
            ASSERT_TRUE(CutTo(path, text, size, look)) << name << " cut off at byte " << size;
        Support::WriteFile(path, text);
        for (std::size_t size = text.size(); size >= Step();)
        {
            size -= Step();
            std::filesystem::resize_file(path, size);
            ASSERT_TRUE(look(size >= end)) << name << " cut off at byte " << size;
        }
    }

    const Support::CFreshDirectory m_directory;

private:
    static bool CutTo(const std::string& path, const std::string& text, std::size_t size,
                      const std::function<bool(bool)>& look)
    {
        Support::WriteFile(path, text.substr(0, size));
        return look(size >= text.find_last_of('>') + 1);
    }
};

class TruncatedModuleTest : public TruncatedFilesTest, public testing::WithParamInterface<SFile>
{
};

TEST_P(TruncatedModuleTest, AddsAllOfItsErrorsOrNone)
{
    const std::string name = GetParam().name + std::string(".xml");
    Support::WriteFile(m_directory.File("FaultkeeperConfig.xml"),
                       std::string("<Faultkeeper><ErrorList><Module identifier=\"") + GetParam().module +
                           "\" file=\"" + name + "\"/></ErrorList></Faultkeeper>");
    Support::WriteFile(m_directory.File(name), Example(name));
    const std::size_t all = CErrorDatabase(m_directory.Prefix()).GetErrorList().size();
    EXPECT_GT(all, 0u);
    CutAtEveryByte(name, Example(name),
                   [&](bool whole)
                   {
                       const CErrorDatabase database(m_directory.Prefix());
                       return database.Loaded() && database.GetErrorList().size() == (whole ? all : 0);
                   });
}

INSTANTIATE_TEST_SUITE_P(Of, TruncatedModuleTest, testing::ValuesIn(kModules),
                         [](const auto& file) { return std::string(file.param.name); });

TEST_F(TruncatedFilesTest, AListOfModulesIsLoadedWholeOrNotAtAll)
{
    for (const SFile& file : kModules) // empty ones, as the list is what matters
        Support::WriteFile(m_directory.File(file.name + std::string(".xml")), "<Module/>");
    CutAtEveryByte("FaultkeeperConfig.xml", Example("FaultkeeperConfig.xml"),
                   [this](bool whole) { return CErrorDatabase(m_directory.Prefix()).Loaded() == whole; });
}

TEST_F(TruncatedFilesTest, PatternsAreAllLoadedOrNone)
{
    const std::string text = Example("ErrorPatterns.xml");
    Support::WriteFile(
        m_directory.File("ErrorPatterns.xml"),
        "<Overlay><Patterns><pattern fixedCode=\"any\" allowPartialMatch=\"yes\"/></Patterns></Overlay>");
    ASSERT_EQ(CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}), "any");
    // An empty partial pattern in front of the others matches everything once any of them are loaded.
    const std::string list = "<Patterns>";
    const std::size_t begin = text.find(list) + list.size();
    const std::string marked =
        text.substr(0, begin) + "<pattern fixedCode=\"any\" allowPartialMatch=\"yes\"/>" + text.substr(begin);
    CutAtEveryByte(
        "ErrorPatterns.xml", marked,
        [this](bool whole)
        { return CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}) == (whole ? "any" : ""); });
}

} // namespace
