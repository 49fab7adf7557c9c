#include "support/CapturedOutput.h"
#include "unit/presentation/DisplayFixture.h"

#include <Faultkeeper/ErrorPresentation.h>

using namespace Faultkeeper;

namespace
{

class ErrorTreeBuildingTest : public DisplayFixture
{
protected:
    static Support::STestError WithFlags(Support::STestError error, const std::string& flags)
    {
        error.flags = flags;
        return error;
    }

    static std::string FlagLine(const SErrorTree& tree)
    {
        const std::string printed = Printed(tree);
        return printed.substr(0, printed.find('\n'));
    }
};

TEST_F(ErrorTreeBuildingTest, AnErrorWithoutTriggerSetsHasOneProblemAndOneSolution)
{
    Load({Node(0), Node(1), Node(2), Node(3), Node(4), Node(5)});
    Activate({5});
    EXPECT_EQ(Printed(Tree(5)), "40C1B:5 severity 2 visible\n"
                                "title [T5] short [s5]\n"
                                "problems [P5]\n"
                                "solutions [S5]\n"
                                "raised 0 cleared 0 counters 0 0\n"
                                "key [0140] code []\n");
}

TEST_F(ErrorTreeBuildingTest, TextKeysPairTheTitleWithShortTitleAndTheShortTextWithVtTitle)
{
    Load({Node(0)});
    EXPECT_EQ(Printed(Tree(0, true)), "40C1B:0 severity 2 visible\n"
                                      "title [Positioning:GPS:No Data:0.shortTitle] "
                                      "short [Positioning:GPS:No Data:0.vtTitle]\n"
                                      "problems [Positioning:GPS:No Data:0.problem]\n"
                                      "solutions [Positioning:GPS:No Data:0.solution]\n"
                                      "raised 0 cleared 0 counters 0 0\n"
                                      "key [0000] code []\n");
}

TEST_F(ErrorTreeBuildingTest, TextKeysReplaceTheTextsOfTriggersToo)
{
    Load({Node(0, {Set({1}, "verbose", "trigger")}), Node(1)});
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0, true)), "Positioning:GPS:No Data:1.shortTitle|Positioning:GPS:No Data:1.vtTitle|"
                                    "Positioning:GPS:No Data:1.problem|Positioning:GPS:No Data:1.solution");
}

TEST_F(ErrorTreeBuildingTest, TextKeysReplaceTheTextsThatFillWhatStayedEmpty)
{
    Load({Node(0, {Set({1}, "shallow")}), Node(1)});
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0, true)), "Positioning:GPS:No Data:0.shortTitle|Positioning:GPS:No Data:0.vtTitle|"
                                    "Positioning:GPS:No Data:0.problem|Positioning:GPS:No Data:0.solution");
}

TEST_F(ErrorTreeBuildingTest, NamesAreMadeOfTheDisplayNamesAndTheNumberOfTheFailureMode)
{
    Support::STestError error = Node(0);
    error.name = "Navigation And Control:L1 L2 Antenna:Unable to Set A:20";
    Load({error});
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(m_reader, CErrorOverlay(""), {&m_database->GetErrorList().front()},
                                     trees, true);
    EXPECT_EQ(trees.at(0).problems.at(0), "Navigation And Control:L1 L2 Antenna:Unable to Set A:20.problem");
    EXPECT_EQ(trees.at(0).problemCode, 0x31632);
    EXPECT_EQ(trees.at(0).problemType, 20);
}

TEST_F(ErrorTreeBuildingTest, AnUnknownFailureModeIsNamed21)
{
    Support::STestError error = Node(0);
    error.name = "Positioning:GPS:No Data:99";
    Load({error});
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(m_reader, CErrorOverlay(""), {&m_database->GetErrorList().front()},
                                     trees, true);
    EXPECT_EQ(trees.at(0).title, "Positioning:GPS:No Data:21.shortTitle");
}

