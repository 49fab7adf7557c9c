// The walk that follows the bits of a key, called by itself.
#include "unit/presentation/RebuildingFixture.h"

using namespace Faultkeeper;

namespace
{

class ErrorTreeRebuildingWalkTest : public RebuildingFixture
{
};

TEST_F(ErrorTreeRebuildingWalkTest, TheWalkTakesItsBitsFromTheFront)
{
    Load({Node(0, {Set({1, 2})}), Node(1, {Set({2})}), Node(2)});
    SRebuilt rebuilt;
    std::string bits = "10"
                       "1"
                       "0110";
    CErrorPresentation::RegenerateErrorTree(Error(0), bits, rebuilt.tree, rebuilt.lines, false, rebuilt.codes,
                                            "  *");
    EXPECT_EQ(bits, "0110");
    EXPECT_EQ(Joined(rebuilt.lines), "  *--Positioning:GPS:No Data:1\n  *----Positioning:GPS:No Data:2\n");
    EXPECT_EQ(Numbers(rebuilt.codes), "1 2");
    EXPECT_EQ(Texts(rebuilt.tree), "|||S1 S2");
}

TEST_F(ErrorTreeRebuildingWalkTest, TheWalkUsesUpBitsThatDoNotReachBeyondTheError)
{
    Load({Node(0, {Set({1, 2})}), Node(1), Node(2)});
    SRebuilt rebuilt;
    for (const char* const given : {"1", "11"})
    {
        std::string bits = given;
        CErrorPresentation::RegenerateErrorTree(Error(0), bits, rebuilt.tree, rebuilt.lines, true,
                                                rebuilt.codes, "");
        EXPECT_EQ(bits, "") << given;
    }
    EXPECT_EQ(Numbers(rebuilt.codes), "1 1 2");
    EXPECT_TRUE(rebuilt.lines.empty());
}

TEST_F(ErrorTreeRebuildingWalkTest, TheWalkWithoutBitsChangesNothing)
{
    Load({Node(0, {Set({1})}), Node(1)});
    SRebuilt rebuilt = Filled();
    rebuilt.tree.title = "kept";
    const SRebuilt before = rebuilt;
    std::string bits;
    CErrorPresentation::RegenerateErrorTree(Error(0), bits, rebuilt.tree, rebuilt.lines, true, rebuilt.codes,
                                            "");
    EXPECT_EQ(rebuilt, before);
}

TEST_F(ErrorTreeRebuildingWalkTest, TheWalkLeavesTheBitsToOthersWhereThereIsNoTrigger)
{
    Load({Node(0), Node(1, {Set({})})});
    SRebuilt rebuilt;
    std::string bits = "11";
    CErrorPresentation::RegenerateErrorTree(Error(0), bits, rebuilt.tree, rebuilt.lines, true, rebuilt.codes,
                                            "");
    CErrorPresentation::RegenerateErrorTree(Error(1), bits, rebuilt.tree, rebuilt.lines, true, rebuilt.codes,
                                            "");
    EXPECT_EQ(bits, "11");
    EXPECT_TRUE(rebuilt.codes.empty());
}

} // namespace
