#include "system/ctl/CtlFixture.h"

#include "support/ConfigurationBuilder.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
constexpr const char* kScript = "# the receiver goes silent, and comes back\n"
                                "raise Positioning:GPS:Communications:9\n"
                                "raise Positioning:GPS:Communications:9\n"
                                "\n"
                                "raise 0x81F06:11   # has nothing to do with it\n"
                                "clear Positioning:GPS:Communications:9\n";

constexpr const char* kPlayed =
    "Step 1, line 2: raise Positioning:GPS:Communications:9\n"
    "  + Positioning:GPS:Communications:9, as told\n"
    "  + Positioning:GPS:No Data:2 follows Positioning:GPS:Communications:9: set 1 has 1 of 2 active and "
    "needs "
    "1\n"
    "  + System:Position:No Data:2 follows Positioning:GPS:No Data:2: set 1 has 1 of 1 active and needs 1\n"
    "\n"
    "1 active fault\n"
    "\n"
    "[1] title of Positioning:GPS:No Data:2                                                          High\n"
    "    Short      short of Positioning:GPS:No Data:2\n"
    "    Problem    problem of System:Position:No Data:2\n"
    "    Solution   solution of System:Position:No Data:2\n"
    "    Counters   1 / 1\n"
    "    Key        00F0\n"
    "    Code       P-100\n"
    "    Error      System:Position:No Data:2 (0xA211B:2)\n"
    "\n"
    "Step 2, line 3: raise Positioning:GPS:Communications:9\n"
    "  = Positioning:GPS:Communications:9 is active already\n"
    "\n"
    "1 active fault\n"
    "\n"
    "[1] title of Positioning:GPS:No Data:2                                                          High\n"
    "    Short      short of Positioning:GPS:No Data:2\n"
    "    Problem    problem of System:Position:No Data:2\n"
    "    Solution   solution of System:Position:No Data:2\n"
    "    Counters   1 / 1\n"
    "    Key        00F0\n"
    "    Code       P-100\n"
    "    Error      System:Position:No Data:2 (0xA211B:2)\n"
    "\n"
    "Step 3, line 5: raise Audio:None:Cannot Open:11\n"
    "  + Audio:None:Cannot Open:11, as told\n"
    "\n"
    "2 active faults\n"
    "\n"
    "[1] title of Positioning:GPS:No Data:2                                                          High\n"
    "    Short      short of Positioning:GPS:No Data:2\n"
    "    Problem    problem of System:Position:No Data:2\n"
    "    Solution   solution of System:Position:No Data:2\n"
    "    Counters   1 / 1\n"
    "    Key        00F0\n"
    "    Code       P-100\n"
    "    Error      System:Position:No Data:2 (0xA211B:2)\n"
    "\n"
    "[2] short of Audio:None:Cannot Open:11                                                           Low\n"
    "    Short      short of Audio:None:Cannot Open:11\n"
    "    Problem    Höhe des Tons: <unbekannt> & \"stumm\"\n"
    "    Solution   solution of Audio:None:Cannot Open:11\n"
    "    Counters   1 / 1\n"
    "    Key        0100\n"
    "    Code       none\n"
    "    Error      Audio:None:Cannot Open:11 (0x81F06:11)\n"
    "    Display    not shown on the screens, beeps\n"
    "\n"
    "Step 4, line 6: clear Positioning:GPS:Communications:9\n"
    "  - Positioning:GPS:Communications:9, as told\n"
    "  - Positioning:GPS:No Data:2 follows Positioning:GPS:Communications:9: set 1 has 0 of 2 active and "
    "needs "
    "1\n"
    "  - System:Position:No Data:2 follows Positioning:GPS:No Data:2: set 1 has 0 of 1 active and needs 1\n"
    "\n"
    "1 active fault\n"
    "\n"
    "[1] short of Audio:None:Cannot Open:11                                                           Low\n"
    "    Short      short of Audio:None:Cannot Open:11\n"
    "    Problem    Höhe des Tons: <unbekannt> & \"stumm\"\n"
    "    Solution   solution of Audio:None:Cannot Open:11\n"
    "    Counters   1 / 1\n"
    "    Key        0100\n"
    "    Code       none\n"
    "    Error      Audio:None:Cannot Open:11 (0x81F06:11)\n"
    "    Display    not shown on the screens, beeps\n";

class Simulate : public CtlTest
{
protected:
    Simulate() { WriteFile(Script(), kScript); }

    std::string Script() const { return m_directory.File("script.txt"); }
    std::string Expected() const { return m_directory.File("expected.txt"); }
};
} // namespace

TEST_F(Simulate, PrintsWhatEachStepDoesAndTheTreesAfterIt)
{
    const SFinished finished = Ctl({"simulate", Script()});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, kPlayed);
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(m_directory.Table(), nullptr); // nor is there one now
}

TEST_F(Simulate, PrintsTheSameWhateverTheTerminalTheTimeAndTheOwner)
{
    StartOwner();
    Raise(kSound);
    const CVariable columns("COLUMNS", "40");
    EXPECT_EQ(Ctl({"simulate", Script()}).output, kPlayed);
    EXPECT_EQ(Document({"list"})["trees"].size(), 1U);
}

TEST_F(Simulate, ReadsAScriptFromStandardInput)
{
    const SFinished finished = Ctl({"simulate", "-"}); // which is empty
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "");
}

TEST_F(Simulate, IsContentIfAllComesOutAsExpected)
{
    WriteFile(Expected(), kPlayed);
    const SFinished finished = Ctl({"simulate", Script(), "--expect", Expected()});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "4 steps played, and all came out as expected\n");
}

