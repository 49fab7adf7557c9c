#include "presentation/StateKey.h"
#include "unit/presentation/DisplayFixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <ostream>
#include <stdexcept>

using namespace Faultkeeper;

namespace
{

/// A hierarchy whose top is error 0, which of its errors are active, and the key worked out by hand.
struct SKeyCase
{
    const char* name;
    std::vector<Support::STestError> errors;
    std::vector<int> active;
    const char* key;
};

std::ostream& operator<<(std::ostream& out, const SKeyCase& keyCase)
{
    return out << keyCase.name;
}

const std::vector<SKeyCase> kKeyCases = {
    {"NoTriggers", {Node(0)}, {0}, "0000"},
    {"OneInactive", {Node(0, {Set({1})}), Node(1)}, {0}, "0000"},
    // 0000000000 1
    {"OneActive", {Node(0, {Set({1})}), Node(1)}, {0, 1}, "0020"},
    // 0000000000 101
    {"SetsInOrder", {Node(0, {Set({1, 2}), Set({3})}), Node(1), Node(2), Node(3)}, {0, 1, 3}, "0028"},
    // 0000000000 011: the order of the triggers, not of the identifiers
    {"TriggersInOrder", {Node(0, {Set({3, 1, 2})}), Node(1), Node(2), Node(3)}, {0, 1, 2}, "0018"},
    // 0000000000 11: a trigger that is listed twice has two bits
    {"ListedTwice", {Node(0, {Set({1, 1})}), Node(1)}, {0, 1}, "0030"},
    // 0000000000 11 01: error 1, then error 2, which has no triggers
    {"DepthFirst", {Node(0, {Set({1, 2})}), Node(1, {Set({3, 2})}), Node(2), Node(3)}, {0, 1, 2}, "0034"},
    // 0000000000 11 1 0 0 -> error 1: "1", its error 3: "0", error 2: "0"
    {"DepthBeforeBreadth",
     {Node(0, {Set({1, 2})}), Node(1, {Set({3})}), Node(2, {Set({4})}), Node(3, {Set({4})}), Node(4)},
     {0, 1, 2, 3},
     "0038"},
    // 0000000000 01 1: error 1 is inactive and has no string
    {"InactiveLeftOut",
     {Node(0, {Set({1, 2})}), Node(1, {Set({3, 3, 3})}), Node(2, {Set({3})}), Node(3)},
     {0, 2, 3},
     "0018"},
    // 0000000000 111111
    {"TwoBytesFull", {Node(0, {Set({1, 1, 1, 1, 1, 1})}), Node(1)}, {0, 1}, "003F"},
    // 0000000000 111111 1
    {"OneBitInTheThirdByte", {Node(0, {Set({1, 1, 1, 1, 1, 1, 1})}), Node(1)}, {0, 1}, "003F80"},
    // 0000000000 0001000001 1010
    {"ThreeBytesFull",
     {Node(0, {Set({2, 2, 2, 1, 2, 2, 2, 2, 2, 1})}), Node(1, {Set({3, 2})}), Node(2), Node(3)},
     {0, 1, 3},
     "00041A"},
};

class StateKeyTest : public DisplayFixture
{
};

class StateKeyBitsTest : public StateKeyTest, public testing::WithParamInterface<SKeyCase>
{
};

TEST_P(StateKeyBitsTest, ReadAsWorkedOutByHand)
{
    Load(GetParam().errors);
    Activate(GetParam().active);
    EXPECT_EQ(Tree(0).stateKey, GetParam().key);
}

INSTANTIATE_TEST_SUITE_P(Hierarchies, StateKeyBitsTest, testing::ValuesIn(kKeyCases),
                         [](const auto& keyCase) { return std::string(keyCase.param.name); });

TEST_F(StateKeyTest, BeginsWithTheTenBitsOfTheIndex)
{
    std::vector<Support::STestError> errors;
    for (int number = 0; number < 400; ++number)
        errors.push_back(Node(number));
    Load(errors);
    const std::pair<int, const char*> keys[] = {{0, "0000"},   {1, "0040"},   {3, "00C0"},   {4, "0100"},
                                                {5, "0140"},   {127, "1FC0"}, {128, "2000"}, {255, "3FC0"},
                                                {256, "4000"}, {341, "5540"}, {399, "63C0"}};
    for (const auto& key : keys)
        EXPECT_EQ(Tree(key.first).stateKey, key.second) << key.first;
}

TEST_F(StateKeyTest, OfAnUnknownErrorBeginsWithTenOnes)
{
    Load({Node(0, {Set({1, 1, 1, 1, 1, 1})}), Node(1)});
    Activate({0, 1});
    reinterpret_cast<SStatusTable*>(m_directory.Table())->header.count = 0;
    Synchronise();
    EXPECT_EQ(Tree(0).stateKey, "FFFF");
    EXPECT_EQ(Tree(1).stateKey, "FFC0");
}

TEST_F(StateKeyTest, IsTheSameWithTextKeys)
{
    Load({Node(0, {Set({1}), Set({2}, "shallow")}), Node(1), Node(2, {Set({1})})});
    Activate({0, 1, 2});
    EXPECT_EQ(Tree(0, true).stateKey, Tree(0, false).stateKey);
}

TEST_F(StateKeyTest, FollowsTheTableAndNotTheDatabase)
{
    Load({Node(0), Node(1), Node(2)});
    std::swap(Record(0).problemType, Record(2).problemType);
    Synchronise();
    EXPECT_EQ(Tree(0).stateKey, "0080");
    EXPECT_EQ(Tree(1).stateKey, "0040");
    EXPECT_EQ(Tree(2).stateKey, "0000");
}

TEST_F(StateKeyTest, HoldsHundredsOfTriggers)
{
    std::vector<int> triggers(399, 1);
    Load({Node(0, {Set(triggers)}), Node(1)});
    Activate({0, 1});
    // 10 + 399 bits in 52 bytes: 00 3F, 49 times FF, and one bit
    std::string key = "003F";
    for (int i = 0; i < 49; ++i)
        key += "FF";
    EXPECT_EQ(Tree(0).stateKey, key + "80");
}

/// What an invalid_argument says that `action` throws, or "nothing thrown".
std::string Refusal(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const std::invalid_argument& error)
    {
        return error.what();
    }
    return "nothing thrown";
}

