#include <Faultkeeper/ErrorDatabase.h>

#include "support/CapturedOutput.h"
#include "unit/Common/fixtures/ConfigurationText.h"
#include "unit/Common/fixtures/Configurations.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace Faultkeeper;
using namespace ConfigurationText;
using Fixtures::Lines;
using Fixtures::NamesOf;

const std::string kOwner = "Positioning:GPS:No Data:2";
const std::string kHeading = "Positioning:GPS:Heading:2";
const std::string kSpeed = "Positioning:GPS:Speed:2";
const std::string kLeaves = WholeError("Heading") + WholeError("Speed");

/// The owner comes first in its file, so its triggers are defined after it.
class ErrorDatabaseTriggersTest : public testing::Test
{
protected:
    const CErrorDatabase& Load(const std::string& subModules)
    {
        WriteList(m_directory.Prefix(), kEntry);
        WriteModule(m_directory.Prefix(), subModules);
        m_warned = Support::WarnedBy(
            [this] { m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix()); });
        return *m_database;
    }

    const std::vector<CTriggerSet>& LoadSets(const std::string& triggerSets)
    {
        Load(WholeError("No Data", TriggerSets(triggerSets)) + kLeaves);
        return Found(kOwner).TriggerSets();
    }

    CTriggerSet LoadOptions(const std::string& options)
    {
        return LoadSets(TriggerSet(Options(options))).at(0);
    }

    Lines LoadTriggers(const std::string& triggers)
    {
        return NamesOf(LoadSets(TriggerSet(Triggers(triggers))).at(0).Triggers());
    }

    const CError& Found(const std::string& name) const { return *Fixtures::Find(*m_database, name); }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
    std::string m_warned; ///< while loading
};

// ---- Sets

TEST_F(ErrorDatabaseTriggersTest, ASetWithoutOptionsAndTriggersHasTheDefaults)
{
    const std::vector<CTriggerSet>& sets = LoadSets("<TriggerSet/>");
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_FALSE(sets[0].AutoTrigger());
    EXPECT_EQ(sets[0].TriggersRequired(), 1);
    EXPECT_EQ(sets[0].LinkingMode(), eelmDeep);
    EXPECT_EQ(sets[0].TitleSource(), eetsParent);
    EXPECT_TRUE(sets[0].Triggers().empty());
}

TEST_F(ErrorDatabaseTriggersTest, SetsStandInTheOrderOfTheFile)
{
    const std::vector<CTriggerSet>& sets = LoadSets(TriggerSet(Triggers(Trigger(kSpeed))) + TriggerSet("") +
                                                    TriggerSet(Triggers(Trigger(kHeading))));
    ASSERT_EQ(sets.size(), 3u);
    EXPECT_EQ(NamesOf(sets[0].Triggers()), (Lines{kSpeed}));
    EXPECT_EQ(NamesOf(sets[1].Triggers()), Lines{});
    EXPECT_EQ(NamesOf(sets[2].Triggers()), (Lines{kHeading}));
}

TEST_F(ErrorDatabaseTriggersTest, OnlyTheLastTriggerSetsOfAnErrorCount)
{
    Load(WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger(kSpeed)))) +
                                   TriggerSets(TriggerSet(Triggers(Trigger(kHeading))))) +
         kLeaves);
    ASSERT_EQ(Found(kOwner).TriggerSets().size(), 1u);
    EXPECT_EQ(NamesOf(Found(kOwner).TriggerSets()[0].Triggers()), (Lines{kHeading}));
    EXPECT_TRUE(Found(kSpeed).Parents().empty());
}

TEST_F(ErrorDatabaseTriggersTest, AnEmptyLastTriggerSetsLeavesNone)
{
    Load(WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger(kSpeed)))) + "<TriggerSets/>") +
         kLeaves);
    EXPECT_TRUE(Found(kOwner).TriggerSets().empty());
    EXPECT_TRUE(Found(kSpeed).Parents().empty());
}

TEST_F(ErrorDatabaseTriggersTest, AReplacedTriggerSetsIsNotEvenChecked)
{
    Load(WholeError("No Data", TriggerSets("<Note/>") + TriggerSets("")) + kLeaves);
    EXPECT_TRUE(m_database->Loaded());
}

