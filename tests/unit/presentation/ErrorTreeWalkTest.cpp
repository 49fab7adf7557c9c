// The walk that gathers what a tree shows, called by itself.
#include "unit/presentation/DisplayFixture.h"

#include <Faultkeeper/ErrorPresentation.h>

using namespace Faultkeeper;

namespace
{

class ErrorTreeWalkTest : public DisplayFixture
{
};

TEST_F(ErrorTreeWalkTest, TheWalkAppendsOneActivityStringForEachVisitedError)
{
    Load({Node(0, {Set({1, 2}), Set({3}, "shallow")}), Node(1), Node(2, {Set({4, 1})}), Node(3, {Set({4})}),
          Node(4)});
    Activate({0, 2, 3, 4});
    SErrorTree tree;
    std::vector<std::string> activity = {"before"};
    std::vector<std::pair<int, int>> codes = {{0x40C1B, 9}};
    CErrorPresentation::BuildErrorTree(Error(0), tree, activity, false, false, codes);
    EXPECT_EQ(Joined(activity), "before\n011\n10\n\n1\n\n");
    EXPECT_EQ(Numbers(codes), "9 2 4 3");
    EXPECT_EQ(Texts(tree), "|||S2 S4");
}

TEST_F(ErrorTreeWalkTest, ANestedWalkOnlyRecordsActivity)
{
    Support::STestError beeper = Node(1);
    beeper.flags = "shouldBeep='yes'";
    Load({Node(0, {Set({1, 2}, "verbose", "trigger")}), beeper, Node(2)});
    Activate({1, 2});
    SErrorTree tree;
    tree.title = "kept";
    std::vector<std::string> activity;
    std::vector<std::pair<int, int>> codes;
    CErrorPresentation::BuildErrorTree(Error(0), tree, activity, true, false, codes);
    EXPECT_EQ(Joined(activity), "11\n\n\n");
    EXPECT_TRUE(codes.empty());
    EXPECT_EQ(Texts(tree), "kept|||");
    EXPECT_FALSE(tree.shouldBeep);
}

TEST_F(ErrorTreeWalkTest, AWalkFromAnErrorWithoutTriggerSetsAppendsAnEmptyActivityString)
{
    Load({Node(0)});
    SErrorTree tree;
    std::vector<std::string> activity;
    std::vector<std::pair<int, int>> codes;
    CErrorPresentation::BuildErrorTree(Error(0), tree, activity, false, false, codes);
    EXPECT_EQ(activity, std::vector<std::string>{""});
    EXPECT_TRUE(codes.empty());
}

TEST_F(ErrorTreeWalkTest, AWalkAddsToWhatTheTreeHolds)
{
    Load({Node(0, {Set({1}, "verbose")}), Node(1)});
    Activate({1});
    SErrorTree tree;
    tree.title = "title";
    tree.problems = {"problem"};
    tree.solutions = {"solution"};
    tree.shouldBeep = true;
    std::vector<std::string> activity;
    std::vector<std::pair<int, int>> codes;
    CErrorPresentation::BuildErrorTree(Error(0), tree, activity, false, false, codes);
    EXPECT_EQ(Texts(tree), "title||problem P1|solution S1");
    EXPECT_TRUE(tree.shouldBeep);
}

} // namespace