TEST(StateKeyPiecesTest, ABitThatIsNeitherZeroNorOneIsRefused)
{
    for (const char* const bits : {"0000000002", "x", "00 0", "00000000-1"})
    {
        EXPECT_THAT(Refusal([&] { IndexOfBits(bits); }), testing::HasSubstr("bitset::_M_copy_from_string"))
            << bits;
        EXPECT_THAT(Refusal(
                        [&] {
                            PackStateKey({"01", bits});
                        }),
                    testing::HasSubstr("bitset::_M_copy_from_string"))
            << bits;
    }
    EXPECT_EQ(IndexOfBits("0000000001x"), 1) << "only the first ten are looked at";
}

TEST(StateKeyPiecesTest, TheIndexIsTheNumberThatTheFirstTenBitsMake)
{
    EXPECT_EQ(IndexOfBits("0000000101"), 5);
    EXPECT_EQ(IndexOfBits("10000000001111"), 512);
    EXPECT_EQ(IndexOfBits("1111111111"), 1023);
    EXPECT_EQ(IndexOfBits("00000101"), 5);
    EXPECT_EQ(IndexOfBits(""), 0);
}

TEST(StateKeyPiecesTest, OnlyTheLowTenBitsOfAnIndexAreKept)
{
    EXPECT_EQ(IndexBits(5), "0000000101");
    EXPECT_EQ(IndexBits(400), "0110010000");
    EXPECT_EQ(IndexBits(1023), "1111111111");
    EXPECT_EQ(IndexBits(1024 + 3), "0000000011");
    EXPECT_EQ(IndexBits(-1), "1111111111");
}

TEST(StateKeyPiecesTest, PackedBitsArePaddedToWholeBytesOnly)
{
    EXPECT_EQ(PackStateKey({}), "");
    EXPECT_EQ(PackStateKey({"", ""}), "");
    EXPECT_EQ(PackStateKey({"1"}), "80");
    EXPECT_EQ(PackStateKey({"1010", "", "1011"}), "AB");
    EXPECT_EQ(PackStateKey({"10101011", "1"}), "AB80");
}

TEST(StateKeyPiecesTest, ExpandedKeysHaveFourBitsForEachDigit)
{
    EXPECT_EQ(ExpandStateKey("0123456789ABCDEF"),
              "0000000100100011010001010110011110001001101010111100110111101111");
    EXPECT_EQ(ExpandStateKey("F"), "1111");
    EXPECT_EQ(ExpandStateKey(""), "");
    EXPECT_NE(Refusal([] { ExpandStateKey("0a"); }), "nothing thrown");
}

} // namespace