TEST_F(ErrorDatabaseTriggersTest, OtherElementsOfASetAreSkipped)
{
    const std::vector<CTriggerSet>& sets =
        LoadSets(TriggerSet("<Note/>" + Trigger(kSpeed) + Option("triggersNeeded", "5") +
                            "<options><Bad/></options>" + Triggers(Trigger(kHeading))));
    EXPECT_EQ(sets.at(0).TriggersRequired(), 1);
    EXPECT_EQ(NamesOf(sets.at(0).Triggers()), (Lines{kHeading}));
}

TEST_F(ErrorDatabaseTriggersTest, SeveralOptionsAndTriggersOfASetAllApply)
{
    const std::vector<CTriggerSet>& sets =
        LoadSets(TriggerSet(Triggers(Trigger(kSpeed)) + Options(Option("triggersNeeded", "2")) +
                            Triggers(Trigger(kHeading) + Trigger(kSpeed)) +
                            Options(Option("autoTrigger", "yes") + Option("triggersNeeded", "3"))));
    EXPECT_TRUE(sets.at(0).AutoTrigger());
    EXPECT_EQ(sets.at(0).TriggersRequired(), 3);
    EXPECT_EQ(NamesOf(sets.at(0).Triggers()), (Lines{kSpeed, kHeading, kSpeed}));
}

// ---- Options

TEST_F(ErrorDatabaseTriggersTest, AutoTriggerIsYesOrNothing)
{
    EXPECT_TRUE(LoadOptions(Option("autoTrigger", "yes")).AutoTrigger());
    for (const char* value : {"no", "Yes", "true", "1", "yes ", "x"})
        EXPECT_FALSE(LoadOptions(Option("autoTrigger", value)).AutoTrigger()) << value;
}

TEST_F(ErrorDatabaseTriggersTest, TheLaterOfTwoOptionsWins)
{
    EXPECT_FALSE(LoadOptions(Option("autoTrigger", "yes") + Option("autoTrigger", "x")).AutoTrigger());
    EXPECT_EQ(LoadOptions(Option("triggersNeeded", "4") + Option("triggersNeeded", "x")).TriggersRequired(),
              0);
    EXPECT_EQ(
        LoadOptions(Option("errorLinking", "shallow") + Option("errorLinking", "verbose")).LinkingMode(),
        eelmVerbose);
}

TEST_F(ErrorDatabaseTriggersTest, TriggersNeededIsReadAsANumberWithinTheRangeOfInt)
{
    const std::vector<std::pair<std::string, int>> rows{{"2", 2},
                                                        {"2x", 2},
                                                        {"x", 0},
                                                        {" -1", -1},
                                                        {"&#9;+3", 3},
                                                        {"- 1", 0},
                                                        {" ", 0},
                                                        {"007", 7},
                                                        {"0x10", 0},
                                                        {"1.9", 1},
                                                        {"2147483647", INT_MAX},
                                                        {"2147483648", INT_MAX},
                                                        {"-2147483648", INT_MIN},
                                                        {"-2147483649", INT_MIN},
                                                        {"4294967297", INT_MAX},
                                                        {"-4294967297", INT_MIN},
                                                        {"99999999999999999999", INT_MAX},
                                                        {"-99999999999999999999", INT_MIN},
                                                        {"18446744073709551617", INT_MAX}};
    for (const auto& row : rows)
        EXPECT_EQ(LoadOptions(Option("triggersNeeded", row.first)).TriggersRequired(), row.second)
            << row.first;
}

TEST_F(ErrorDatabaseTriggersTest, ErrorLinkingKnowsThreeWords)
{
    EXPECT_EQ(LoadOptions(Option("errorLinking", "verbose")).LinkingMode(), eelmVerbose);
    EXPECT_EQ(LoadOptions(Option("errorLinking", "shallow")).LinkingMode(), eelmShallow);
    EXPECT_EQ(LoadOptions(Option("errorLinking", "childOnly")).LinkingMode(), eelmChildOnly);
    for (const char* value : {"deep", "Shallow", "childonly", "2", "verbose ", "trigger"})
    {
        EXPECT_EQ(LoadOptions(Option("errorLinking", value)).LinkingMode(), eelmDeep) << value;
        const std::string options = Option("errorLinking", "childOnly") + Option("errorLinking", value);
        EXPECT_EQ(LoadOptions(options).LinkingMode(), eelmChildOnly) << value;
    }
}

TEST_F(ErrorDatabaseTriggersTest, TitleSourceKnowsOneWord)
{
    EXPECT_EQ(LoadOptions(Option("titleSource", "trigger")).TitleSource(), eetsTrigger);
    for (const char* value : {"parent", "Trigger", "1", "verbose"})
    {
        EXPECT_EQ(LoadOptions(Option("titleSource", value)).TitleSource(), eetsParent) << value;
        const std::string options = Option("titleSource", "trigger") + Option("titleSource", value);
        EXPECT_EQ(LoadOptions(options).TitleSource(), eetsTrigger) << value;
    }
}

