#include "support/CapturedOutput.h"
#include "unit/presentation/DisplayFixture.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <algorithm>
#include <iostream>
#include <sstream>

using namespace Faultkeeper;
using Support::PrintedBy;

namespace
{

SErrorEntry Entry(int code, int type, const Core::Time& raised = Core::Time(0))
{
    SErrorEntry entry;
    entry.problemCode = code;
    entry.problemType = static_cast<std::int16_t>(type);
    entry.flags = kRaisedFlag;
    entry.counter1 = 1;
    entry.counter2 = 1;
    entry.raisedTime = raised;
    return entry;
}

std::vector<SErrorTree> Formatted(const std::vector<SErrorEntry>& entries)
{
    std::vector<SErrorTree> trees;
    CErrorPresentation::FormatErrorList(entries, trees);
    return trees;
}

SErrorTree RaisedAt(int seconds)
{
    SErrorTree tree;
    tree.raisedTime = seconds;
    return tree;
}

std::string RaisedTimes(const std::vector<SErrorTree>& trees)
{
    std::string text;
    for (const SErrorTree& tree : trees)
        text += std::to_string(tree.raisedTime) + " ";
    return text;
}

TEST(ErrorTreeSorterTest, PutsTheLargestRaisedTimeFirst)
{
    EXPECT_TRUE(CErrorPresentation::ErrorTreeSorter(RaisedAt(2), RaisedAt(1)));
    EXPECT_FALSE(CErrorPresentation::ErrorTreeSorter(RaisedAt(1), RaisedAt(2)));
    std::vector<SErrorTree> trees = {RaisedAt(5), RaisedAt(-3), RaisedAt(9), RaisedAt(0)};
    std::sort(trees.begin(), trees.end(), CErrorPresentation::ErrorTreeSorter);
    EXPECT_EQ(RaisedTimes(trees), "9 5 0 -3 ");
}

TEST(ErrorTreeSorterTest, OrdersEqualTimesNeitherWay)
{
    EXPECT_FALSE(CErrorPresentation::ErrorTreeSorter(RaisedAt(7), RaisedAt(7)));
}

TEST(ErrorTreeSorterTest, ComparesWithSignAndLooksAtNothingElse)
{
    EXPECT_TRUE(CErrorPresentation::ErrorTreeSorter(RaisedAt(1), RaisedAt(-1)));
    SErrorTree later = RaisedAt(1);
    later.clearedTime = 1000;
    later.severity = 3;
    EXPECT_FALSE(CErrorPresentation::ErrorTreeSorter(later, RaisedAt(2)));
}

TEST(FormatErrorListTest, MakesATreeWithTextKeysOfAnEntry)
{
    SErrorEntry entry = Entry(0x40C1B, 2, Core::Time(1700000000));
    entry.clearedTime = Core::Time(1700000500);
    entry.counter1 = 65535;
    entry.counter2 = 12;
    EXPECT_EQ(Printed(Formatted({entry}).at(0)), "40C1B:2 severity 0\n"
                                                 "title [Positioning:GPS:No Data:2.shortTitle] "
                                                 "short [Positioning:GPS:No Data:2.vtTitle]\n"
                                                 "problems [Positioning:GPS:No Data:2.problem]\n"
                                                 "solutions [Positioning:GPS:No Data:2.solution]\n"
                                                 "raised 1700000000 cleared 1700000500 counters 65535 12\n"
                                                 "key [] code []\n");
}

TEST(FormatErrorListTest, SkipsEntriesWhoseSecondCounterIsZero)
{
    SErrorEntry skipped = Entry(0x40C1B, 1);
    skipped.counter1 = 5;
    skipped.counter2 = 0;
    SErrorEntry shown = Entry(0x40C1B, 2);
    shown.counter1 = 0;
    const std::vector<SErrorTree> trees = Formatted({skipped, shown, skipped});
    ASSERT_EQ(trees.size(), 1u);
    EXPECT_EQ(trees[0].problemType, 2);
    EXPECT_EQ(trees[0].counter1, 0u);
}

TEST(FormatErrorListTest, ShowsEntriesWhetherRaisedOrNot)
{
    SErrorEntry cleared = Entry(0x40C1B, 1);
    cleared.flags = 0;
    EXPECT_EQ(Formatted({cleared}).size(), 1u);
}

TEST(FormatErrorListTest, SortsNewestFirst)
{
    EXPECT_EQ(RaisedTimes(Formatted({Entry(1, 0, Core::Time(200)), Entry(2, 0, Core::Time(-300)),
                                     Entry(3, 0, Core::Time(400)), Entry(4, 0, Core::Time(0))})),
              "400 200 0 -300 ");
}

TEST(FormatErrorListTest, AppendsToTheOutputAndSortsAllOfIt)
{
    std::vector<SErrorTree> trees = {RaisedAt(100), RaisedAt(300)};
    CErrorPresentation::FormatErrorList({Entry(1, 0, Core::Time(200)), Entry(2, 0, Core::Time(400))}, trees);
    EXPECT_EQ(RaisedTimes(trees), "400 300 200 100 ");
}

TEST(FormatErrorListTest, SortsTheOutputEvenWithoutEntries)
{
    std::vector<SErrorTree> trees = {RaisedAt(100), RaisedAt(300), RaisedAt(200)};
    CErrorPresentation::FormatErrorList({}, trees);
    EXPECT_EQ(RaisedTimes(trees), "300 200 100 ");
}

TEST(FormatErrorListTest, KeepsAllTreesOfOneSecond)
{
    std::vector<SErrorEntry> entries;
    for (int i = 0; i < 100; ++i)
        entries.push_back(Entry(0x40C1B, i, Core::Time(i < 50 ? 7 : 8)));
    const std::vector<SErrorTree> trees = Formatted(entries);
    ASSERT_EQ(trees.size(), 100u);
    int sum = 0;
    for (const SErrorTree& tree : trees)
        sum += tree.problemType;
    EXPECT_EQ(sum, 4950);
    EXPECT_EQ(trees[49].raisedTime, 8);
    EXPECT_EQ(trees[50].raisedTime, 7);
}

TEST(FormatErrorListTest, RoundsTimesDownAndKeepsThemWithin32Bits)
{
    SErrorEntry entry = Entry(1, 0, Core::Time::FromNanoseconds(-500000000));
    entry.clearedTime = Core::Time::FromNanoseconds(1999999999);
    EXPECT_EQ(Formatted({entry}).at(0).raisedTime, -1);
    EXPECT_EQ(Formatted({entry}).at(0).clearedTime, 1);
    entry.raisedTime = Core::Time(5000000000);
    entry.clearedTime = Core::Time(-5000000000);
    EXPECT_EQ(Formatted({entry}).at(0).raisedTime, 2147483647);
    EXPECT_EQ(Formatted({entry}).at(0).clearedTime, -2147483647 - 1);
}

struct SNamedCode
{
    int code;
    int type;
    const char* name;
};

/// What a test's name shows of its parameter: the same on every machine.
void PrintTo(const SNamedCode& named, std::ostream* out)
{
    *out << named.name << " (" << named.code << ")";
}

class FormatErrorListNameTest : public testing::TestWithParam<SNamedCode>
{
};

TEST_P(FormatErrorListNameTest, IsMadeOfWhatTheCodesPartsAreCalled)
{
    const SErrorTree tree = Formatted({Entry(GetParam().code, GetParam().type)}).at(0);
    EXPECT_EQ(tree.title, GetParam().name + std::string(".shortTitle"));
    EXPECT_EQ(tree.problemCode, GetParam().code);
    EXPECT_EQ(tree.problemType, GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, FormatErrorListNameTest,
    testing::Values(SNamedCode{0x3361F, 20, "Navigation And Control:Treatments:Null Log Status:20"},
                    SNamedCode{0x10101, 0, "GPS:Accelerometers:A Not Set:0"},
                    SNamedCode{0xC365F, 21, "NTrip:Treatments:ABCurve Definition:21"},
                    SNamedCode{0x40C1B, -5, "Positioning:GPS:No Data:-5"},
                    SNamedCode{0x40C1B, 32767, "Positioning:GPS:No Data:32767"},
                    SNamedCode{0x40C1B, -32768, "Positioning:GPS:No Data:-32768"}, SNamedCode{0, 0, ":::0"},
                    SNamedCode{-1, 0, ":::0"}, SNamedCode{0xD0C1B, 1, ":GPS:No Data:1"},
                    SNamedCode{0x4371B, 1, "Positioning::No Data:1"},
                    SNamedCode{0x40C3B, 1, "Positioning:GPS::1"},
                    SNamedCode{0x40C60, 1, "Positioning:GPS::1"},
                    SNamedCode{0x7F040C1B, 1, "Positioning:GPS:No Data:1"}));

class PrintErrorTreeTest : public DisplayFixture
{
protected:
    std::string PrintedTree(const std::list<const CError*>& errors) const
    {
        return PrintedBy([&] { CErrorPresentation::PrintErrorTree(errors); });
    }
};

TEST_F(PrintErrorTreeTest, PrintsOnlyTheHeadingForNoErrors)
{
    EXPECT_EQ(PrintedTree({}), "Active top level errors\n");
}

/// Takes the place of standard output while it lives, and knows what has been flushed.
class FlushedOutput : public std::stringbuf
{
public:
    FlushedOutput() : m_before(std::cout.rdbuf(this)) {}
    ~FlushedOutput() override { std::cout.rdbuf(m_before); }

    const std::string& Text() const { return m_text; }

private:
    int sync() override
    {
        m_text = str();
        return 0;
    }

    std::streambuf* const m_before;
    std::string m_text;
};

TEST_F(PrintErrorTreeTest, NothingThatWasPrintedWaitsInABuffer)
{
    Load({Node(0, {Set({1})}), Node(1)});
    Activate({0, 1});
    const FlushedOutput output;
    CErrorPresentation::PrintErrorChildren("+", Error(0));
    EXPECT_EQ(output.Text(), "+Positioning:GPS:No Data:1\n");
    CErrorPresentation::PrintErrorTree({});
    EXPECT_EQ(output.Text(), "+Positioning:GPS:No Data:1\nActive top level errors\n");
}

TEST_F(PrintErrorTreeTest, IndentsEachLevelByTwoMoreBlanks)
{
    Load({Node(0, {Set({1})}), Node(1, {Set({2})}), Node(2, {Set({3})}), Node(3)});
    Activate({0, 1, 2, 3});
    EXPECT_EQ(PrintedTree({Error(0)}), "Active top level errors\n"
                                       "+Positioning:GPS:No Data:0\n"
                                       "  +Positioning:GPS:No Data:1\n"
                                       "    +Positioning:GPS:No Data:2\n"
                                       "      +Positioning:GPS:No Data:3\n");
}

TEST_F(PrintErrorTreeTest, LeavesOutInactiveTriggersAndWhatIsBelowThem)
{
    Load({Node(0, {Set({1, 2})}), Node(1, {Set({3})}), Node(2), Node(3)});
    Activate({2, 3});
    EXPECT_EQ(PrintedTree({Error(0)}), "Active top level errors\n"
                                       "+Positioning:GPS:No Data:0\n"
                                       "  +Positioning:GPS:No Data:2\n");
}

TEST_F(PrintErrorTreeTest, PrintsATriggerOnceForEachPath)
{
    Load({Node(0, {Set({1, 2}), Set({3}, "shallow")}), Node(1, {Set({3})}), Node(2, {Set({3})}), Node(3)});
    Activate({0, 1, 2, 3});
    EXPECT_EQ(PrintedTree({Error(0), Error(3)}), "Active top level errors\n"
                                                 "+Positioning:GPS:No Data:0\n"
                                                 "  +Positioning:GPS:No Data:1\n"
                                                 "    +Positioning:GPS:No Data:3\n"
                                                 "  +Positioning:GPS:No Data:2\n"
                                                 "    +Positioning:GPS:No Data:3\n"
                                                 "  +Positioning:GPS:No Data:3\n"
                                                 "+Positioning:GPS:No Data:3\n");
}

TEST_F(PrintErrorTreeTest, PrintsTheErrorsInTheOrderGiven)
{
    Support::STestError other = Node(1);
    other.name = "Cell Radio:GSM:No Network:11";
    Load({Node(0), other});
    const CError* const network = m_database->RetrieveError(0x90D1C, 11);
    EXPECT_EQ(PrintedTree({network, Error(0), network}), "Active top level errors\n"
                                                         "+Cell Radio:GSM:No Network:11\n"
                                                         "+Positioning:GPS:No Data:0\n"
                                                         "+Cell Radio:GSM:No Network:11\n");
}

TEST_F(PrintErrorTreeTest, PutsBlanksInFrontOfAnyPrefixOfItsChildren)
{
    Load({Node(0, {Set({1})}), Node(1, {Set({2})}), Node(2)});
    Activate({1, 2});
    EXPECT_EQ(PrintedBy([&] { CErrorPresentation::PrintErrorChildren("x ", Error(0)); }),
              "x Positioning:GPS:No Data:1\n"
              "  x Positioning:GPS:No Data:2\n");
    EXPECT_EQ(PrintedBy([&] { CErrorPresentation::PrintErrorChildren("", Error(1)); }),
              "Positioning:GPS:No Data:2\n");
    EXPECT_EQ(PrintedBy([&] { CErrorPresentation::PrintErrorChildren("x", Error(2)); }), "");
}

TEST_F(PrintErrorTreeTest, GoesNoDeeperWhereAnErrorWouldContainItself)
{
    Support::WarnedBy([&] { Load({Node(0, {Set({1})}), Node(1, {Set({0, 2})}), Node(2)}); });
    Activate({0, 1, 2});
    EXPECT_EQ(PrintedTree({Error(0)}), "Active top level errors\n"
                                       "+Positioning:GPS:No Data:0\n"
                                       "  +Positioning:GPS:No Data:1\n"
                                       "    +Positioning:GPS:No Data:0\n"
                                       "    +Positioning:GPS:No Data:2\n");
}

} // namespace
