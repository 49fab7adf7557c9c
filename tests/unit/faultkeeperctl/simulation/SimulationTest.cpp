#include "faultkeeperctl/simulation/SimulationText.h"

#include "support/CapturedOutput.h"
#include "support/ConfigurationBuilder.h"
#include "support/SharedTable.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <random>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
class SimulationTest : public Support::SharedTableTest
{
protected:
    SimulationTest()
    {
        Support::CConfigurationBuilder()
            .Leaf("Positioning:GPS:Communications:9")
            .Leaf("Positioning:Ublox:No Data:2")
            .Parent("Positioning:GPS:No Data:2",
                    {"Positioning:GPS:Communications:9", "Positioning:Ublox:No Data:2"}, 2)
            .Parent("System:Position:No Data:2", {"Positioning:GPS:No Data:2"})
            .WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    std::unique_ptr<CErrorDatabase> m_database;
};

/// "+ name <- cause (why)", one a line.
std::string Shown(const SSimulatedStep& step)
{
    std::string text;
    for (const SSimulatedChange& change : step.changes)
        text += (change.raised ? "+ " : "- ") + ErrorName(change.id.first, change.id.second) +
                (change.caused
                     ? " <- " + ErrorName(change.cause.first, change.cause.second) + " (" + change.why + ")"
                     : "") +
                "\n";
    for (const SSimulatedRest& rest : step.rests)
        text += "= " + ErrorName(rest.id.first, rest.id.second) + " (" + rest.why + ")\n";
    return text;
}
} // namespace

TEST_F(SimulationTest, TellsWhatFollowedAndWhatDidNot)
{
    CSimulation simulation(*m_database, m_directory.Prefix());
    EXPECT_EQ(Shown(simulation.Play({1, true, {0x40C09, 9}})),
              "+ Positioning:GPS:Communications:9\n"
              "= Positioning:GPS:No Data:2 (set 1 has 1 of 2 active and needs 2)\n");
    EXPECT_EQ(Shown(simulation.Play({2, true, {0x4281B, 2}})),
              "+ Positioning:Ublox:No Data:2\n"
              "+ Positioning:GPS:No Data:2 <- Positioning:Ublox:No Data:2 (set 1 has 2 of 2 active and needs "
              "2)\n"
              "+ System:Position:No Data:2 <- Positioning:GPS:No Data:2 (set 1 has 1 of 1 active and needs "
              "1)\n");
    EXPECT_EQ(Shown(simulation.Play({3, true, {0x4281B, 2}})), "");
    EXPECT_EQ(Shown(simulation.Play({4, false, {0x40C09, 9}})),
              "- Positioning:GPS:Communications:9\n"
              "- Positioning:GPS:No Data:2 <- Positioning:GPS:Communications:9 (set 1 has 1 of 2 active and "
              "needs 2)\n"
              "- System:Position:No Data:2 <- Positioning:GPS:No Data:2 (set 1 has 0 of 1 active and needs "
              "1)\n");
}

TEST_F(SimulationTest, GivesTreesWithCountersAndKeysAndWithoutTimes)
{
    CSimulation simulation(*m_database, m_directory.Prefix());
    for (int i = 0; i < 3; ++i)
    {
        simulation.Play({1, true, {0x40C09, 9}});
        simulation.Play({1, false, {0x40C09, 9}});
    }
    const SSimulatedStep step = simulation.Play({1, true, {0x40C09, 9}});
    ASSERT_EQ(step.trees.size(), 1u);
    EXPECT_EQ(step.trees[0].counter1, 4u);
    EXPECT_EQ(step.trees[0].stateKey, "0000");
    EXPECT_EQ(step.trees[0].raisedTime, 0);
    EXPECT_EQ(step.trees[0].clearedTime, 0);
}

TEST_F(SimulationTest, LeavesNothingBehindAndTouchesNoTable)
{
    {
        CSimulation simulation(*m_database, m_directory.Prefix());
        simulation.Play({1, true, {0x40C09, 9}});
    }
    EXPECT_EQ(m_directory.Table(), nullptr);
    EXPECT_EQ(m_directory.Semaphore(), -1);
    EXPECT_EQ(std::filesystem::current_path(), m_directory.Path());
}

TEST_F(SimulationTest, ComesOutTheSameEachTime)
{
    const auto played = [this]
    {
        CErrorDatabase database(m_directory.Prefix());
        CSimulation simulation(database, m_directory.Prefix());
        std::mt19937 random(5);
        std::vector<SSimulatedStep> steps;
        for (int i = 0; i < 200; ++i)
        {
            const CError& error = database.GetErrorList()[random() % 4];
            steps.push_back(
                simulation.Play({i, random() % 2 == 0, {error.ProblemCode(), error.ProblemType()}}));
        }
        return SimulationText(steps);
    };
    const std::string first = played();
    EXPECT_EQ(played(), first);
    EXPECT_EQ(first.find("Raised"), std::string::npos);
}

// The table leaves out what it has no room for; that has no position, and all else is the same.
TEST_F(SimulationTest, PlaysErrorsThatTheTableHasNoRoomFor)
{
    Support::CConfigurationBuilder builder;
    for (const char* const module : {"GPS", "CAN"})
    {
        for (const char* const problem : {"Data", "Power", "Speed", "Port Error", "Crash", "Settings",
                                          "Heading", "Framing", "Reverse", "No SIM"})
        {
            for (int type = 0; type < 21; ++type)
                builder.Leaf(std::string(module) + ":GPS:" + problem + ":" + std::to_string(type));
        }
    }
    builder.WriteTo(m_directory.Prefix());
    CErrorDatabase database(m_directory.Prefix());
    Support::WarnedBy(
        [&]
        {
            CSimulation simulation(database, m_directory.Prefix());
            const CError& last = database.GetErrorList().back();
            const SSimulatedStep step = simulation.Play({1, true, {last.ProblemCode(), last.ProblemType()}});
            ASSERT_EQ(step.trees.size(), 1u);
            EXPECT_EQ(step.trees[0].stateKey, "FFC0");
        });
}