TEST_F(ErrorDatabaseTriggersTest, AnUnknownOptionHasNoEffect)
{
    const CTriggerSet set = LoadOptions(Option("colour", "yes") + Option("AutoTrigger", "yes") +
                                        Option("triggersneeded", "7") + Option("linking", "shallow"));
    EXPECT_FALSE(set.AutoTrigger());
    EXPECT_EQ(set.TriggersRequired(), 1);
    EXPECT_EQ(set.LinkingMode(), eelmDeep);
    EXPECT_EQ(set.TitleSource(), eetsParent);
}

// ---- Triggers

TEST_F(ErrorDatabaseTriggersTest, TriggersAreTheErrorsOfTheDatabaseInTheOrderOfTheFile)
{
    EXPECT_EQ(LoadTriggers(Trigger(kSpeed) + Trigger(kHeading)), (Lines{kSpeed, kHeading}));
    EXPECT_EQ(Found(kOwner).TriggerSets()[0].Triggers().front(), &Found(kSpeed));
    EXPECT_EQ(NamesOf(Found(kSpeed).Parents()), (Lines{kOwner}));
    EXPECT_EQ(Found(kSpeed).Parents().front(), &Found(kOwner));
}

TEST_F(ErrorDatabaseTriggersTest, ATriggerListedTwiceIsLinkedTwice)
{
    EXPECT_EQ(LoadTriggers(Trigger(kSpeed) + Trigger(kSpeed)), (Lines{kSpeed, kSpeed}));
    EXPECT_EQ(NamesOf(Found(kSpeed).Parents()), (Lines{kOwner, kOwner}));
}

TEST_F(ErrorDatabaseTriggersTest, ATriggerMayBeDefinedInALaterModuleFile)
{
    WriteList(m_directory.Prefix(), kEntry + R"(<Module identifier="Base" file="base.xml"/>)");
    WriteModule(m_directory.Prefix(),
                WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger("Base:GPS:Power:2"))))));
    WriteModule(m_directory.Prefix(), WholeError("Power"), "base.xml");
    m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    EXPECT_EQ(NamesOf(Found(kOwner).TriggerSets().at(0).Triggers()), (Lines{"Base:GPS:Power:2"}));
    EXPECT_EQ(Found(kOwner).Position(), 2);
}

TEST_F(ErrorDatabaseTriggersTest, ParentsStandInTheOrderOfTheFilesNotOfTheirNumbers)
{
    const std::string overSpeed = TriggerSets(TriggerSet(Triggers(Trigger(kSpeed))));
    Load(WholeError("No SIM", overSpeed) + WholeError("Speed") + WholeError("Data", overSpeed));
    EXPECT_EQ(NamesOf(Found(kSpeed).Parents()),
              (Lines{"Positioning:GPS:No SIM:2", "Positioning:GPS:Data:2"}));
}

TEST_F(ErrorDatabaseTriggersTest, ATriggerThatIsNotDefinedIsSkippedWithoutAWord)
{
    EXPECT_EQ(
        LoadTriggers(Trigger("Positioning:GPS:Heading:3") + Trigger("Base:GPS:Heading:2") + Trigger(kSpeed)),
        (Lines{kSpeed}));
    EXPECT_EQ(m_warned, "");
}

TEST_F(ErrorDatabaseTriggersTest, ATriggersFailureModeIsANumberAndNotAName)
{
    EXPECT_EQ(LoadTriggers(Trigger("Positioning:GPS:Speed:DataErraticAndIntermittentlyIncorrect")), Lines{});
    EXPECT_EQ(LoadTriggers(Trigger("Positioning:GPS:Speed: 2nd")), (Lines{kSpeed}));
    EXPECT_EQ(LoadTriggers(Trigger("Positioning:GPS:Speed:+02")), (Lines{kSpeed}));
}

TEST_F(ErrorDatabaseTriggersTest, ATriggersFailureModeDoesNotWrapAround)
{
    EXPECT_EQ(LoadTriggers(Trigger("Positioning:GPS:Speed:4294967298") +
                           Trigger("Positioning:GPS:Speed:-4294967294") +
                           Trigger("Positioning:GPS:Speed:18446744073709551618")),
              Lines{});
}

