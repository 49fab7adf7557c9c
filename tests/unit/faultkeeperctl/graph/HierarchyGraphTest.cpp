#include "faultkeeperctl/graph/HierarchyGraph.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

#include <memory>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
class HierarchyGraphTest : public testing::Test
{
protected:
    HierarchyGraphTest()
    {
        Support::STestTriggerSet automatic;
        automatic.triggersNeeded = 2;
        automatic.triggers = {"Positioning:GPS:Communications:9", "Positioning:Ublox:No Data:2"};
        automatic.errorLinking = "shallow";
        Support::STestTriggerSet shown;
        shown.autoTrigger = false;
        shown.triggers = {"Positioning:Ublox:No Data:2"};
        Support::STestError parent;
        parent.name = "Positioning:GPS:No Data:2";
        parent.problem = "Say \"no\" \\ and\nwait";
        parent.sets = {automatic, shown};
        Support::STestError alone;
        alone.name = "Audio:None:Cannot Open:11";
        alone.flags = "";
        Support::CConfigurationBuilder()
            .Leaf("Positioning:GPS:Communications:9")
            .Leaf("Positioning:Ublox:No Data:2")
            .Add(parent)
            .Add(alone)
            .WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    /// Without the lines that are always the same.
    std::string Drawn(const SGraphStyle& style) const
    {
        const std::string text = HierarchyGraph(*m_database, style);
        const std::size_t head = text.find("arrowsize=0.6];\n") + 16;
        EXPECT_EQ(text.substr(0, 21), "digraph hierarchy {\n ");
        EXPECT_EQ(text.substr(text.size() - 2), "}\n");
        return text.substr(head, text.size() - 2 - head);
    }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
};
} // namespace

TEST_F(HierarchyGraphTest, DrawsSetsBetweenParentsAndTriggers)
{
    EXPECT_EQ(
        Drawn({}),
        R"(    "0x40C09:9" [label="Positioning:GPS:Communications:9\nproblem of Positioning:GPS:Communications:9"];
    "0x40C1B:2" [label="Positioning:GPS:No Data:2\nSay \"no\" \\ and\\x0Await"];
    "0x40C1B:2 set 1" [shape=ellipse, label="2 of 2"];
    "0x40C1B:2" -> "0x40C1B:2 set 1" [dir=back];
    "0x40C1B:2 set 1" -> "0x40C09:9" [dir=back, style=dotted];
    "0x40C1B:2 set 1" -> "0x4281B:2" [dir=back, style=dotted];
    "0x40C1B:2 set 2" [shape=ellipse, label="1 of 1, not automatic", style="filled,dashed"];
    "0x40C1B:2" -> "0x40C1B:2 set 2" [dir=back, style=dashed];
    "0x40C1B:2 set 2" -> "0x4281B:2" [dir=back, style=dashed];
    "0x4281B:2" [label="Positioning:Ublox:No Data:2\nproblem of Positioning:Ublox:No Data:2"];
)");
}

TEST_F(HierarchyGraphTest, DrawsErrorsThatStandAloneIfAskedTo)
{
    const std::string text = Drawn({true, false});
    EXPECT_NE(
        text.find("    \"0x81F06:11\" [label=\"Audio:None:Cannot Open:11\\nproblem of Audio:None:Cannot "
                  "Open:11\", fontcolor=\"#666666\"];\n"),
        std::string::npos);
}

TEST_F(HierarchyGraphTest, ColoursWhatIsActive)
{
    m_database->RaiseError(0x4281B, 2, false);
    const std::string text = Drawn({false, true});
    EXPECT_NE(text.find("No Data:2\", fillcolor=\"#f6b26b\", penwidth=2];\n"), std::string::npos);
    EXPECT_NE(text.find("set 1\" [shape=ellipse, label=\"2 of 2\\n1 active\"];\n"), std::string::npos);
    EXPECT_NE(text.find("set 2\" [shape=ellipse, label=\"1 of 1, not automatic\\n1 active\", "
                        "style=\"filled,dashed\", fillcolor=\"#d9d9d9\"];\n"),
              std::string::npos);
    EXPECT_NE(text.find("\"0x40C09:9\" [label=\"Positioning:GPS:Communications:9\\nproblem of "
                        "Positioning:GPS:Communications:9\"];\n"),
              std::string::npos);
}
