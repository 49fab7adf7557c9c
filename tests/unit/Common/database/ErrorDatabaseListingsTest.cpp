#include <Faultkeeper/ErrorDatabase.h>

#include "unit/Common/fixtures/ListingsFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Faultkeeper;
using namespace Fixtures;

class ErrorDatabaseListingsTest : public ListingsTest
{
};

// ---- The list of coordinates

TEST_F(ErrorDatabaseListingsTest, TheTreeHasFourLinesForEachErrorInIdentifierOrder)
{
    Add(kD);
    Add(kA, {Set({kB})});
    Add(kTop);
    Add(kB);
    EXPECT_EQ(Tree(), "+GPS\n"
                      "|--+None\n"
                      "|  ---+Power\n"
                      "|     --->4\n"
                      "+Positioning\n"
                      "|--+GPS\n"
                      "|  ---+Data\n"
                      "|     --->3\n"
                      "+Positioning\n"
                      "|--+GPS\n"
                      "|  ---+Heading\n"
                      "|     --->0\n"
                      "+Positioning\n"
                      "|--+Ublox\n"
                      "|  ---+Data\n"
                      "|     --->1\n");
}

TEST_F(ErrorDatabaseListingsTest, TheTreeHasEachIdentifierOnce)
{
    Add(kA);
    Add(kA);
    EXPECT_EQ(Tree(), "+Positioning\n"
                      "|--+GPS\n"
                      "|  ---+Data\n"
                      "|     --->3\n");
}

TEST_F(ErrorDatabaseListingsTest, AnUnknownFailureModeIsShownAsItsNumber)
{
    Add("Positioning:GPS:Data:21");
    EXPECT_EQ(Tree(), "+Positioning\n"
                      "|--+GPS\n"
                      "|  ---+Data\n"
                      "|     --->21\n");
    EXPECT_EQ(Hierarchy(true), "Positioning:GPS:Data:21  (1) [about 1] visible\n\n");
}

TEST_F(ErrorDatabaseListingsTest, AnEmptyDatabasePrintsNothing)
{
    EXPECT_EQ(Tree(), "");
    EXPECT_EQ(Hierarchy(true), "");
}

// ---- The hierarchy

