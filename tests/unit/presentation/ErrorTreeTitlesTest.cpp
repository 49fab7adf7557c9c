#include "unit/presentation/DisplayFixture.h"

#include <ostream>

using namespace Faultkeeper;

// What the linking modes and title sources make of the texts of a built tree.

namespace
{

struct SLinks
{
    const char* upperMode;
    const char* upperTitle;
    const char* lowerMode;
    const char* lowerTitle;
    const char* texts; // title|short title|problems|solutions
};

std::ostream& operator<<(std::ostream& out, const SLinks& links)
{
    return out << links.upperMode << "/" << links.upperTitle << " above " << links.lowerMode << "/"
               << links.lowerTitle;
}

const SLinks kLinks[] = {
    {"deep", "parent", "deep", "parent", "T0|s0|P0|S1 S2"},
    {"deep", "trigger", "deep", "parent", "T1|s1|P0|S1 S2"},
    {"verbose", "parent", "deep", "parent", "T0|s0|P1|S1 S2"},
    {"verbose", "trigger", "deep", "parent", "T1|s1|P1|S1 S2"},
    {"shallow", "parent", "deep", "parent", "T0|s0|P0|S0"},
    {"shallow", "trigger", "deep", "parent", "T1|s1|P0|S0"},
    {"childOnly", "parent", "deep", "parent", "T0|s0|P0|S1 S2"},
    {"childOnly", "trigger", "deep", "parent", "T1|s1|P0|S1 S2"},

    {"deep", "parent", "deep", "trigger", "T2|s2|P0|S1 S2"},
    {"deep", "parent", "verbose", "parent", "T0|s0|P2|S1 S2"},
    {"deep", "parent", "verbose", "trigger", "T2|s2|P2|S1 S2"},
    {"deep", "parent", "shallow", "parent", "T0|s0|P0|S1"},
    {"deep", "parent", "shallow", "trigger", "T2|s2|P0|S1"},
    {"deep", "parent", "childOnly", "parent", "T0|s0|P0|S2"},
    {"deep", "parent", "childOnly", "trigger", "T2|s2|P0|S2"},

    {"verbose", "trigger", "deep", "trigger", "T2|s2|P1|S1 S2"},
    {"verbose", "trigger", "verbose", "trigger", "T2|s2|P1 P2|S1 S2"},
    {"verbose", "trigger", "shallow", "trigger", "T2|s2|P1|S1"},
    {"verbose", "trigger", "childOnly", "trigger", "T2|s2|P1|S2"},
    {"verbose", "trigger", "childOnly", "parent", "T1|s1|P1|S2"},

    {"shallow", "trigger", "deep", "trigger", "T1|s1|P0|S0"},
    {"shallow", "trigger", "verbose", "trigger", "T1|s1|P0|S0"},
    {"shallow", "parent", "verbose", "trigger", "T0|s0|P0|S0"},
    {"shallow", "parent", "childOnly", "trigger", "T0|s0|P0|S0"},

    {"childOnly", "parent", "verbose", "trigger", "T2|s2|P2|S1 S2"},
    {"childOnly", "trigger", "shallow", "parent", "T1|s1|P0|S1"},
    {"childOnly", "parent", "childOnly", "parent", "T0|s0|P0|S2"},
};

class ErrorTreeLinksTest : public DisplayFixture, public testing::WithParamInterface<SLinks>
{
};

TEST_P(ErrorTreeLinksTest, OneActiveTriggerAndOneBelowIt)
{
    const SLinks& links = GetParam();
    Load({Node(0, {Set({1}, links.upperMode, links.upperTitle)}),
          Node(1, {Set({2}, links.lowerMode, links.lowerTitle)}), Node(2)});
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), links.texts);
}

INSTANTIATE_TEST_SUITE_P(Modes, ErrorTreeLinksTest, testing::ValuesIn(kLinks));

class ErrorTreeTitlesTest : public DisplayFixture
{
};

TEST_F(ErrorTreeTitlesTest, OneActiveTriggerOfATriggerTitledSetGivesItsTitle)
{
    Load({Node(0, {Set({1, 2}, "", "trigger")}), Node(1), Node(2)});
    Activate({0, 2});
    EXPECT_EQ(Texts(Tree(0)), "T2|s2|P0|S2");
}

TEST_F(ErrorTreeTitlesTest, TwoActiveTriggersInOneSetLeaveTheTopErrorsOwnTitle)
{
    Load({Node(0, {Set({1, 2}, "", "trigger")}), Node(1), Node(2)});
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S1 S2");
}