TEST_F(ErrorTreeBuildingTest, AWholeTreeOfThreeLevels)
{
    WritePatterns(
        "<pattern fixedCode='F7'><e id='Positioning:GPS:No Data:0'/><e id='Positioning:GPS:No Data:1'/>"
        "<e id='Positioning:GPS:No Data:3'/></pattern>");
    Load({Node(0, {Set({1, 2}, "verbose"), Set({4})}), Node(1, {Set({3, 4})}), Node(2), Node(3), Node(4)});
    Activate({0, 1, 3});
    Record(0).counter1 = 65535;
    Record(0).counter2 = 3;
    Record(0).raisedTime = Core::Time(1700000000);
    Record(0).clearedTime = Core::Time(1600000000);
    Synchronise();
    // index 0000000000, top error 100, error 1 10
    EXPECT_EQ(Printed(Tree(0)), "40C1B:0 severity 2 visible\n"
                                "title [T0] short [s0]\n"
                                "problems [P1]\n"
                                "solutions [S1][S3]\n"
                                "raised 1700000000 cleared 1600000000 counters 65535 3\n"
                                "key [0024] code [F7]\n");
}

TEST_F(ErrorTreeBuildingTest, FlagsAndSeverityAreThoseOfTheTopError)
{
    Support::STestError low =
        WithFlags(Node(0, {Set({1})}), "forceShutdown='yes' includeServiceNumber='yes'");
    low.severity = "Low";
    Support::STestError critical = WithFlags(Node(1), "visible='yes' fullScreen='yes'");
    critical.severity = "Critical";
    Load({low, critical});
    Activate({0, 1});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 0 forceShutdown includeServiceNumber");
    EXPECT_EQ(FlagLine(Tree(1)), "40C1B:1 severity 3 visible fullScreen");
}

TEST_F(ErrorTreeBuildingTest, BeepsAreThoseOfTheTopAndOfEveryContributingTrigger)
{
    Load({WithFlags(Node(0, {Set({1, 2})}), ""), WithFlags(Node(1), "shouldBeep='yes'"),
          WithFlags(Node(2, {Set({3})}), ""), WithFlags(Node(3), "shouldBeepIfGuiding='yes'")});
    Activate({0});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 2");
    Activate({0, 1});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 2 beep");
    Activate({0, 2, 3});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 2 beepIfGuiding");
    Activate({0, 3});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 2")
        << "what is below an inactive trigger does not contribute";
}

TEST_F(ErrorTreeBuildingTest, ATopErrorsBeepStaysWhenItsTriggersAreQuiet)
{
    Load({WithFlags(Node(0, {Set({1})}), "shouldBeep='yes' shouldBeepIfGuiding='yes'"),
          WithFlags(Node(1), "")});
    Activate({0, 1});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 2 beep beepIfGuiding");
}

TEST_F(ErrorTreeBuildingTest, AShallowTriggerBeepsButWhatIsBelowItDoesNot)
{
    Load({WithFlags(Node(0, {Set({1}, "shallow")}), ""), WithFlags(Node(1, {Set({2})}), "shouldBeep='yes'"),
          WithFlags(Node(2), "shouldBeepIfGuiding='yes'")});
    Activate({0, 1, 2});
    EXPECT_EQ(FlagLine(Tree(0)), "40C1B:0 severity 2 beep");
}

TEST_F(ErrorTreeBuildingTest, AShallowTriggersOwnTriggersAddBitsButNoCodesProblemsOrSolutions)
{
    WritePatterns(
        "<pattern fixedCode='TWO'><e id='Positioning:GPS:No Data:0'/><e id='Positioning:GPS:No Data:1'/>"
        "</pattern>");
    Load({Node(0, {Set({1}, "shallow")}), Node(1, {Set({2, 3}, "verbose", "trigger")}), Node(2), Node(3)});
    Activate({0, 1, 3});
    const SErrorTree tree = Tree(0);
    EXPECT_EQ(Texts(tree), "T0|s0|P0|S0");
    EXPECT_EQ(tree.stateKey, "0028"); // 0000000000 1 01
    EXPECT_EQ(tree.friendlyCode, "TWO");
}

TEST_F(ErrorTreeBuildingTest, WhatIsBelowAShallowTriggerStaysBelowEvenThroughDeepLinks)
{
    Load({Node(0, {Set({1}, "shallow")}), Node(1, {Set({2})}), Node(2, {Set({3}, "verbose", "trigger")}),
          Node(3)});
    Activate({0, 1, 2, 3});
    const SErrorTree tree = Tree(0);
    EXPECT_EQ(Texts(tree), "T0|s0|P0|S0");
    EXPECT_EQ(tree.stateKey, "0038"); // 0000000000 1 1 1
}