TEST_F(ErrorDatabaseListingsTest, ShowsThresholdAndLinkingAboveTheFirstTrigger)
{
    Add("Positioning:GPS:No Data:2", {Set({"Positioning:GPS:Communications:9"})}, "No satellite data");
    Add("Positioning:GPS:Communications:9", {}, "Receiver silent");
    EXPECT_EQ(Hierarchy(), "Positioning:GPS:No Data:2  (2) [No satellite data] visible\n"
                           "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Communications:9  (1) [Receiver silent]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, TopErrorsWithoutTriggerSetsAreShownOnlyIfAskedFor)
{
    Add(kB, {}, "", false);
    Add(kA, {Set({kC})});
    Add(kC);
    Add(kTop);
    EXPECT_EQ(Hierarchy(false), "Positioning:GPS:Data:3  (2) [about 3] visible\n"
                                "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                                "---Positioning:GPS:Speed:20  (1) [about 0]\n\n");
    EXPECT_EQ(Hierarchy(true), "GPS:None:Power:4  (1) [about 4] visible\n\n"
                               "Positioning:GPS:Data:3  (2) [about 3] visible\n"
                               "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                               "---Positioning:GPS:Speed:20  (1) [about 0]\n\n"
                               "Positioning:GPS:Heading:0  (1) [about 0] not visible\n\n");
}

TEST_F(ErrorDatabaseListingsTest, ASetThatIsNotAutomaticHasNoThreshold)
{
    Add(kTop, {Manual(Set({kA}, "", 3))}, "", false);
    Add(kA, {}, "", false);
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (2) [about 4] not visible\n"
                           "---Trigger threshold is N/A. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Data:3  (1) [about 3]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, OnlyShallowIsNotDeep)
{
    Add(kTop, {Set({kA}, "verbose", -2), Set({kA}, "childOnly", 0), TitledByTrigger(Set({kA}, "deep", 12))});
    Add(kA);
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (4) [about 4] visible\n"
                           "---Trigger threshold is -2. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Data:3  (1) [about 3]\n"
                           "---Trigger threshold is 0. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Data:3  (1) [about 3]\n"
                           "---Trigger threshold is 12. Linking mode is deep. Title source is trigger.\n"
                           "---Positioning:GPS:Data:3  (1) [about 3]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, OneHeaderStandsAboveAllTriggersOfASet)
{
    Add(kTop, {Set({kB, kA, kB}, "", 2)});
    Add(kA);
    Add(kB);
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (4) [about 4] visible\n"
                           "---Trigger threshold is 2. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Heading:0  (1) [about 0]\n"
                           "---Positioning:GPS:Data:3  (1) [about 3]\n"
                           "---Positioning:GPS:Heading:0  (1) [about 0]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, ASetWithoutTriggersPrintsNothing)
{
    Add(kTop, {Set({}), Set({kA}), Set({}, "shallow")});
    Add(kA);
    Add(kB, {Set({})});
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (2) [about 4] visible\n"
                           "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Data:3  (1) [about 3]\n\n"
                           "Positioning:GPS:Heading:0  (1) [about 0] visible\n\n");
}

TEST_F(ErrorDatabaseListingsTest, ShallowTriggersStandBehindBlanksInsteadOfDashes)
{
    Add(kTop, {TitledByTrigger(Set({kA, kB}, "shallow"))});
    Add(kA);
    Add(kB);
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (3) [about 4] visible\n"
                           "---Trigger threshold is 1. Linking mode is shallow. Title source is trigger.\n"
                           "   Positioning:GPS:Data:3  (1) [about 3]\n"
                           "   Positioning:GPS:Heading:0  (1) [about 0]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, DeepBelowDeepIsIndentedByThreeMoreDashes)
{
    Add(kTop, {Set({kA, kD})});
    Add(kA, {Set({kB})});
    Add(kB, {Set({kC})});
    Add(kC);
    Add(kD);
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (5) [about 4] visible\n"
                           "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Data:3  (3) [about 3]\n"
                           "------Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                           "------Positioning:GPS:Heading:0  (2) [about 0]\n"
                           "---------Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                           "---------Positioning:GPS:Speed:20  (1) [about 0]\n"
                           "---Positioning:Ublox:Data:1  (1) [about 1]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, BelowAShallowTriggerTheDashesOfItsLevelsStayBlank)
{
    Add(kTop, {Set({kA}, "shallow")});
    Add(kA, {Set({kB})});
    Add(kB, {Set({kC}, "shallow")});
    Add(kC);
    EXPECT_EQ(Hierarchy(),
              "GPS:None:Power:4  (4) [about 4] visible\n"
              "---Trigger threshold is 1. Linking mode is shallow. Title source is parent.\n"
              "   Positioning:GPS:Data:3  (3) [about 3]\n"
              "      Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
              "      Positioning:GPS:Heading:0  (2) [about 0]\n"
              "      ---Trigger threshold is 1. Linking mode is shallow. Title source is parent.\n"
              "         Positioning:GPS:Speed:20  (1) [about 0]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, AShallowSetDoesNotBlankTheDashesOfTheNextSet)
{
    Add(kTop, {Set({kA}), Set({kA}, "shallow"), Set({kA})});
    Add(kA, {Set({kB}, "shallow")});
    Add(kB);
    const std::string header = "---Trigger threshold is 1. Linking mode is ";
    const std::string deep =
        header + "deep. Title source is parent.\n"
                 "---Positioning:GPS:Data:3  (2) [about 3]\n"
                 "------Trigger threshold is 1. Linking mode is shallow. Title source is parent.\n"
                 "      Positioning:GPS:Heading:0  (1) [about 0]\n";
    EXPECT_EQ(Hierarchy(),
              "GPS:None:Power:4  (7) [about 4] visible\n" + deep + header +
                  "shallow. Title source is parent.\n"
                  "   Positioning:GPS:Data:3  (2) [about 3]\n"
                  "      Trigger threshold is 1. Linking mode is shallow. Title source is parent.\n"
                  "      Positioning:GPS:Heading:0  (1) [about 0]\n" +
                  deep + "\n");
}

TEST_F(ErrorDatabaseListingsTest, AnErrorOfTwoParentsIsShownBelowEach)
{
    Add(kTop, {Set({kC})});
    Add(kA, {Set({kC})});
    Add(kC, {Set({kD})});
    Add(kD);
    const std::string below = "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                              "---Positioning:GPS:Speed:20  (2) [about 0]\n"
                              "------Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                              "------Positioning:Ublox:Data:1  (1) [about 1]\n\n";
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (3) [about 4] visible\n" + below +
                               "Positioning:GPS:Data:3  (3) [about 3] visible\n" + below);
}

TEST_F(ErrorDatabaseListingsTest, AnErrorListedTwiceBelowOneParentIsFollowedTwice)
{
    Add(kTop, {Set({kA, kA})});
    Add(kA, {Set({kB})});
    Add(kB);
    const std::string trigger =
        "---Positioning:GPS:Data:3  (2) [about 3]\n"
        "------Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
        "------Positioning:GPS:Heading:0  (1) [about 0]\n";
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (5) [about 4] visible\n"
                           "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n" +
                               trigger + trigger + "\n");
}

TEST_F(ErrorDatabaseListingsTest, OfTwoDefinitionsOnlyTheLaterHeadsAHierarchy)
{
    Add(kTop, {Set({kA})}, "earlier");
    Add(kTop, {Set({kB})}, "later");
    Add(kA);
    Add(kB);
    EXPECT_EQ(Hierarchy(true), "GPS:None:Power:4  (2) [later] visible\n"
                               "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                               "---Positioning:GPS:Heading:0  (1) [about 0]\n\n");
}

TEST_F(ErrorDatabaseListingsTest, ActiveErrorsAreListedLikeAnyOther)
{
    Add(kTop, {Set({kA})});
    Add(kA);
    const std::string before = Hierarchy();
    Fixtures::Raise(Database(), kA);
    EXPECT_EQ(Hierarchy(), before);
}

// ---- One error

TEST_F(ErrorDatabaseListingsTest, TheSetsOfOneErrorStandBehindTheGivenIndent)
{
    Add(kTop, {Set({kA}, "shallow"), Set({kB})});
    Add(kA);
    Add(kB);
    EXPECT_EQ(HierarchyBelow(kTop, "> "),
              "> Trigger threshold is 1. Linking mode is shallow. Title source is parent.\n"
              "  Positioning:GPS:Data:3  (1) [about 3]\n"
              "> Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
              "> Positioning:GPS:Heading:0  (1) [about 0]\n");
}

TEST_F(ErrorDatabaseListingsTest, AnEmptyIndentIsPossible)
{
    Add(kTop, {Set({kA}, "shallow")});
    Add(kA, {Set({kB})});
    Add(kB);
    EXPECT_EQ(HierarchyBelow(kTop, ""),
              "Trigger threshold is 1. Linking mode is shallow. Title source is parent.\n"
              "Positioning:GPS:Data:3  (2) [about 3]\n"
              "   Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
              "   Positioning:GPS:Heading:0  (1) [about 0]\n");
    EXPECT_EQ(HierarchyBelow(kB, "---"), "");
}

} // namespace
