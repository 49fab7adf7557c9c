#include "common/ConfigurationFiles.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>

using namespace Support;
using Faultkeeper::Apps::CConfigurationFiles;
using Faultkeeper::Apps::SConfigurationFinding;
using testing::StartsWith;

namespace
{

constexpr const char* kOneError =
    "<Module><SubModule identifier=\"GPS\"><Problem identifier=\"No Data\"><Error/>"
    "</Problem></SubModule></Module>";

class ConfigurationFiles : public testing::Test
{
protected:
    void List(const std::string& entries)
    {
        Write("FaultkeeperConfig.xml",
              "<Faultkeeper>\n <ErrorList>\n" + entries + " </ErrorList>\n</Faultkeeper>\n");
    }

    void Write(const std::string& name, const std::string& text) { WriteFile(m_directory.File(name), text); }

    /// All findings, one a line, with "DIR" for the directory.
    std::string Findings() const
    {
        const CConfigurationFiles files(m_directory.Prefix());
        std::string lines;
        for (const SConfigurationFinding& finding : files.Findings())
            lines += finding.Line() + "\n";
        for (std::size_t at; (at = lines.find(m_directory.Path())) != std::string::npos;)
            lines.replace(at, m_directory.Path().size(), "DIR");
        EXPECT_EQ(files.Usable(), lines.find(": error: ") == std::string::npos);
        return lines;
    }

    CFreshDirectory m_directory;
};

} // namespace

TEST_F(ConfigurationFiles, FindsNothingInAGoodOne)
{
    CConfigurationBuilder()
        .Leaf("Positioning:GPS:No Data:2")
        .Leaf("System:Position:No Data:2")
        .WriteTo(m_directory.Prefix());
    EXPECT_EQ(Findings(), "");
    EXPECT_EQ(CConfigurationFiles(m_directory.Prefix()).ErrorCount(), 2);
}

TEST_F(ConfigurationFiles, NamesAMissingList)
{
    EXPECT_EQ(Findings(), "DIR/FaultkeeperConfig.xml:1:1: error: No such file or directory\n");
}

TEST_F(ConfigurationFiles, GivesThePlaceWhereAListIsNotWellFormed)
{
    Write("FaultkeeperConfig.xml", "<Faultkeeper>\n  <ErrorList>\n</Faultkeeper>\n");
    EXPECT_THAT(Findings(), StartsWith("DIR/FaultkeeperConfig.xml:3:3: error: "));
}

TEST_F(ConfigurationFiles, CallsAnEmptyFileNotWellFormed)
{
    Write("FaultkeeperConfig.xml", "");
    EXPECT_THAT(Findings(), StartsWith("DIR/FaultkeeperConfig.xml:1:1: error: "));
}

TEST_F(ConfigurationFiles, WantsAFaultkeeperElementOnTop)
{
    Write("FaultkeeperConfig.xml", "<?xml version=\"1.0\"?>\n<faultkeeper/>\n");
    EXPECT_EQ(Findings(), "DIR/FaultkeeperConfig.xml:2:1: error: the top element is not \"Faultkeeper\" but "
                          "\"faultkeeper\"\n");
}

TEST_F(ConfigurationFiles, WantsAnErrorList)
{
    Write("FaultkeeperConfig.xml", "<Faultkeeper>\n  <Modules/>\n</Faultkeeper>\n");
    EXPECT_EQ(Findings(),
              "DIR/FaultkeeperConfig.xml:1:1: error: there is no \"ErrorList\" in \"Faultkeeper\"\n");
}

TEST_F(ConfigurationFiles, PointsAtAnErrorListThatIsMisspelled)
{
    Write("FaultkeeperConfig.xml", "<Faultkeeper>\n  <Modules/>\n  <Errors/>\n</Faultkeeper>\n");
    EXPECT_EQ(Findings(), "DIR/FaultkeeperConfig.xml:3:3: error: unknown element \"Errors\"; did you mean "
                          "\"ErrorList\"?\n");
}

TEST_F(ConfigurationFiles, WantsModulesInTheErrorList)
{
    List("");
    EXPECT_EQ(Findings(),
              "DIR/FaultkeeperConfig.xml:2:2: error: the \"ErrorList\" is empty: it lists no \"Module\"\n");
}

TEST_F(ConfigurationFiles, WantsAFileNameForEachModule)
{
    List("  <Module identifier=\"GPS\"/>\n  <Module identifier=\"CAN\" file=\"\"/>\n");
    EXPECT_EQ(Findings(), "DIR/FaultkeeperConfig.xml:3:3: error: this \"Module\" names no file\n"
                          "DIR/FaultkeeperConfig.xml:4:28: error: this \"Module\" names no file\n");
}