TEST_F(ErrorDatabaseTriggersTest, ATriggerWithoutAFailureModeNumberMeansZero)
{
    Load(WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger("Positioning:GPS:Power:") +
                                                               Trigger("Positioning:GPS:Power:x"))))) +
         SubModule(Problem(Error(kTexts, R"(identifier="0" severity="Low")"), "Power")));
    EXPECT_EQ(NamesOf(Found(kOwner).TriggerSets()[0].Triggers()),
              (Lines{"Positioning:GPS:Power:0", "Positioning:GPS:Power:0"}));
}

TEST_F(ErrorDatabaseTriggersTest, AnErrorOfUnknownFailureModeIsReachedByTwentyOneOnly)
{
    Load(WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger("Positioning:GPS:Power:Odd") +
                                                               Trigger("Positioning:GPS:Power:22") +
                                                               Trigger("Positioning:GPS:Power:21"))))) +
         SubModule(Problem(Error(kTexts, R"(identifier="Odd" severity="Low")"), "Power")));
    EXPECT_EQ(NamesOf(Found(kOwner).TriggerSets()[0].Triggers()), (Lines{"Positioning:GPS:Power:21"}));
}

TEST_F(ErrorDatabaseTriggersTest, ATriggerOfItsOwnErrorIsReportedAndSkipped)
{
    EXPECT_EQ(LoadTriggers(Trigger(kOwner) + Trigger(kSpeed)), (Lines{kSpeed}));
    EXPECT_EQ(m_warned, "Error Positioning:GPS:No Data:2 links to itself\n");
    EXPECT_TRUE(Found(kOwner).Parents().empty());
}

TEST_F(ErrorDatabaseTriggersTest, ALinkToItselfIsReportedAsItWasWritten)
{
    EXPECT_EQ(LoadTriggers(Trigger("Positioning:GPS:No Data: +2 %s") + Trigger("Positioning:GPS:No Data:02")),
              Lines{});
    EXPECT_EQ(m_warned, "Error Positioning:GPS:No Data: +2 %s links to itself\n"
                        "Error Positioning:GPS:No Data:02 links to itself\n");
}

TEST_F(ErrorDatabaseTriggersTest, ASetOfUnknownAndOwnTriggersOnlyIsKeptEmpty)
{
    EXPECT_EQ(LoadTriggers(Trigger(kOwner) + Trigger("Positioning:GPS:Heading:3")), Lines{});
    EXPECT_EQ(Found(kOwner).TriggerSets().size(), 1u);
}

// ---- Two definitions of one identifier

TEST_F(ErrorDatabaseTriggersTest, TriggersReachTheLaterOfTwoDefinitions)
{
    const CErrorDatabase& database =
        Load(WholeError("Speed") + WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger(kSpeed))))) +
             WholeError("Speed"));
    EXPECT_EQ(Found(kOwner).TriggerSets()[0].Triggers().front(), &database.GetErrorList()[2]);
    EXPECT_TRUE(database.GetErrorList()[0].Parents().empty());
    EXPECT_EQ(NamesOf(database.GetErrorList()[2].Parents()), (Lines{kOwner}));
}

TEST_F(ErrorDatabaseTriggersTest, EachOfTwoDefinitionsKeepsItsOwnTriggerSets)
{
    const CErrorDatabase& database =
        Load(WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger(kSpeed))))) +
             WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger(kHeading))))) + kLeaves);
    EXPECT_EQ(NamesOf(database.GetErrorList()[0].TriggerSets().at(0).Triggers()), (Lines{kSpeed}));
    EXPECT_EQ(NamesOf(database.GetErrorList()[1].TriggerSets().at(0).Triggers()), (Lines{kHeading}));
    EXPECT_EQ(Found(kSpeed).Parents().front(), &database.GetErrorList()[0]);
    EXPECT_EQ(Found(kHeading).Parents().front(), &database.GetErrorList()[1]);
}

TEST_F(ErrorDatabaseTriggersTest, AnEarlierDefinitionThatNamesItsIdentifierLinksToItselfAllTheSame)
{
    const CErrorDatabase& database = Load(
        WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger(kOwner))))) + WholeError("No Data"));
    EXPECT_EQ(m_warned,
              "Error Positioning:GPS:No Data:2 links to itself\n"); // whatever the identifier would find
    EXPECT_TRUE(database.GetErrorList()[0].TriggerSets().at(0).Triggers().empty());
    EXPECT_TRUE(database.GetErrorList()[1].Parents().empty());
}

} // namespace
