#include <Faultkeeper/ErrorDatabase.h>

#include "support/CapturedOutput.h"
#include "support/FreshDirectory.h"
#include "unit/Common/fixtures/ConfigurationText.h"
#include "unit/Common/fixtures/Configurations.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

namespace
{

using namespace Faultkeeper;
using namespace ConfigurationText;
using Fixtures::Lines;
using Fixtures::LoadedNames;

class ErrorDatabaseLoadingTest : public testing::Test
{
protected:
    std::string Path() const { return m_directory.Prefix(); }

    void WriteConfiguration(const std::string& text) const
    {
        Support::WriteFile(Path() + "FaultkeeperConfig.xml", text);
    }

    /// Writes one module file and loads it.
    const CErrorDatabase& Load(const std::string& subModules)
    {
        WriteList(Path(), kEntry);
        WriteModule(Path(), subModules);
        m_database = std::make_unique<CErrorDatabase>(Path());
        return *m_database;
    }

    /// The error of a module file that defines just one.
    const CError& LoadError(const std::string& content, const std::string& attributes = kErrorAttributes)
    {
        const CErrorDatabase& database = Load(SubModule(Problem(Error(content, attributes))));
        EXPECT_EQ(database.GetErrorList().size(), 1u);
        return database.GetErrorList().at(0);
    }

    const CError& LoadErrorOf(const std::string& attributes)
    {
        return LoadError(kTexts, kErrorAttributes + " " + attributes);
    }