TEST_F(ErrorTreeBuildingTest, InactiveTriggersAreNotWalked)
{
    Load({Node(0, {Set({1, 2}, "verbose")}), Node(1, {Set({2})}), Node(2)});
    Activate({0, 2});
    const SErrorTree tree = Tree(0);
    EXPECT_EQ(Texts(tree), "T0|s0|P2|S2");
    EXPECT_EQ(tree.stateKey, "0010"); // 0000000000 01
}

TEST_F(ErrorTreeBuildingTest, WithoutActiveTriggersTheTopErrorsOwnTextsAreShown)
{
    Load({Node(0, {Set({1}, "verbose", "trigger")}), Node(1)});
    Activate({0});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S0");
}

TEST_F(ErrorTreeBuildingTest, ATriggerSetWithoutTriggersAddsNothing)
{
    Load({Node(0, {Set({}), Set({1})}), Node(1)});
    Activate({0, 1});
    const SErrorTree tree = Tree(0);
    EXPECT_EQ(Texts(tree), "T0|s0|P0|S1");
    EXPECT_EQ(tree.stateKey, "0020");
}

TEST_F(ErrorTreeBuildingTest, AnErrorThatIsNotActiveItselfIsBuiltAllTheSame)
{
    Load({Node(0, {Set({1})}), Node(1)});
    Activate({1});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S1");
}

TEST_F(ErrorTreeBuildingTest, ATriggerReachedAlongTwoPathsContributesTwice)
{
    WritePatterns(
        "<pattern fixedCode='TWICE'><e id='Positioning:GPS:No Data:0'/><e id='Positioning:GPS:No Data:1'/>"
        "<e id='Positioning:GPS:No Data:2'/><e id='Positioning:GPS:No Data:2'/></pattern>");
    Load({Node(0, {Set({1}), Set({2})}), Node(1, {Set({2})}), Node(2)});
    Activate({0, 1, 2});
    const SErrorTree tree = Tree(0);
    EXPECT_EQ(Texts(tree), "T0|s0|P0|S1 S2 S2");
    EXPECT_EQ(tree.friendlyCode, "TWICE");
    EXPECT_EQ(tree.stateKey, "0038"); // 0000000000 11 1
}

TEST_F(ErrorTreeBuildingTest, ATriggerListedTwiceContributesTwice)
{
    Load({Node(0, {Set({1, 1}, "verbose", "trigger")}), Node(1)});
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P1 P1|S1 S1") << "and two active triggers clear the title";
}

TEST_F(ErrorTreeBuildingTest, TheFriendlyCodeStandsForTheTopAndAllContributingTriggers)
{
    WritePatterns(
        "<pattern fixedCode='LONE'><e id='Positioning:GPS:No Data:0'/></pattern>"
        "<pattern fixedCode='PAIR'><e id='Positioning:GPS:No Data:1'/><e id='Positioning:GPS:No Data:0'/>"
        "</pattern><pattern fixedCode='HAS2' allowPartialMatch='yes'><e id='Positioning:GPS:No Data:2'/>"
        "</pattern>");
    Load({Node(0, {Set({1, 2})}), Node(1), Node(2)});
    Activate({0});
    EXPECT_EQ(Tree(0).friendlyCode, "LONE");
    Activate({0, 1});
    EXPECT_EQ(Tree(0).friendlyCode, "PAIR");
    Activate({0, 1, 2});
    EXPECT_EQ(Tree(0).friendlyCode, "HAS2");
    EXPECT_EQ(Tree(1).friendlyCode, "");
}

TEST_F(ErrorTreeBuildingTest, TheOutputIsReplacedByOneTreeForEachErrorInListOrder)
{
    Load({Node(0), Node(1), Node(2)});
    Record(0).raisedTime = Core::Time(300);
    Record(2).raisedTime = Core::Time(500);
    Synchronise();
    std::vector<SErrorTree> trees(5);
    CErrorPresentation::GetErrorTree(m_reader, CErrorOverlay(""), {Error(1), Error(2), Error(0), Error(1)},
                                     trees, false);
    std::string shown;
    for (const SErrorTree& tree : trees)
        shown += tree.title + " " + std::to_string(tree.raisedTime) + ", ";
    EXPECT_EQ(shown, "T1 0, T2 500, T0 300, T1 0, ");
}

