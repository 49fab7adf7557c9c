#include <Faultkeeper/ErrorDatabase.h>

#include "unit/Common/fixtures/ListingsFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace Faultkeeper;
using namespace Fixtures;

class ErrorDatabaseListingsLimitsTest : public ListingsTest
{
};

// ---- Cycles

TEST_F(ErrorDatabaseListingsLimitsTest, TheListingGoesNoDeeperWhereAnErrorWouldContainItself)
{
    Add(kTop, {Set({kA})});
    Add(kA, {Set({kB})});
    Add(kB, {Set({kA, kC})});
    Add(kC);
    std::istringstream lines(Hierarchy());
    std::vector<std::string> names; // positions within a cycle are nobody's business
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find("  (") != std::string::npos)
            names.push_back(line.substr(0, line.find("  (")));
    }
    EXPECT_EQ(names, (std::vector<std::string>{kTop, "---" + kA, "------" + kB, "---------" + kA,
                                               "---------" + kC}));
}

TEST_F(ErrorDatabaseListingsLimitsTest, TheErrorThatIsAskedForIsNotEnteredAgain)
{
    Add(kA, {Set({kB})});
    Add(kB, {Set({kA})});
    const std::string listing = HierarchyBelow(kA, "");
    EXPECT_EQ(std::count(listing.begin(), listing.end(), '\n'), 4); // two headers, two triggers
    EXPECT_NE(listing.find("---" + kA), std::string::npos) << listing;
    EXPECT_EQ(Hierarchy(true), ""); // a cycle has no top
}

// ---- Texts and line ends

TEST_F(ErrorDatabaseListingsLimitsTest, AVeryLongProblemTextIsShownWhole)
{
    const std::string text(100000, 'x');
    Add(kTop, {Set({kA})}, text);
    Add(kA, {}, text + "y");
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (2) [" + text +
                               "] visible\n"
                               "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                               "---Positioning:GPS:Data:3  (1) [" +
                               text + "y]\n\n");
}

TEST_F(ErrorDatabaseListingsLimitsTest, PercentSignsAndLineFeedsOfATextAreShownAsTheyAre)
{
    Add(kTop, {Set({kA})}, "100 %d %s%n");
    Add(kA, {}, "one\ntwo");
    EXPECT_EQ(Hierarchy(), "GPS:None:Power:4  (2) [100 %d %s%n] visible\n"
                           "---Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
                           "---Positioning:GPS:Data:3  (1) [one\ntwo]\n\n");
}

/// Takes what is written to std::cout and counts how often it is flushed.
class CFlushCounter : public std::stringbuf
{
public:
    CFlushCounter() : m_before(std::cout.rdbuf(this)) {}
    ~CFlushCounter() override { std::cout.rdbuf(m_before); }
    CFlushCounter(const CFlushCounter&) = delete;
    CFlushCounter& operator=(const CFlushCounter&) = delete;

    int Flushes() const { return m_flushes; }

private:
    int sync() override
    {
        ++m_flushes;
        return std::stringbuf::sync();
    }

    std::streambuf* m_before;
    int m_flushes = 0;
};

TEST_F(ErrorDatabaseListingsLimitsTest, EveryLineIsFlushedToStandardOutput)
{
    Add(kTop, {Set({kA})});
    Add(kA);
    Database();
    CFlushCounter output;
    m_database->PrintTree();
    EXPECT_EQ(output.Flushes(), 8);
    m_database->PrintHierarchy(false);
    EXPECT_EQ(output.Flushes(), 8 + 4);
    const std::string text = output.str();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 12);
}

} // namespace