    bool LoadsNothing() const { return CErrorDatabase(Path()).GetErrorList().empty(); }
    bool RunsToItsEnd() const { return CErrorDatabase(Path()).Loaded(); }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
};

// ---- The configuration file

TEST_F(ErrorDatabaseLoadingTest, WithoutConfigurationFileTheDatabaseIsEmptyAndNotLoadedWithoutAWord)
{
    const std::string printed = Support::PrintedBy(
        [this] { EXPECT_EQ(Support::WarnedBy([this] { EXPECT_TRUE(LoadsNothing()); }), ""); });
    EXPECT_EQ(printed, "");
    EXPECT_FALSE(RunsToItsEnd());
}

TEST_F(ErrorDatabaseLoadingTest, AConfigurationFileThatIsNotWellFormedCountsAsMissing)
{
    WriteModule(Path(), WholeError("No Data"));
    for (const char* text :
         {"", "<Faultkeeper><ErrorList>", "<Faultkeeper><ErrorList></Faultkeeper></ErrorList>",
          "<Faultkeeper><ErrorList/></Faultkeeper><Faultkeeper/>",
          "<Faultkeeper><ErrorList><Note a='1' a='2'/></ErrorList></Faultkeeper>"})
    {
        WriteConfiguration(text);
        EXPECT_EQ(Support::WarnedBy([this] { EXPECT_FALSE(RunsToItsEnd()); }), "") << text;
    }
}

TEST_F(ErrorDatabaseLoadingTest, AConfigurationFileWithoutErrorListIsNotLoaded)
{
    for (const char* text : {"<Faultkeeper/>", "<Faultkeeper><Errorlist/></Faultkeeper>",
                             "<faultkeeper><ErrorList/></faultkeeper>", "<ErrorList/>",
                             "<Top><Faultkeeper><ErrorList/></Faultkeeper></Top>",
                             "<Faultkeeper><Inner><ErrorList/></Inner></Faultkeeper>"})
    {
        WriteConfiguration(text);
        EXPECT_FALSE(RunsToItsEnd()) << text;
    }
}

TEST_F(ErrorDatabaseLoadingTest, AnEmptyErrorListIsLoaded)
{
    WriteConfiguration("<Faultkeeper><ErrorList/></Faultkeeper>");
    EXPECT_TRUE(RunsToItsEnd());
    EXPECT_TRUE(LoadsNothing());
}

TEST_F(ErrorDatabaseLoadingTest, OnlyTheFirstErrorListIsRead)
{
    WriteModule(Path(), WholeError("No Data"));
    WriteConfiguration("<Faultkeeper><Other><Bad/></Other><ErrorList>" + kEntry +
                       "</ErrorList><ErrorList><Note/></ErrorList></Faultkeeper>");
    EXPECT_EQ(LoadedNames(CErrorDatabase(Path())), (Lines{"Positioning:GPS:No Data:2"}));
}

TEST_F(ErrorDatabaseLoadingTest, TheDirectoryIsPutBeforeTheFileNameAsItStands)
{
    WriteConfiguration("<Faultkeeper><ErrorList/></Faultkeeper>");
    EXPECT_FALSE(CErrorDatabase(m_directory.Path()).Loaded()); // no slash, so a file beside the directory
    const std::string beside = m_directory.Path() + "FaultkeeperConfig.xml";
    Support::WriteFile(beside, "<Faultkeeper><ErrorList/></Faultkeeper>");
    EXPECT_TRUE(CErrorDatabase(m_directory.Path()).Loaded());
    std::filesystem::remove(beside);
}

TEST_F(ErrorDatabaseLoadingTest, ThePrefixStandsBeforeModuleFilesToo)
{
    const std::string prefix = Path() + "console-";
    WriteList(prefix, kEntry);
    WriteModule(Path(), WholeError("No Network"));
    EXPECT_TRUE(CErrorDatabase(prefix).GetErrorList().empty());
    WriteModule(prefix, WholeError("No Data"));
    EXPECT_EQ(LoadedNames(CErrorDatabase(prefix)), (Lines{"Positioning:GPS:No Data:2"}));
}

TEST_F(ErrorDatabaseLoadingTest, AnEmptyDirectoryIsTheCurrentOne)
{
    WriteList(Path(), kEntry);
    WriteModule(Path(), WholeError("No Data"));
    const Support::CWorkingDirectory working(m_directory.Path());
    EXPECT_EQ(LoadedNames(CErrorDatabase("")), (Lines{"Positioning:GPS:No Data:2"}));
}

// ---- Module files

TEST_F(ErrorDatabaseLoadingTest, AModuleFileThatCannotBeReadAddsNothingAndStopsNothing)
{
    WriteList(Path(), R"(<Module identifier="GPS" file="none.xml"/><Module identifier="GPS" file="bad.xml"/>)"
                      R"(<Module identifier="GPS"/><Module identifier="GPS" file="other.xml"/>)" +
                          kEntry);
    Support::WriteFile(Path() + "bad.xml", "<Module>" + WholeError("No SIM") + "<SubModule>");
    Support::WriteFile(Path() + "other.xml", "<module>" + WholeError("No SIM") + "</module>");
    WriteModule(Path(), WholeError("No Data"));
    EXPECT_EQ(Support::WarnedBy(
                  [this]
                  {
                      const CErrorDatabase database(Path());
                      EXPECT_TRUE(database.Loaded());
                      EXPECT_EQ(LoadedNames(database), (Lines{"Positioning:GPS:No Data:2"}));
                  }),
              "");
}

TEST_F(ErrorDatabaseLoadingTest, TheListAloneSaysWhichModuleAFileIs)
{
    WriteList(Path(), R"(<Module identifier="NTrip" file="module.xml"><Note/></Module>)");
    Support::WriteFile(Path() + "module.xml", Element("Module", "identifier=\"GPS\"", WholeError("No Data")));
    EXPECT_EQ(LoadedNames(CErrorDatabase(Path())), (Lines{"NTrip:GPS:No Data:2"}));
}

TEST_F(ErrorDatabaseLoadingTest, AFileNamedTwiceIsReadTwice)
{
    WriteList(Path(), kEntry + R"(<Module identifier="Base" file="module.xml"/>)" + kEntry);
    WriteModule(Path(), WholeError("No Data"));
    EXPECT_EQ(LoadedNames(CErrorDatabase(Path())),
              (Lines{"Positioning:GPS:No Data:2", "Base:GPS:No Data:2", "Positioning:GPS:No Data:2"}));
}

TEST_F(ErrorDatabaseLoadingTest, ErrorsStandInTheOrderOfTheFiles)
{
    WriteList(Path(), kEntry + R"(<Module identifier="GPS" file="second.xml"/>)");
    WriteModule(Path(), SubModule(Problem(Error(kTexts, R"(identifier="9" severity="Low")") +
                                              Error(kTexts, R"(identifier="1" severity="Low")"),
                                          "No SIM") +
                                      Problem(Error(kTexts), "Data"),
                                  "Ublox") +
                            SubModule("") + SubModule(Problem("")));
    WriteModule(Path(), WholeError("Heading"), "second.xml");
    EXPECT_EQ(LoadedNames(CErrorDatabase(Path())),
              (Lines{"Positioning:Ublox:No SIM:9", "Positioning:Ublox:No SIM:1", "Positioning:Ublox:Data:2",
                     "GPS:GPS:Heading:2"}));
}

// ---- Errors

TEST_F(ErrorDatabaseLoadingTest, AnErrorWithTheRequiredTextsOnlyIsInvisibleAndPlain)
{
    const CError& error = LoadError(kTexts);
    EXPECT_EQ(error.ProblemCode(), 0x40C1B);
    EXPECT_EQ(error.ProblemType(), 2);
    EXPECT_EQ(error.Severity(), eesHigh);
    EXPECT_EQ(error.ProblemText(), "No satellite data");
    EXPECT_EQ(error.SolutionText(), "Check the antenna");
    EXPECT_EQ(error.ShortProblemText(), "No GPS");
    EXPECT_EQ(error.TitleText(), "");
    EXPECT_FALSE(error.Visible() || error.FullScreen() || error.ForceShutdown());
    EXPECT_FALSE(error.IncludeServiceNumber() || error.ShouldBeep() || error.ShouldBeepIfGuiding());
    EXPECT_FALSE(error.Active() || error.Changed());
    EXPECT_TRUE(error.TriggerSets().empty());
    EXPECT_TRUE(error.Parents().empty());
}

const char* const kFlags[] = {"visible",    "fullScreen",         "forceShutdown", "includeServiceNumber",
                              "shouldBeep", "shouldBeepIfGuiding"};

std::array<bool, 6> FlagsOf(const CError& error)
{
    return {error.Visible(),       error.FullScreen(),
            error.ForceShutdown(), error.IncludeServiceNumber(),
            error.ShouldBeep(),    error.ShouldBeepIfGuiding()};
}

TEST_F(ErrorDatabaseLoadingTest, EachFlagSetsWhatItIsCalled)
{
    for (std::size_t flag = 0; flag < 6; ++flag)
    {
        std::array<bool, 6> expected{};
        expected[flag] = true;
        EXPECT_EQ(FlagsOf(LoadErrorOf(std::string(kFlags[flag]) + "=\"yes\"")), expected) << kFlags[flag];
    }
}

TEST_F(ErrorDatabaseLoadingTest, OnlyYesSetsAFlag)
{
    for (const char* flag : kFlags)
    {
        for (const char* value : {"true", "1", "Yes", "YES", "y", "", " yes", "yes ", "yess", "no"})
            EXPECT_EQ(FlagsOf(LoadErrorOf(std::string(flag) + "=\"" + value + "\"")), (std::array<bool, 6>{}))
                << flag << '=' << value;
    }
}

TEST_F(ErrorDatabaseLoadingTest, FlagNamesAreCaseSensitiveAndUnknownAttributesIgnored)
{
    EXPECT_EQ(FlagsOf(LoadErrorOf(R"(Visible="yes" fullscreen="yes" colour="")")), (std::array<bool, 6>{}));
}

TEST_F(ErrorDatabaseLoadingTest, EverySeverityIsReadByItsName)
{
    EXPECT_EQ(LoadError(kTexts, R"(identifier="2" severity="Low")").Severity(), eesLow);
    EXPECT_EQ(LoadError(kTexts, R"(identifier="2" severity="Medium")").Severity(), eesMedium);
    EXPECT_EQ(LoadError(kTexts, R"(identifier="2" severity="High")").Severity(), eesHigh);
    EXPECT_EQ(LoadError(kTexts, R"(identifier="2" severity="Critical")").Severity(), eesCritical);
}

TEST_F(ErrorDatabaseLoadingTest, TheFailureModeIsANameOrANumberAndElseTwentyOne)
{
    EXPECT_EQ(LoadError(kTexts, R"(identifier="RootCauseUnknown" severity="Low")").ProblemType(), 11);
    EXPECT_EQ(LoadError(kTexts, R"(identifier="7" severity="Low")").ProblemType(), 7);
    EXPECT_EQ(LoadError(kTexts, R"(identifier="Whatever" severity="Low")").ProblemType(), 21);
    EXPECT_EQ(LoadError(kTexts, R"(identifier=" " severity="Low")").ProblemType(), 21);
    EXPECT_EQ(LoadError(kTexts, R"(identifier="4294967299" severity="Low")").ProblemType(), 21);
}

TEST_F(ErrorDatabaseLoadingTest, AnErrorOfUnknownFailureModeIsFoundUnderTwentyOne)
{
    const CErrorDatabase& database =
        Load(SubModule(Problem(Error(kTexts, R"(identifier="X" severity="Low")"))));
    EXPECT_EQ(database.RetrieveError(0x40C1B, 21), &database.GetErrorList()[0]);
}

// ---- Texts

TEST_F(ErrorDatabaseLoadingTest, ALaterTextOfTheSameTypeReplacesTheEarlier)
{
    const CError& error =
        LoadError(kTexts + R"(<Text type="problem" text="p2"/><Text type="title" text="t1"/>)"
                           R"(<Text type="shortProblem" text="h2"/><Text type="solution" text="s2"/>)"
                           R"(<Text type="title" text="t2"/>)");
    EXPECT_EQ(error.ProblemText(), "p2");
    EXPECT_EQ(error.SolutionText(), "s2");
    EXPECT_EQ(error.ShortProblemText(), "h2");
    EXPECT_EQ(error.TitleText(), "t2");
}

TEST_F(ErrorDatabaseLoadingTest, ATextOfUnknownTypeSetsNothing)
{
    const CError& error = LoadError(R"(<Text type="Problem" text="x"/><Text type="other" text="x"/>)" +
                                    kTexts + R"(<Text type="Title" text="x"/><Text type="text" text="x"/>)");
    EXPECT_EQ(error.ProblemText(), "No satellite data");
    EXPECT_EQ(error.TitleText(), "");
}

TEST_F(ErrorDatabaseLoadingTest, TextsAreTakenAsTheyStandInTheAttribute)
{
    const CError& error = LoadError(
        kTexts + "<Text type=\"problem\" text=\"  5 &lt; 6 &amp; &quot;7&quot;&#10;8 \xC3\xB6 %s%n \">not "
                 "this<Text type=\"title\" text=\"nor this\"/></Text>");
    EXPECT_EQ(error.ProblemText(), "  5 < 6 & \"7\"\n8 \xC3\xB6 %s%n ");
    EXPECT_EQ(error.TitleText(), "");
}

TEST_F(ErrorDatabaseLoadingTest, ABlankTextIsAText)
{
    EXPECT_EQ(LoadError(kTexts + R"(<Text type="solution" text=" "/>)").SolutionText(), " ");
}

TEST_F(ErrorDatabaseLoadingTest, AVeryLongTextIsKeptWhole)
{
    const std::string text(100000, 'x');
    EXPECT_EQ(LoadError(kTexts + "<Text type=\"problem\" text=\"" + text + "\"/>").ProblemText(), text);
}

TEST_F(ErrorDatabaseLoadingTest, AServiceDescriptionIsSkippedWhole)
{
    const CError& error = LoadError("<ServiceDescription><Text/><Note/><TriggerSets><Note/></TriggerSets>"
                                    "</ServiceDescription>" +
                                    kTexts + R"(<ServiceDescription type="title" text="x"/>)");
    EXPECT_EQ(error.TitleText(), "");
    EXPECT_TRUE(error.TriggerSets().empty());
}

// ---- Two definitions of one identifier

TEST_F(ErrorDatabaseLoadingTest, OfTwoDefinitionsTheLaterIsFoundAndBothAreKept)
{
    const CErrorDatabase& database =
        Load(WholeError("No Data") + WholeError("No Data", R"(<Text type="title" text="later"/>)") +
             WholeError("Data"));
    ASSERT_EQ(database.GetErrorList().size(), 3u);
    EXPECT_EQ(database.GetErrorList()[0].TitleText(), "");
    EXPECT_EQ(database.RetrieveError(0x40C1B, 2), &database.GetErrorList()[1]);
    m_database->RaiseError(0x40C1B, 2, false);
    EXPECT_FALSE(database.GetErrorList()[0].Active() || database.GetErrorList()[0].Changed());
    EXPECT_TRUE(database.GetErrorList()[1].Active());
}

TEST_F(ErrorDatabaseLoadingTest, ADefinitionInALaterFileReplacesOneOfAnEarlierFile)
{
    WriteList(Path(), kEntry + R"(<Module identifier="Positioning" file="second.xml"/>)");
    WriteModule(Path(), WholeError("No Data"));
    WriteModule(Path(), WholeError("No Data"), "second.xml");
    const CErrorDatabase database(Path());
    EXPECT_EQ(database.RetrieveError(0x40C1B, 2), &database.GetErrorList().at(1));
}

TEST_F(ErrorDatabaseLoadingTest, TwoDatabasesOfOneConfigurationShareNothing)
{
    CErrorDatabase other((Load(WholeError("No Data")), Path()));
    other.RaiseError(0x40C1B, 2, false);
    EXPECT_TRUE(other.GetErrorList()[0].Active());
    EXPECT_FALSE(m_database->GetErrorList()[0].Active());
}

} // namespace
