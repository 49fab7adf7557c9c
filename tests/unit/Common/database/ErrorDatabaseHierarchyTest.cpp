#include <Faultkeeper/ErrorDatabase.h>

#include "support/CapturedOutput.h"
#include "unit/Common/fixtures/Configurations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace Faultkeeper;
using Fixtures::Find;
using Fixtures::Lines;
using Support::STestError;

/// Errors Positioning:GPS:<problem>:<mode>; short names keep the hierarchies readable.
std::string Name(const std::string& problem, int mode = 2)
{
    return "Positioning:GPS:" + problem + ":" + std::to_string(mode);
}

const std::string kA = Name("Data");
const std::string kB = Name("Heading");
const std::string kC = Name("Speed");
const std::string kTop = Name("Power");
const std::string kLeaf = Name("Voltage");

class ErrorDatabaseHierarchyTest : public testing::Test
{
protected:
    /// Adds an error with one set for each list of triggers.
    void Add(const std::string& name, const std::vector<Lines>& sets = {})
    {
        STestError error;
        error.name = name;
        for (const Lines& triggers : sets)
        {
            error.sets.emplace_back();
            error.sets.back().triggers = triggers;
        }
        m_builder.Add(error);
    }

    void Load()
    {
        m_configuration = std::make_unique<Fixtures::CConfiguration>(m_builder);
        m_warned = Support::WarnedBy(
            [this] { m_database = std::make_unique<CErrorDatabase>(m_configuration->Path()); });
    }

    int Position(const std::string& name) const { return Find(*m_database, name)->Position(); }

    /// Which of the names does the warning hold?
    Lines Warned(const Lines& names) const
    {
        Lines result;
        std::copy_if(names.begin(), names.end(), std::back_inserter(result),
                     [this](const std::string& name) { return m_warned.find(name) != std::string::npos; });
        return result;
    }

    Support::CConfigurationBuilder m_builder;
    std::unique_ptr<Fixtures::CConfiguration> m_configuration;
    std::unique_ptr<CErrorDatabase> m_database;
    std::string m_warned; ///< while loading
};

TEST_F(ErrorDatabaseHierarchyTest, ALeafHasPositionOne)
{
    Add(kA);
    Load();
    EXPECT_EQ(Position(kA), 1);
}

TEST_F(ErrorDatabaseHierarchyTest, AParentCountsItselfAndItsTriggers)
{
    Add(kTop, {{kA, kB, kC}});
    Add(kA);
    Add(kB);
    Add(kC);
    Load();
    EXPECT_EQ(Position(kTop), 4);
}

TEST_F(ErrorDatabaseHierarchyTest, AllSetsAndAllDuplicatesCount)
{
    Add(kTop, {{kA, kB}, {kA}, {kB, kB}});
    Add(kA);
    Add(kB);
    Load();
    EXPECT_EQ(Position(kTop), 6);
}

TEST_F(ErrorDatabaseHierarchyTest, AChainCountsItsLevelsInWhateverOrderTheyAreDefined)
{
    Add(kB, {{kC}});
    Add(kTop, {{kA}});
    Add(kC);
    Add(kA, {{kB}});
    Load();
    EXPECT_EQ(Position(kC), 1);
    EXPECT_EQ(Position(kB), 2);
    EXPECT_EQ(Position(kA), 3);
    EXPECT_EQ(Position(kTop), 4);
}

TEST_F(ErrorDatabaseHierarchyTest, WhatIsBelowTwoErrorsOfADiamondCountsTwice)
{
    Add(kTop, {{kA, kB}});
    Add(kA, {{kLeaf}});
    Add(kB, {{kLeaf}});
    Add(kLeaf);
    Load();
    EXPECT_EQ(Position(kTop), 5);
    EXPECT_EQ(m_warned, "");
}

TEST_F(ErrorDatabaseHierarchyTest, AShortAndALongWayToTheSameLeafBothCount)
{
    Add(kTop, {{kLeaf, kA}});
    Add(kA, {{kB}});
    Add(kB, {{kC}});
    Add(kC, {{kLeaf}});
    Add(kLeaf);
    Load();
    EXPECT_EQ(Position(kA), 4);
    EXPECT_EQ(Position(kTop), 6);
}