TEST_F(ErrorTreeTitlesTest, OneActiveTriggerInEachOfTwoSetsGivesTheLastTitle)
{
    Load({Node(0, {Set({1}, "", "trigger"), Set({2}, "", "trigger")}), Node(1), Node(2)});
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), "T2|s2|P0|S1 S2");
}

TEST_F(ErrorTreeTitlesTest, ALaterSetWithTwoActiveTriggersClearsAnEarlierTitle)
{
    Load({Node(0, {Set({1}, "", "trigger"), Set({2, 3})}), Node(1), Node(2), Node(3)});
    Activate({0, 1, 2, 3});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S1 S2 S3");
}

TEST_F(ErrorTreeTitlesTest, ALaterSetWithOneActiveTriggerSetsTheTitleAgain)
{
    Load({Node(0, {Set({2, 3}, "", "trigger"), Set({1}, "", "trigger")}), Node(1), Node(2), Node(3)});
    Activate({0, 1, 2, 3});
    EXPECT_EQ(Texts(Tree(0)), "T1|s1|P0|S2 S3 S1");
}

TEST_F(ErrorTreeTitlesTest, ALaterSetWithOneParentTitledTriggerKeepsTheTitle)
{
    Load({Node(0, {Set({1}, "", "trigger"), Set({2})}), Node(1), Node(2)});
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), "T1|s1|P0|S1 S2");
}

TEST_F(ErrorTreeTitlesTest, TwoActiveTriggersClearATitleThatADeeperLevelSet)
{
    Load({Node(0, {Set({1, 2})}), Node(1), Node(2, {Set({3}, "", "trigger")}), Node(3)});
    Activate({0, 2, 3});
    EXPECT_EQ(Texts(Tree(0)), "T3|s3|P0|S2 S3");
    Activate({0, 1, 2, 3});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S1 S2 S3");
}

TEST_F(ErrorTreeTitlesTest, TwoActiveTriggersOfADeeperErrorClearAShallowerTitle)
{
    Load({Node(0, {Set({1}, "", "trigger")}), Node(1, {Set({2, 3})}), Node(2), Node(3)});
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), "T1|s1|P0|S1 S2");
    Activate({0, 1, 2, 3});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S1 S2 S3");
}

TEST_F(ErrorTreeTitlesTest, TwoActiveTriggersBelowAShallowLinkClearNothing)
{
    Load({Node(0, {Set({1}, "shallow", "trigger")}), Node(1, {Set({2, 3})}), Node(2), Node(3)});
    Activate({0, 1, 2, 3});
    EXPECT_EQ(Texts(Tree(0)), "T1|s1|P0|S0");
}

TEST_F(ErrorTreeTitlesTest, ATriggerWithoutATitleLeavesTheTopErrorsButGivesItsShortText)
{
    Support::STestError untitled = Node(1);
    untitled.title = "-";
    Load({Node(0, {Set({1}, "", "trigger")}), untitled});
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0)), "T0|s1|P0|S1");
}

TEST_F(ErrorTreeTitlesTest, ATopErrorWithoutATitleHasNone)
{
    Support::STestError untitled = Node(0, {Set({1})});
    untitled.title = "-";
    Load({untitled, Node(1)});
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0)), "|s0|P0|S1");
    EXPECT_EQ(Tree(0, true).title, "Positioning:GPS:No Data:0.shortTitle") << "but its key all the same";
}

TEST_F(ErrorTreeTitlesTest, AnyChildOnlySetOfATriggerLeavesOutItsSolution)
{
    Load({Node(0, {Set({1})}), Node(1, {Set({2}), Set({3}, "childOnly")}), Node(2), Node(3)});
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S2") << "even if nothing in the childOnly set is active";
}

TEST_F(ErrorTreeTitlesTest, ChildOnlyWithoutAnyDeeperSolutionLeavesTheTopErrorsOwn)
{
    Load({Node(0, {Set({1})}), Node(1, {Set({2}, "childOnly")}), Node(2)});
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S0");
}

TEST_F(ErrorTreeTitlesTest, TheTopErrorsOwnChildOnlySetsDoNotMatter)
{
    Load({Node(0, {Set({1}, "childOnly")}), Node(1)});
    Activate({0});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S0");
    Activate({0, 1});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P0|S1");
}

TEST_F(ErrorTreeTitlesTest, TextsAreCollectedDepthFirstParentsBeforeTheirTriggers)
{
    Load({Node(0, {Set({1, 4}, "verbose"), Set({5}, "verbose")}), Node(1, {Set({2, 3}, "verbose")}), Node(2),
          Node(3), Node(4), Node(5)});
    Activate({0, 1, 2, 3, 4, 5});
    EXPECT_EQ(Texts(Tree(0)), "T0|s0|P1 P2 P3 P4 P5|S1 S2 S3 S4 S5");
}

} // namespace
