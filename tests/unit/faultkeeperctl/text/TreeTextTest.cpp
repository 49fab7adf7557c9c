#include "faultkeeperctl/text/TreeText.h"

#include <Faultkeeper/ErrorTree.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

using namespace Faultkeeper::Apps;

namespace
{
Faultkeeper::SErrorTree Tree()
{
    Faultkeeper::SErrorTree tree;
    tree.visible = true;
    tree.problemCode = 0x40C1B;
    tree.problemType = 2;
    tree.severity = 2;
    tree.title = "Höhe unbekannt";
    tree.shortTitle = "No height";
    tree.problems = {"No satellite data arrives at the receiver.", "The antenna is silent."};
    tree.solutions = {"Check the cable."};
    tree.raisedTime = 1772384709;
    tree.counter1 = 3;
    tree.counter2 = 2;
    tree.stateKey = "0140";
    tree.friendlyCode = "P-100";
    return tree;
}

class TreeTextTest : public testing::Test
{
protected:
    TreeTextTest()
    {
        setenv("TZ", "UTC0", 1);
        tzset();
    }
};
} // namespace

TEST_F(TreeTextTest, ShowsEverythingThatATechnicianAsksFor)
{
    EXPECT_EQ(TreeText(Tree(), 1, 40), "[1] Höhe unbekannt                  High\n"
                                       "    Short      No height\n"
                                       "    Problem    No satellite data arrives\n"
                                       "               at the receiver.\n"
                                       "               The antenna is silent.\n"
                                       "    Solution   Check the cable.\n"
                                       "    Raised     2026-03-01T17:05:09+00:00\n"
                                       "    Cleared    never\n"
                                       "    Counters   3 / 2\n"
                                       "    Key        0140\n"
                                       "    Code       P-100\n"
                                       "    Error      Positioning:GPS:No Data:2\n"
                                       "               (0x40C1B:2)\n");
}

TEST_F(TreeTextTest, TakesTheShortTextWhereThereIsNoTitle)
{
    Faultkeeper::SErrorTree tree = Tree();
    tree.title.clear();
    EXPECT_EQ(TreeText(tree, 12, 40).substr(0, 14), "[12] No height");
}

TEST_F(TreeTextTest, WrapsALongTitleBesideTheSeverity)
{
    Faultkeeper::SErrorTree tree = Tree();
    tree.title = "The receiver\nhas found no satellites yet";
    EXPECT_EQ(TreeText(tree, 1, 40).substr(0, 75), "[1] The receiver has found no       High\n"
                                                   "    satellites yet\n"
                                                   "    Short      ");
}

TEST_F(TreeTextTest, NamesAMissingCodeAndWhatTheScreensDo)
{
    Faultkeeper::SErrorTree tree = Tree();
    tree.friendlyCode.clear();
    tree.visible = false;
    tree.shouldBeepIfGuiding = true;
    const std::string text = TreeText(tree, 1, 100);
    EXPECT_NE(text.find("    Code       none\n"), std::string::npos);
    EXPECT_NE(text.find("    Display    not shown on the screens, beeps while guiding\n"), std::string::npos);
}

TEST_F(TreeTextTest, ListsEveryFlagInOneOrder)
{
    Faultkeeper::SErrorTree tree;
    tree.fullScreen = tree.forceShutdown = tree.includeServiceNumber = true;
    tree.shouldBeep = tree.shouldBeepIfGuiding = true;
    EXPECT_EQ(TreeFlags(tree),
              (std::vector<std::string>{"not shown on the screens", "full screen", "forces a shutdown",
                                        "with service number", "beeps", "beeps while guiding"}));
    EXPECT_EQ(TreeFlags(Tree()), std::vector<std::string>());
}

TEST_F(TreeTextTest, CountsTrees)
{
    EXPECT_EQ(TreesText({}, 80), "No active faults.\n");
    EXPECT_EQ(TreesText({Tree()}, 80), "1 active fault\n\n" + TreeText(Tree(), 1, 80));
    EXPECT_EQ(TreesText({Tree(), Tree()}, 80),
              "2 active faults\n\n" + TreeText(Tree(), 1, 80) + "\n" + TreeText(Tree(), 2, 80));
}

TEST_F(TreeTextTest, ColoursTitleAndSeverityAndKeepsTheirColumns)
{
    const std::string text = TreeText(Tree(), 1, 40, ethAll, true);
    EXPECT_EQ(text.substr(0, text.find('\n')),
              "[1] \x1b[1mHöhe unbekannt                \x1b[0m  \x1b[31mHigh\x1b[0m");
    Faultkeeper::SErrorTree strange = Tree();
    strange.severity = -1;
    EXPECT_EQ(TreeText(strange, 1, 40, ethAll, true).find("\x1b[3"), std::string::npos);
}