// ---- Sets without triggers

TEST_F(ErrorDatabaseHierarchyTest, AnErrorWithAnEmptySetKeepsPositionOneAndIsNoLeafToStartFrom)
{
    Add(kTop, {{kA}});
    Add(kA, {{}});
    Load();
    EXPECT_EQ(Position(kA), 1);
    EXPECT_EQ(Position(kTop), 1); // nothing leads up to it
}

TEST_F(ErrorDatabaseHierarchyTest, AnErrorWithAnEmptySetCountsWhereALeafLeadsUp)
{
    Add(kTop, {{kA, kLeaf, kB}});
    Add(kA, {{kB}}); // never reached, so it keeps 1
    Add(kB, {{}});
    Add(kLeaf);
    Load();
    EXPECT_EQ(Position(kA), 1);
    EXPECT_EQ(Position(kTop), 4);
}

TEST_F(ErrorDatabaseHierarchyTest, ALinkToItselfOnlyMakesAnErrorThatIsNoLeaf)
{
    Add(kTop, {{kA}});
    Add(kA, {{kA}});
    Load();
    EXPECT_EQ(Position(kTop), 1);
    EXPECT_EQ(m_warned, "Error " + kA + " links to itself\n");
}

// ---- Two definitions of one identifier

TEST_F(ErrorDatabaseHierarchyTest, AnEarlierDefinitionIsCountedUpFromItsOwnTriggers)
{
    Add(kA, {{kB}});
    Add(kB, {{kA}}); // names the later definition, which is a leaf
    Add(kA);
    Load();
    EXPECT_EQ(m_database->GetErrorList()[2].Position(), 1);
    EXPECT_EQ(Position(kB), 2);
    EXPECT_EQ(m_database->GetErrorList()[0].Position(), 3);
    EXPECT_EQ(m_warned, "");
}

TEST_F(ErrorDatabaseHierarchyTest, AnEarlierLeafLeadsNowhere)
{
    Add(kA);
    Add(kTop, {{kA}});
    Add(kA, {{}});
    Load();
    EXPECT_EQ(Position(kTop), 1); // its trigger is the later definition, which is no leaf
}

// ---- Large hierarchies

const Lines kLevels{"Data",    "Heading", "Speed",   "Power",     "Voltage",   "Crash",      "Distance",
                    "Framing", "No SIM",  "No Type", "Reverse",   "Settings",  "Steering",   "Two Bases",
                    "Radius",  "RTK Lag", "Not Set", "Waypoints", "VantorRTK", "Orientation"};

TEST_F(ErrorDatabaseHierarchyTest, ALatticeOfTwentyByTwentyEndsAndStopsAtTheLargestInt)
{
    const int width = 20;
    for (std::size_t level = 0; level < kLevels.size(); ++level)
    {
        std::vector<Lines> sets(level == 0 ? 0 : 1);
        for (int column = 0; level > 0 && column < width; ++column)
            sets[0].push_back(Name(kLevels[level - 1], column));
        for (int column = 0; column < width; ++column)
            Add(Name(kLevels[level], column), sets);
    }
    Load();
    EXPECT_EQ(m_warned, "");
    const std::vector<int> expected{1, 21, 421, 8421, 168421, 3368421, 67368421, 1347368421};
    for (std::size_t level = 0; level < kLevels.size(); ++level)
    {
        for (int column = 0; column < width; ++column)
            EXPECT_EQ(Position(Name(kLevels[level], column)),
                      level < expected.size() ? expected[level] : INT_MAX);
    }
}

TEST_F(ErrorDatabaseHierarchyTest, AChainOfFourHundredErrorsCountsThemAll)
{
    std::string below;
    for (const std::string& level : kLevels)
    {
        for (int mode = 0; mode < 20; ++mode)
        {
            Add(Name(level, mode), below.empty() ? std::vector<Lines>{} : std::vector<Lines>{{below}});
            below = Name(level, mode);
        }
    }
    Load();
    EXPECT_EQ(Position(below), 400);
    EXPECT_EQ(Position(Name("Data", 10)), 11);
}

// ---- Cycles