TEST_F(Simulate, ShowsWhereItComesOutOtherwise)
{
    std::string expected = kPlayed;
    expected.replace(expected.find("follows Positioning:GPS:No Data:2: set 1 has 1"), 7, "leaves ");
    WriteFile(Expected(), expected);
    const SFinished finished = Ctl({"simulate", Script(), "--expect", Expected()});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output,
              "--- " + Expected() +
                  "\n"
                  "+++ simulation\n"
                  "@@ -1,7 +1,7 @@\n"
                  " Step 1, line 2: raise Positioning:GPS:Communications:9\n"
                  "   + Positioning:GPS:Communications:9, as told\n"
                  "   + Positioning:GPS:No Data:2 follows Positioning:GPS:Communications:9: set 1 has 1 of 2 "
                  "active and needs 1\n"
                  "-  + System:Position:No Data:2 leaves  Positioning:GPS:No Data:2: set 1 has 1 of 1 active "
                  "and needs 1\n"
                  "+  + System:Position:No Data:2 follows Positioning:GPS:No Data:2: set 1 has 1 of 1 active "
                  "and needs 1\n"
                  " \n"
                  " 1 active fault\n"
                  " \n");
    const SFinished json = Ctl({"simulate", Script(), "--expect", Expected(), "--json"});
    EXPECT_EQ(json.status, 1);
    const Json document = Json::parse(json.output);
    EXPECT_EQ(KeysOf(document), "steps expected same difference");
    EXPECT_EQ(document["same"], false);
    EXPECT_EQ(document["difference"][2], "@@ -1,7 +1,7 @@");
}

TEST_F(Simulate, TellsAllMistakesAndPlaysNothing)
{
    WriteFile(Script(),
              "raise Positioning:GPS:Comunications:9\nrise 0x81F06:11\nraise Audio:None:Cannot Open:12\n");
    const SFinished finished = Ctl({"simulate", Script()});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(
        finished.errors,
        Script() +
            ":1:7: error: no problem is called \"Comunications\", the nearest is \"Communications\"; did "
            "you mean \"Positioning:GPS:Communications:9\"?\n" +
            Script() + ":2:1: error: no request is called \"rise\", the nearest is \"raise\"\n" + Script() +
            ":3:7: error: the configuration defines no error \"Audio:None:Cannot Open:12\"; the nearest "
            "is \"Audio:None:Cannot Open:11\"\n"
            "faultkeeperctl: the script has 3 mistakes; nothing was played\n");
}

TEST_F(Simulate, TellsFilesThatCannotBeRead)
{
    const std::string none = m_directory.File("none.txt");
    EXPECT_EQ(Ctl({"simulate", none}).errors,
              "faultkeeperctl: cannot read " + none + ": No such file or directory\n");
    const SFinished expected = Ctl({"simulate", Script(), "--expect", none});
    EXPECT_EQ(expected.status, 1);
    EXPECT_EQ(expected.errors, "faultkeeperctl: cannot read " + none + ": No such file or directory\n");
    EXPECT_EQ(Ctl({"simulate", Script(), "--expect", ""}).status, 2);
    EXPECT_EQ(Ctl({"simulate"}).status, 2);
}

TEST_F(Simulate, GivesADocument)
{
    const Json document = Document({"simulate", Script()});
    EXPECT_EQ(KeysOf(document), "steps");
    ASSERT_EQ(document["steps"].size(), 4U);
    const Json& step = document["steps"][0];
    EXPECT_EQ(KeysOf(step), "id problemCode problemType line request changes unchanged trees");
    EXPECT_EQ(step["id"], kLink);
    EXPECT_EQ(step["line"], 2);
    EXPECT_EQ(step["request"], "raise");
    EXPECT_EQ(KeysOf(step["changes"][1]), "id problemCode problemType raised cause why");
    EXPECT_TRUE(step["changes"][0]["cause"].is_null());
    EXPECT_EQ(step["changes"][1]["cause"]["id"], kLink);
    EXPECT_EQ(step["changes"][1]["why"], "set 1 has 1 of 2 active and needs 1");
    EXPECT_EQ(step["trees"][0]["stateKey"], "00F0");
    EXPECT_EQ(step["trees"][0]["friendlyCode"], "P-100");
    EXPECT_TRUE(step["trees"][0]["raisedTime"].is_null());
    EXPECT_EQ(document["steps"][1]["changes"], Json::array());
}

TEST_F(Simulate, TellsParentsThatDoNotFollow)
{
    CFreshDirectory other;
    CConfigurationBuilder()
        .Leaf(kLink)
        .Leaf(kData)
        .Parent(kReceiver, {kLink, kData}, 2)
        .WriteTo(other.Prefix());
    WriteFile(Script(), "raise " + kLink + "\n");
    const std::string output = Bare({"--config", other.Path(), "simulate", Script()}).output;
    EXPECT_EQ(output.substr(0, output.find("\n\n")),
              "Step 1, line 1: raise Positioning:GPS:Communications:9\n"
              "  + Positioning:GPS:Communications:9, as told\n"
              "  = Positioning:GPS:No Data:2 stays inactive: set 1 has 1 of 2 active and needs 2");
    const Json document =
        Json::parse(Bare({"--config", other.Path(), "simulate", Script(), "--json"}).output);
    EXPECT_EQ(document["steps"][0]["unchanged"][0]["id"], kReceiver);
    EXPECT_EQ(document["steps"][0]["unchanged"][0]["active"], false);
}