TEST_F(ConfigurationFiles, PointsAtTheEntryOfAMissingModuleFile)
{
    List("  <Module identifier=\"GPS\" file=\"GPS.xml\"/>\n");
    EXPECT_EQ(Findings(),
              "DIR/FaultkeeperConfig.xml:3:28: error: module file DIR/GPS.xml: No such file or directory\n");
}

TEST_F(ConfigurationFiles, GivesThePlaceWhereAModuleFileIsNotWellFormed)
{
    List("  <Module identifier=\"GPS\" file=\"GPS.xml\"/>\n");
    Write("GPS.xml", "<Module>\n <SubModule>\n </Problem>\n</Module>\n");
    EXPECT_THAT(Findings(), StartsWith("DIR/GPS.xml:3:4: error: "));
}

TEST_F(ConfigurationFiles, WantsAModuleElementOnTopOfAModuleFile)
{
    List("  <Module identifier=\"GPS\" file=\"GPS.xml\"/>\n");
    Write("GPS.xml", "\n  <Modules/>\n");
    EXPECT_EQ(Findings(), "DIR/GPS.xml:2:3: error: the top element is not \"Module\" but \"Modules\"\n");
}

TEST_F(ConfigurationFiles, WantsErrorsInAModule)
{
    List("  <Module identifier=\"GPS\" file=\"GPS.xml\"/>\n");
    for (const char* const inside : {"", "<SubModule/>", "<SubModule><Problem/><Problem/></SubModule>"})
    {
        Write("GPS.xml", "<Module>" + std::string(inside) + "</Module>");
        EXPECT_EQ(Findings(), "DIR/GPS.xml:1:1: error: the \"Module\" is empty: it defines no error\n");
    }
}

TEST_F(ConfigurationFiles, LeavesElementsThatDoNotBelongToTheDatabase)
{
    List("  <Module identifier=\"GPS\" file=\"GPS.xml\"/>\n  <Modul/>\n");
    Write("GPS.xml", "<Module><Submodule/></Module>");
    EXPECT_EQ(Findings(), "");
}

TEST_F(ConfigurationFiles, ReportsEveryFileAndEachOneOnce)
{
    List("  <Module identifier=\"GPS\" file=\"A.xml\"/>\n"
         "  <Module identifier=\"CAN\" file=\"B.xml\"/>\n"
         "  <Module identifier=\"NMEA\" file=\"A.xml\"/>\n"
         "  <Module identifier=\"NTrip\" file=\"C.xml\"/>\n");
    Write("B.xml", kOneError);
    Write("C.xml", "<Module/>");
    EXPECT_EQ(Findings(),
              "DIR/FaultkeeperConfig.xml:3:28: error: module file DIR/A.xml: No such file or directory\n"
              "DIR/C.xml:1:1: error: the \"Module\" is empty: it defines no error\n");
}

TEST_F(ConfigurationFiles, CountsAFileThatIsListedTwiceTwice)
{
    List("  <Module identifier=\"GPS\" file=\"A.xml\"/>\n  <Module identifier=\"CAN\" file=\"A.xml\"/>\n");
    Write("A.xml", kOneError);
    EXPECT_EQ(Findings(), "");
    EXPECT_EQ(CConfigurationFiles(m_directory.Prefix()).ErrorCount(), 2);
}

TEST_F(ConfigurationFiles, WarnsOfErrorsThatTheTableCannotHold)
{
    List("  <Module identifier=\"GPS\" file=\"A.xml\"/>\n");
    std::string errors;
    for (int i = 0; i < 400; ++i)
        errors += "<Error/>";
    const std::string begin = "<Module><SubModule><Problem>";
    const std::string end = "</Problem></SubModule></Module>";
    Write("A.xml", begin + errors + end);
    EXPECT_EQ(Findings(), "");
    Write("A.xml", begin + errors + "<Error/><Error/>" + end);
    EXPECT_EQ(Findings(),
              "DIR/FaultkeeperConfig.xml:2:2: warning: 402 errors are defined, but the shared table holds "
              "400: the last 2 are not going to be shown\n");
}

TEST_F(ConfigurationFiles, RefusesAPipeInsteadOfWaitingForItsWriter)
{
    List("  <Module identifier=\"GPS\" file=\"GPS.xml\"/>\n");
    ASSERT_EQ(mkfifo(m_directory.File("GPS.xml").c_str(), 0600), 0);
    EXPECT_EQ(Findings(),
              "DIR/FaultkeeperConfig.xml:3:28: error: module file DIR/GPS.xml: Not a regular file\n");
    const CFreshDirectory other;
    ASSERT_EQ(mkfifo(other.File("FaultkeeperConfig.xml").c_str(), 0600), 0);
    EXPECT_FALSE(CConfigurationFiles(other.Prefix()).Usable());
}