TEST_F(ErrorDatabaseHierarchyTest, ACycleOfTwoErrorsEndsAndNamesOneOfThem)
{
    Add(kA, {{kB}});
    Add(kB, {{kA, kLeaf}});
    Add(kLeaf);
    Load();
    EXPECT_TRUE(m_database->Loaded());
    EXPECT_EQ(Warned({kA, kB}).size(), 1u) << m_warned;
    EXPECT_EQ(Warned({kLeaf}), Lines{}) << m_warned;
    EXPECT_EQ(std::count(m_warned.begin(), m_warned.end(), '\n'), 1);
    EXPECT_EQ(m_warned.back(), '\n');
}

TEST_F(ErrorDatabaseHierarchyTest, ACycleThatNoLeafLeadsToIsNamedToo)
{
    Add(kA, {{kB}});
    Add(kB, {{kA}});
    Load();
    EXPECT_EQ(Warned({kA, kB}).size(), 1u) << m_warned;
}

TEST_F(ErrorDatabaseHierarchyTest, ACycleIsNamedByItsLeastIdentifier)
{
    const Lines names = {Name("Data", 3), Name("Data", 4), Name("Data", 2)};
    Add(names[0], {{names[1]}});
    Add(names[1], {{names[2]}});
    Add(names[2], {{names[0]}});
    Load();
    EXPECT_EQ(Warned(names), Lines{Name("Data", 2)}) << m_warned;
}

TEST_F(ErrorDatabaseHierarchyTest, AnErrorAboveOrBelowACycleIsNotNamed)
{
    Add(kTop, {{kA}});
    Add(kA, {{kB}});
    Add(kB, {{kC}});
    Add(kC, {{kA, kLeaf, Name("Crash")}});
    Add(kLeaf, {{Name("Framing")}});
    Add(Name("Framing"));
    Add(Name("Crash"));
    Load();
    EXPECT_EQ(Warned({kA, kB, kC}).size(), 1u) << m_warned;
    EXPECT_EQ(Warned({kTop, kLeaf, Name("Framing"), Name("Crash")}), Lines{}) << m_warned;
}

TEST_F(ErrorDatabaseHierarchyTest, EachOfTwoCyclesIsNamed)
{
    Add(kA, {{kB}});
    Add(kB, {{kA}});
    Add(kC, {{kTop}});
    Add(kTop, {{kC}});
    Load();
    EXPECT_EQ(Warned({kA, kB}).size(), 1u) << m_warned;
    EXPECT_EQ(Warned({kC, kTop}).size(), 1u) << m_warned;
}

TEST_F(ErrorDatabaseHierarchyTest, BothCyclesBelowAnErrorAreNamedAndNotTheError)
{
    Add(kTop, {{kA}, {kC}});
    Add(kA, {{kB}});
    Add(kB, {{kA}});
    Add(kC, {{kLeaf}});
    Add(kLeaf, {{kC}});
    Load();
    EXPECT_EQ(Warned({kA, kB}).size(), 1u) << m_warned;
    EXPECT_EQ(Warned({kC, kLeaf}).size(), 1u) << m_warned;
    EXPECT_EQ(Warned({kTop}), Lines{}) << m_warned;
}

TEST_F(ErrorDatabaseHierarchyTest, BesideACycleEverythingIsCounted)
{
    Add(kA, {{kB}});
    Add(kB, {{kA, kLeaf}});
    Add(kTop, {{kC, kLeaf}});
    Add(kC, {{kLeaf, kLeaf}});
    Add(kLeaf);
    Load();
    EXPECT_EQ(Position(kLeaf), 1);
    EXPECT_EQ(Position(kC), 3);
    EXPECT_EQ(Position(kTop), 5);
}

TEST_F(ErrorDatabaseHierarchyTest, ACycleCanStillBeRaisedClearedAndGrouped)
{
    Add(kA, {{kB}});
    Add(kB, {{kA, kLeaf}});
    Add(kLeaf);
    Load();
    Fixtures::Raise(*m_database, kLeaf);
    EXPECT_TRUE(Find(*m_database, kA)->Active());
    m_database->UpdateErrorTree();
    EXPECT_EQ(m_database->ActiveErrors(false).size(), 1u);
    Fixtures::Clear(*m_database, kA);
    EXPECT_FALSE(Find(*m_database, kA)->Active());
}

} // namespace
