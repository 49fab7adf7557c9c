#include "faultkeeperctl/simulation/Script.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

#include <memory>

using namespace Faultkeeper;
using namespace Faultkeeper::Apps;

namespace
{
class ScriptTest : public testing::Test
{
protected:
    ScriptTest()
    {
        Support::CConfigurationBuilder()
            .Leaf("Positioning:GPS:No Data:2")
            .Leaf("Audio:None:Cannot Open:11")
            .WriteTo(m_directory.Prefix());
        m_database = std::make_unique<CErrorDatabase>(m_directory.Prefix());
    }

    /// Steps, then mistakes, one a line.
    std::string Read(const std::string& text) const
    {
        const SScript script = ParseScript(text, *m_database);
        std::string shown;
        for (const SScriptStep& step : script.steps)
            shown += std::to_string(step.line) + (step.raise ? " + " : " - ") +
                     ErrorName(step.id.first, step.id.second) + "\n";
        for (const SScriptMistake& mistake : script.mistakes)
            shown += std::to_string(mistake.line) + ":" + std::to_string(mistake.column) + ": " +
                     mistake.text + "\n";
        return shown;
    }

    Support::CFreshDirectory m_directory;
    std::unique_ptr<CErrorDatabase> m_database;
};
} // namespace

TEST_F(ScriptTest, HasARequestALine)
{
    EXPECT_EQ(Read("raise Positioning:GPS:No Data:2\nclear 0x40C1B:2\n"),
              "1 + Positioning:GPS:No Data:2\n2 - Positioning:GPS:No Data:2\n");
}

TEST_F(ScriptTest, MayHaveBlanksAndComments)
{
    EXPECT_EQ(Read("# first\n\n \t\r\n  raise \t Positioning:GPS:No Data:2  # because\r\n#raise x\nclear "
                   "Positioning:GPS:No Data:DataErraticAndIntermittentlyIncorrect"),
              "4 + Positioning:GPS:No Data:2\n6 - Positioning:GPS:No Data:2\n");
    EXPECT_EQ(Read(""), "");
}

TEST_F(ScriptTest, TellsAllMistakesWithTheNearestRightSpelling)
{
    EXPECT_EQ(Read("rais 0x40C1B:2\n"
                   "raise\n"
                   "raise #x\n"
                   "  clear  Positioning:GPS:No Dato:2\n"
                   "raise Audio:None:Cannot Open:12\n"
                   "Raise Audio:None:Cannot Open:11\n"
                   "wait 10\n"
                   "raise 0x40C1B:2 now\n"),
              "1:1: no request is called \"rais\", the nearest is \"raise\"\n"
              "2:6: \"raise\" needs an error\n"
              "3:6: \"raise\" needs an error\n"
              "4:10: no problem is called \"No Dato\", the nearest is \"No Data\"; did you mean "
              "\"Positioning:GPS:No Data:2\"?\n"
              "5:7: the configuration defines no error \"Audio:None:Cannot Open:12\"; the nearest is "
              "\"Audio:None:Cannot Open:11\"\n"
              "6:1: no request is called \"Raise\", the nearest is \"raise\"\n"
              "7:1: no request is called \"wait\"; there are \"raise ID\" and \"clear ID\"\n"
              "8:7: \"2 now\" is no failure mode: they are numbered 0 to 21\n");
}

TEST_F(ScriptTest, CountsColumnsInCharacters)
{
    EXPECT_EQ(Read("räise Höhe"), "1:1: no request is called \"räise\", the nearest is \"raise\"\n");
    EXPECT_EQ(Read("raise  Höhe:2").substr(0, 5), "1:8: ");
}
