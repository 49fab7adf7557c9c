#include "support/CapturedOutput.h"
#include "unit/presentation/RebuildingFixture.h"

#include <gmock/gmock.h>

#include <stdexcept>

using namespace Faultkeeper;

namespace
{

class ErrorTreeRebuildingTest : public RebuildingFixture
{
};

TEST_F(ErrorTreeRebuildingTest, FollowsTheKeyWhateverTheLiveStateIs)
{
    Load({Node(0, {Set({1, 2}, "verbose")}), Node(1, {Set({3, 4})}), Node(2), Node(3), Node(4)});
    Activate({0, 1, 4});
    const std::string key = Tree(0).stateKey; // 0000000000 10 01
    EXPECT_EQ(key, "0024");
    for (const std::vector<int>& live : {std::vector<int>{}, {0, 1, 2, 3, 4}, {2, 3}})
    {
        Activate(live);
        EXPECT_EQ(Codes(key), "0 1 4");
        EXPECT_EQ(TextsOf(key), "T0|s0|P1|S1 S4");
    }
}

TEST_F(ErrorTreeRebuildingTest, DrawsOneLineForEachError)
{
    Load({Node(0, {Set({1, 2})}), Node(1, {Set({3})}), Node(2), Node(3, {Set({4})}), Node(4)});
    // 0000000000 11 1 1
    EXPECT_EQ(Joined(Rebuilt("003C").lines), "+-Positioning:GPS:No Data:0\n"
                                             "+---Positioning:GPS:No Data:1\n"
                                             "+-----Positioning:GPS:No Data:3\n"
                                             "+-------Positioning:GPS:No Data:4\n"
                                             "+---Positioning:GPS:No Data:2\n");
    EXPECT_EQ(Joined(Rebuilt("003C", true).lines), "Positioning:GPS:No Data:0\n"
                                                   "Positioning:GPS:No Data:1\n"
                                                   "Positioning:GPS:No Data:3\n"
                                                   "Positioning:GPS:No Data:4\n"
                                                   "Positioning:GPS:No Data:2\n");
}

TEST_F(ErrorTreeRebuildingTest, ListsCodesLevelByLevelWithinEachErrorBeforeGoingDeeper)
{
    Load({Node(0, {Set({1, 2})}), Node(1, {Set({3})}), Node(2), Node(3, {Set({4})}), Node(4)});
    EXPECT_EQ(Codes("003C"), "0 1 2 3 4");
    EXPECT_EQ(TextsOf("003C"), "T0|s0|P0|S1 S2 S3 S4");
}

TEST_F(ErrorTreeRebuildingTest, AnErrorWithoutTriggerSetsHasItsOwnTexts)
{
    Load({Node(0), Node(1), Node(2), Node(3), Node(4), Node(5)});
    SRebuilt expected;
    expected.tree.visible = true;
    expected.tree.severity = 2;
    expected.tree.title = "T5";
    expected.tree.shortTitle = "s5";
    expected.tree.problems = {"P5"};
    expected.tree.solutions = {"S5"};
    expected.lines = {"+-Positioning:GPS:No Data:5"};
    expected.codes = {{0x40C1B, 5}};
    EXPECT_EQ(Rebuilt("0140"), expected);
}

TEST_F(ErrorTreeRebuildingTest, SetsFlagsSeverityTimesAndCountersAndKeepsTheIdentity)
{
    Support::STestError error = Node(0);
    error.severity = "Critical";
    error.flags = "fullScreen='yes' forceShutdown='yes' includeServiceNumber='yes' shouldBeep='yes'";
    Load({error});
    Record(0).counter1 = 3;
    Record(0).counter2 = 4;
    Record(0).raisedTime = Core::Time::FromNanoseconds(1999999999);
    Record(0).clearedTime = Core::Time(5000000000);
    Synchronise();
    SRebuilt rebuilt = Filled();
    rebuilt.tree.visible = true;
    Rebuild("0000", rebuilt);
    EXPECT_EQ(Printed(rebuilt.tree), "123:7 severity 3 forceShutdown fullScreen includeServiceNumber beep\n"
                                     "title [T0] short [s0]\n"
                                     "problems [P0]\n"
                                     "solutions [S0]\n"
                                     "raised 1 cleared 2147483647 counters 3 4\n"
                                     "key [KEY] code [CODE]\n");
}

TEST_F(ErrorTreeRebuildingTest, AppendsToLinesAndCodes)
{
    Load({Node(0, {Set({1})}), Node(1)});
    SRebuilt rebuilt = Filled();
    Rebuild("0020", rebuilt);
    EXPECT_EQ(Joined(rebuilt.lines), "line\n+-Positioning:GPS:No Data:0\n+---Positioning:GPS:No Data:1\n");
    EXPECT_EQ(Numbers(rebuilt.codes), "20 0 1");
}

TEST_F(ErrorTreeRebuildingTest, AnOwningViewFindsTheErrorButTellsNoTimes)
{
    Load({Node(0), Node(1)});
    Record(1).counter1 = Record(1).counter2 = 9;
    SRebuilt rebuilt = Filled();
    CErrorPresentation::RegenerateErrorTree("0040", *m_database, m_owner, rebuilt.tree, rebuilt.lines,
                                            rebuilt.codes, true);
    EXPECT_EQ(rebuilt.tree.title, "T1");
    EXPECT_EQ(rebuilt.tree.counter1, 0u);
    EXPECT_EQ(rebuilt.tree.raisedTime, 0);
}

TEST_F(ErrorTreeRebuildingTest, BeepsAreThoseOfTheTopAndOfEverySelectedTrigger)
{
    Support::STestError beeper = Node(2);
    beeper.flags = "shouldBeep='yes'";
    Support::STestError guided = Node(1, {Set({2})});
    guided.flags = "shouldBeepIfGuiding='yes'";
    Load({Node(0, {Set({1}, "shallow")}), guided, beeper});
    EXPECT_FALSE(Rebuilt("0000").tree.shouldBeepIfGuiding);
    EXPECT_TRUE(Rebuilt("0020").tree.shouldBeepIfGuiding);
    EXPECT_FALSE(Rebuilt("0020").tree.shouldBeep);
    EXPECT_TRUE(Rebuilt("0030").tree.shouldBeep) << "below a shallow link, too";
}

TEST_F(ErrorTreeRebuildingTest, AShallowLinkIsDescendedLikeAnyOther)
{
    Load({Node(0, {Set({1}, "shallow")}), Node(1, {Set({2}, "verbose", "trigger")}), Node(2)});
    Activate({0, 1, 2});
    const SErrorTree built = Tree(0);
    EXPECT_EQ(Texts(built), "T0|s0|P0|S0");
    EXPECT_EQ(built.stateKey, "0030");
    EXPECT_EQ(Codes("0030"), "0 1 2");
    EXPECT_EQ(TextsOf("0030"), "T2|s2|P2|S2") << "only the shallow trigger itself leaves out its solution";
}

TEST_F(ErrorTreeRebuildingTest, ATriggerWithAChildOnlySetLeavesOutItsSolution)
{
    Load({Node(0, {Set({1})}), Node(1, {Set({2}, "childOnly")}), Node(2)});
    EXPECT_EQ(TextsOf("0030"), "T0|s0|P0|S2");
    EXPECT_EQ(TextsOf("0020"), "T0|s0|P0|S0");
}

TEST_F(ErrorTreeRebuildingTest, TwoSelectedTriggersInDifferentSetsClearTheTitle)
{
    Load({Node(0, {Set({1}, "", "trigger"), Set({2}, "", "trigger")}), Node(1), Node(2)});
    EXPECT_EQ(TextsOf("0020"), "T1|s1|P0|S1");
    EXPECT_EQ(TextsOf("0010"), "T2|s2|P0|S2");
    EXPECT_EQ(TextsOf("0030"), "T0|s0|P0|S1 S2");
    Activate({0, 1, 2});
    EXPECT_EQ(Texts(Tree(0)), "T2|s2|P0|S1 S2") << "built, each set is counted by itself";
}

TEST_F(ErrorTreeRebuildingTest, ADeeperTitleSurvivesTwoSelectedTriggersAbove)
{
    Load({Node(0, {Set({1, 2})}), Node(1, {Set({3}, "", "trigger")}), Node(2), Node(3)});
    EXPECT_EQ(TextsOf("0038"), "T3|s3|P0|S1 S2 S3"); // 0000000000 11 1
}

TEST_F(ErrorTreeRebuildingTest, TwoSelectedTriggersBelowClearATitleFromAbove)
{
    Load({Node(0, {Set({1}, "", "trigger")}), Node(1, {Set({2, 3})}), Node(2), Node(3)});
    EXPECT_EQ(TextsOf("0038"), "T0|s0|P0|S1 S2 S3"); // 0000000000 1 11
}

TEST_F(ErrorTreeRebuildingTest, ATriggerWithoutATitleLeavesTheTopErrors)
{
    Support::STestError untitled = Node(1);
    untitled.title = "-";
    Load({Node(0, {Set({1}, "", "trigger")}), untitled});
    EXPECT_EQ(TextsOf("0020"), "T0|s1|P0|S1");
}

TEST_F(ErrorTreeRebuildingTest, AKeyOfWholeBytesLeavesOutTheLinesOfItsLastError)
{
    Load({Node(0, {Set({1, 2, 3, 4})}), Node(1, {Set({5, 6}, "verbose", "trigger")}), Node(2), Node(3),
          Node(4), Node(5, {Set({6})}), Node(6)});
    Activate({0, 1, 5});
    const std::string key = Tree(0).stateKey;
    EXPECT_EQ(key, "002200"); // 0000000000 1000 10 0, one bit more than two bytes
    EXPECT_EQ(Codes("0022"), "0 1 5");
    EXPECT_EQ(TextsOf("0022"), "T5|s5|P5|S1 S5");
    EXPECT_EQ(Joined(Rebuilt("0022", true).lines), "Positioning:GPS:No Data:0\nPositioning:GPS:No Data:1\n");
}

TEST_F(ErrorTreeRebuildingTest, ABuiltKeyOfWholeBytesShowsNoChildLinesOfItsLastError)
{
    Load({Node(0, {Set({1, 2, 3, 4, 5, 6}, "verbose")}), Node(1), Node(2), Node(3), Node(4), Node(5),
          Node(6)});
    Activate({0, 2, 6});
    EXPECT_EQ(Tree(0).stateKey, "0011");
    EXPECT_EQ(Codes("0011"), "0 2 6");
    EXPECT_EQ(TextsOf("0011"), "T0|s0|P2 P6|S2 S6");
    EXPECT_EQ(Joined(Rebuilt("0011").lines), "+-Positioning:GPS:No Data:0\n");
}

TEST_F(ErrorTreeRebuildingTest, WhatFollowsAnErrorThatUsedUpTheBitsIsNotDescended)
{
    Load({Node(0, {Set({1, 2})}), Node(1, {Set({3, 3, 3, 3})}), Node(2, {Set({3})}), Node(3)});
    // 0000000000 11 1000: error 1 takes the last bits, so error 2 has none left
    SRebuilt rebuilt = Rebuilt("0038", true);
    EXPECT_EQ(Numbers(rebuilt.codes), "0 1 2 3");
    EXPECT_EQ(Joined(rebuilt.lines),
              "Positioning:GPS:No Data:0\nPositioning:GPS:No Data:1\nPositioning:GPS:No Data:2\n");
}

TEST_F(ErrorTreeRebuildingTest, MissingBitsCountAsZero)
{
    Load({Node(0, {Set({1, 2, 3, 4, 5, 6, 7, 8})}), Node(1), Node(2), Node(3), Node(4), Node(5), Node(6),
          Node(7), Node(8)});
    EXPECT_EQ(Codes("003F"), "0 1 2 3 4 5 6");
    EXPECT_EQ(Joined(Rebuilt("003F").lines), "+-Positioning:GPS:No Data:0\n");
    EXPECT_EQ(Codes("003FC0"), "0 1 2 3 4 5 6 7 8");
    EXPECT_EQ(Rebuilt("003FC0").lines.size(), 9u);
}

TEST_F(ErrorTreeRebuildingTest, BitsLeftOverAreIgnored)
{
    Load({Node(0, {Set({1})}), Node(1)});
    EXPECT_EQ(Rebuilt("003FFFFFFF"), Rebuilt("0020"));
}

TEST_F(ErrorTreeRebuildingTest, AnIndexWithoutARecordLeavesAllOutputsUntouched)
{
    Load({Node(0), Node(1)});
    for (const char* const key : {"0080", "6400", "FFC0", "FFFFFF"}) // 2, 400, 1023, 1023
    {
        SRebuilt rebuilt = Filled();
        Rebuild(key, rebuilt);
        EXPECT_EQ(rebuilt, Filled()) << key;
    }
}

TEST_F(ErrorTreeRebuildingTest, AnIndexBehindTheTableIsNeverRead)
{
    Load({Node(0)});
    reinterpret_cast<SStatusTable*>(m_directory.Table())->header.count = 1023;
    for (const char* const key : {"6400", "7D00", "FFC0"}) // 400, 500, 1023
    {
        SRebuilt rebuilt = Filled();
        Rebuild(key, rebuilt);
        EXPECT_EQ(rebuilt, Filled()) << key;
    }
}

TEST_F(ErrorTreeRebuildingTest, ARecordOfAnErrorThatTheDatabaseDoesNotHaveLeavesAllOutputsUntouched)
{
    Load({Node(0), Node(1)});
    Record(1).problemType = 9;
    SRebuilt rebuilt = Filled();
    Rebuild("0040", rebuilt);
    EXPECT_EQ(rebuilt, Filled());
}

TEST_F(ErrorTreeRebuildingTest, ABusyLockLeavesAllOutputsUntouched)
{
    Load({Node(0)});
    ASSERT_TRUE(m_owner.GetLock(false));
    SRebuilt rebuilt = Filled();
    EXPECT_EQ(Support::WarnedBy([&] { Rebuild("0000", rebuilt); }), "unable to obtain lock\n");
    EXPECT_EQ(rebuilt, Filled());
}

TEST_F(ErrorTreeRebuildingTest, OtherCharactersThanUpperCaseHexAreRefusedBeforeAnythingChanges)
{
    Load({Node(0, {Set({1})}), Node(1)});
    for (const char* const key : {"003c", "00a0", "g000", "000G", "00 20", " 0020", "0020\n", "0:20", "00/0",
                                  "00@0", "0x20", "-020", "00\xC3\xA4", "FFCf", "x"})
    {
        SRebuilt rebuilt = Filled();
        EXPECT_THROW(Rebuild(key, rebuilt), std::invalid_argument) << key;
        EXPECT_EQ(rebuilt, Filled()) << key;
    }
    SRebuilt rebuilt = Filled();
    EXPECT_THROW(Rebuild(std::string("00\0000", 4), rebuilt), std::invalid_argument) << "a zero byte";
    EXPECT_EQ(rebuilt, Filled());
}

TEST_F(ErrorTreeRebuildingTest, AllHexDigitsAreRead)
{
    Load({Node(0, {Set(std::vector<int>(70, 1))}), Node(1)});
    // 62 bits behind the index: of the digits from 2 to F with the low half of "3" in front
    SRebuilt rebuilt = Rebuilt("003456789ABCDEF012");
    // ones: 3 -> 11, 4 1, 5 2, 6 2, 7 3, 8 1, 9 2, A 2, B 3, C 2, D 3, E 3, F 4, 0 0, 1 1, 2 1
    EXPECT_EQ(rebuilt.codes.size(), 1u + 2 + 1 + 2 + 2 + 3 + 1 + 2 + 2 + 3 + 2 + 3 + 3 + 4 + 0 + 1 + 1);
}

TEST_F(ErrorTreeRebuildingTest, AKeyShorterThanTenBitsIsReadAsTheIndexItself)
{
    Load({Node(0), Node(1), Node(2), Node(3), Node(4), Node(5)});
    EXPECT_EQ(Codes("05"), "5");
    EXPECT_EQ(Codes("5"), "5");
    EXPECT_EQ(Codes(""), "0");
    EXPECT_EQ(Codes("014"), "5") << "twelve bits hold a whole index";
    EXPECT_EQ(Codes("06"), "");
}

TEST_F(ErrorTreeRebuildingTest, AKeyShorterThanTenBitsIsOutOfRangeForAnErrorWithTriggerSets)
{
    Load({Node(0), Node(1, {Set({0})})});
    SRebuilt rebuilt = Filled();
    try
    {
        Rebuild("01", rebuilt);
        FAIL() << "nothing was thrown";
    }
    catch (const std::out_of_range& error)
    {
        EXPECT_THAT(error.what(), testing::HasSubstr("basic_string::substr"));
    }
    EXPECT_EQ(Numbers(rebuilt.codes), "20 1") << "the top error is listed before the bits are missed";
    EXPECT_EQ(Joined(rebuilt.lines), "line\n+-Positioning:GPS:No Data:1\n");
}

TEST_F(ErrorTreeRebuildingTest, AnEmptyKeyIsOutOfRangeForAFirstErrorWithTriggerSets)
{
    Load({Node(0, {Set({1})}), Node(1)});
    SRebuilt rebuilt;
    EXPECT_THROW(Rebuild("", rebuilt), std::out_of_range);
    EXPECT_THROW(Rebuild("00", rebuilt), std::out_of_range);
    EXPECT_NO_THROW(Rebuild("000", rebuilt));
}

TEST_F(ErrorTreeRebuildingTest, GoesNoDeeperWhereAnErrorWouldContainItself)
{
    Support::WarnedBy([&] { Load({Node(0, {Set({1})}), Node(1, {Set({0, 2})}), Node(2, {Set({1})})}); });
    Activate({0, 1, 2});
    const SErrorTree built = Tree(0);
    EXPECT_EQ(built.stateKey, "003C"); // 0000000000 1 11 1
    EXPECT_EQ(Texts(built), "T0|s0|P0|S1 S0 S2 S1");
    EXPECT_EQ(TextsOf("003C"), "T0|s0|P0|S1 S0 S2 S1");
    EXPECT_EQ(Codes("003C"), "0 1 0 2 1");
    EXPECT_EQ(Rebuilt("003" + std::string(1000, 'F')), Rebuilt("003" + std::string(2000, 'F')))
        << "however many bits there are";
}

} // namespace