TEST_F(ErrorTreeBuildingTest, NoErrorsEmptyTheOutput)
{
    Load({Node(0)});
    std::vector<SErrorTree> trees(2);
    CErrorPresentation::GetErrorTree(m_reader, CErrorOverlay(""), {}, trees, false);
    EXPECT_TRUE(trees.empty());
}

TEST_F(ErrorTreeBuildingTest, TimesAreRoundedDownToWholeSeconds)
{
    Load({Node(0)});
    Record(0).raisedTime = Core::Time::FromNanoseconds(1999999999);
    Record(0).clearedTime = Core::Time::FromNanoseconds(-1500000000);
    Synchronise();
    EXPECT_EQ(Tree(0).raisedTime, 1);
    EXPECT_EQ(Tree(0).clearedTime, -2);
}

TEST_F(ErrorTreeBuildingTest, TimesBeyond32BitsStayAtTheLastSecond)
{
    Load({Node(0)});
    Record(0).raisedTime = Core::Time(5000000000);
    Record(0).clearedTime = Core::Time(-5000000000);
    Synchronise();
    EXPECT_EQ(Tree(0).raisedTime, 2147483647);
    EXPECT_EQ(Tree(0).clearedTime, -2147483647 - 1);
    Record(0).raisedTime = Core::Time(2147483647);
    Record(0).clearedTime = Core::Time(2147483648);
    Synchronise();
    EXPECT_EQ(Tree(0).raisedTime, 2147483647);
    EXPECT_EQ(Tree(0).clearedTime, 2147483647);
}

TEST_F(ErrorTreeBuildingTest, CountersAndTimesAreThoseOfTheTopErrorAlone)
{
    Load({Node(0, {Set({1})}), Node(1)});
    Activate({0, 1});
    Record(1).counter1 = Record(1).counter2 = 7;
    Record(1).raisedTime = Record(1).clearedTime = Core::Time(1000);
    Synchronise();
    EXPECT_NE(Printed(Tree(0)).find("raised 0 cleared 0 counters 0 0\n"), std::string::npos);
    EXPECT_NE(Printed(Tree(1)).find("raised 1000 cleared 1000 counters 7 7\n"), std::string::npos);
}

TEST_F(ErrorTreeBuildingTest, AnErrorWithoutARecordHasZerosAndTheIndexMinusOne)
{
    Load({Node(0, {Set({1})}), Node(1)});
    Activate({0, 1});
    reinterpret_cast<SStatusTable*>(m_directory.Table())->header.count = 0;
    Synchronise();
    EXPECT_EQ(Printed(Tree(0)), "40C1B:0 severity 2 visible\n"
                                "title [T0] short [s0]\n"
                                "problems [P0]\n"
                                "solutions [S1]\n"
                                "raised 0 cleared 0 counters 0 0\n"
                                "key [FFE0] code []\n"); // 1111111111 1
    EXPECT_EQ(Tree(1).stateKey, "FFC0");
}

TEST_F(ErrorTreeBuildingTest, AnOwningViewTellsNeitherIndexNorCounters)
{
    Load({Node(0)});
    Record(0).counter1 = Record(0).counter2 = 5;
    std::vector<SErrorTree> trees;
    CErrorPresentation::GetErrorTree(m_owner, CErrorOverlay(""), {Error(0)}, trees, false);
    EXPECT_EQ(trees.at(0).stateKey, "FFC0");
    EXPECT_EQ(trees.at(0).counter1, 0u);
}

TEST_F(ErrorTreeBuildingTest, GoesNoDeeperWhereAnErrorWouldContainItself)
{
    Support::WarnedBy(
        [&] {
            Load({Node(0, {Set({1})}), Node(1, {Set({2}, "shallow"), Set({0})}), Node(2, {Set({0})})});
        });
    Activate({0, 1, 2});
    const SErrorTree tree = Tree(0);
    EXPECT_EQ(Texts(tree), "T0|s0|P0|S1 S0");
    EXPECT_EQ(tree.stateKey, "003C"); // 0000000000 1 11 1
}

} // namespace
