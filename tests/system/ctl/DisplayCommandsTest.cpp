#include "CtlFixture.h"

#include "support/ConfigurationBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Support;

namespace
{
class DisplayCommands : public CtlTest
{
protected:
    void RaisePosition()
    {
        Raise(kLink);
        Raise(kReceiver);
        Raise(kPosition);
    }
};

constexpr const char* kTreeKeys = "id problemCode problemType title shortTitle severity problems solutions "
                                  "raisedTime raisedSeconds clearedTime "
                                  "clearedSeconds counter1 counter2 stateKey friendlyCode visible fullScreen "
                                  "forceShutdown includeServiceNumber "
                                  "shouldBeep shouldBeepIfGuiding";
} // namespace

TEST_F(DisplayCommands, ListSaysSoIfNothingIsActive)
{
    StartOwner();
    const SFinished list = Ctl({"list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.output, "No active faults.\n");
    EXPECT_EQ(list.errors, "");
    EXPECT_EQ(Document({"list"}).dump(), R"({"state":"ready","trees":[],"unknown":[]})");
}

TEST_F(DisplayCommands, ListShowsTheTreesWithKeyCodeAndTimes)
{
    StartOwner();
    RaisePosition();
    Raise(kSound);
    Clear(kSound);
    Raise(kSound);
    const SFinished list = Ctl({"list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(WithoutTimes(list.output), "2 active faults\n"
                                         "\n"
                                         "[1] title of Positioning:GPS:No Data:2                             "
                                         "                             High\n"
                                         "    Short      short of Positioning:GPS:No Data:2\n"
                                         "    Problem    problem of System:Position:No Data:2\n"
                                         "    Solution   solution of System:Position:No Data:2\n"
                                         "    Raised     TIME\n"
                                         "    Cleared    never\n"
                                         "    Counters   1 / 1\n"
                                         "    Key        00F0\n"
                                         "    Code       P-100\n"
                                         "    Error      System:Position:No Data:2 (0xA211B:2)\n"
                                         "\n"
                                         "[2] short of Audio:None:Cannot Open:11                             "
                                         "                              Low\n"
                                         "    Short      short of Audio:None:Cannot Open:11\n"
                                         "    Problem    Höhe des Tons: <unbekannt> & \"stumm\"\n"
                                         "    Solution   solution of Audio:None:Cannot Open:11\n"
                                         "    Raised     TIME\n"
                                         "    Cleared    TIME\n"
                                         "    Counters   2 / 2\n"
                                         "    Key        0100\n"
                                         "    Code       none\n"
                                         "    Error      Audio:None:Cannot Open:11 (0x81F06:11)\n"
                                         "    Display    not shown on the screens, beeps\n");
    EXPECT_EQ(list.errors, "");
}

TEST_F(DisplayCommands, ListGivesTheSameAsADocument)
{
    StartOwner();
    RaisePosition();
    const Json document = Document({"list"});
    ASSERT_EQ(document["trees"].size(), 1U);
    const Json& tree = document["trees"][0];
    EXPECT_EQ(KeysOf(tree), kTreeKeys);
    EXPECT_EQ(tree["id"], kPosition);
    EXPECT_EQ(tree["problemCode"], 0xA211B);
    EXPECT_EQ(tree["severity"], "High");
    EXPECT_EQ(tree["problems"], Json({"problem of " + kPosition}));
    EXPECT_EQ(tree["stateKey"], "00F0");
    EXPECT_EQ(tree["friendlyCode"], "P-100");
    EXPECT_EQ(tree["visible"], true);
    EXPECT_TRUE(tree["raisedSeconds"].is_number_integer());
    EXPECT_EQ(WithoutTimes(tree["raisedTime"]), "TIME");
    EXPECT_TRUE(tree["clearedTime"].is_null());
    EXPECT_TRUE(tree["clearedSeconds"].is_null());
}

TEST_F(DisplayCommands, ListTellsRaisedErrorsThatTheConfigurationDoesNotDefine)
{
    StartOwner();
    Raise(kSound);
    const CFreshDirectory other;
    CConfigurationBuilder().Leaf(kLink).WriteTo(other.Prefix());
    const std::string message =
        "faultkeeperctl: Audio:None:Cannot Open:11 is raised, but this configuration does not define it\n";
    const SFinished list = Bare({"--run-dir", m_directory.Path(), "--config", other.Path(), "list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.output, "No active faults.\n");
    EXPECT_EQ(list.errors, message);
    const SFinished json =
        Bare({"--run-dir", m_directory.Path(), "--config", other.Path(), "list", "--json"});
    EXPECT_EQ(Json::parse(json.output)["unknown"], Json({kSound}));
}

TEST_F(DisplayCommands, ListGoesOnWithoutCodesIfThePatternsAreBroken)
{
    StartOwner();
    RaisePosition();
    WriteFile(Configuration() + "/ErrorPatterns.xml", "<ErrorPatterns>");
    const SFinished list = Ctl({"list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_NE(list.output.find("    Code       none\n"), std::string::npos);
    EXPECT_NE(list.errors.find("/ErrorPatterns.xml:1:"), std::string::npos);
    EXPECT_NE(list.errors.find("; no friendly codes are shown\n"), std::string::npos);
}

TEST_F(DisplayCommands, ActivePrintsEachErrorBelowTheOneItRaised)
{
    StartOwner();
    RaisePosition();
    Raise(kSound);
    const SFinished active = Ctl({"active"});
    EXPECT_EQ(active.status, 0);
    EXPECT_EQ(active.output, "Active top level errors\n"
                             "+System:Position:No Data:2\n"
                             "  +Positioning:GPS:No Data:2\n"
                             "    +Positioning:GPS:Communications:9\n"
                             "+Audio:None:Cannot Open:11\n");
}

TEST_F(DisplayCommands, ActiveGivesTheSameAsADocument)
{
    StartOwner();
    RaisePosition();
    EXPECT_EQ(
        Document({"active"}).dump(),
        R"({"errors":[{"id":"System:Position:No Data:2","problemCode":663835,"problemType":2,"triggers":[)"
        R"({"id":"Positioning:GPS:No Data:2","problemCode":265243,"problemType":2,"triggers":[)"
        R"({"id":"Positioning:GPS:Communications:9","problemCode":265225,"problemType":9,"triggers":[]}]}]}]})");
}

TEST_F(DisplayCommands, HistoryShowsTheNewestFirstWithTexts)
{
    StartOwner();
    RaisePosition();
    Raise(kSound);
    Clear(kSound);
    const SFinished history = Ctl({"history"});
    EXPECT_EQ(history.status, 0);
    EXPECT_EQ(WithoutTimes(history.output),
              "Last raised                State    Count  Error and problem\n"
              "TIME  cleared  1      Audio:None:Cannot Open:11\n"
              "                                           Höhe des Tons: <unbekannt> & \"stumm\"\n"
              "                                           last cleared TIME\n"
              "TIME  raised   1      System:Position:No Data:2\n"
              "                                           problem of System:Position:No Data:2\n"
              "TIME  raised   1      Positioning:GPS:No Data:2\n"
              "                                           problem of Positioning:GPS:No Data:2\n"
              "TIME  raised   1      Positioning:GPS:Communications:9\n"
              "                                           problem of Positioning:GPS:Communications:9\n");
}

TEST_F(DisplayCommands, HistoryGivesTheSameAsADocument)
{
    StartOwner();
    Raise(kLink);
    Clear(kLink);
    Raise(kLink);
    const Json document = Document({"history"});
    ASSERT_EQ(document["entries"].size(), 1U);
    const Json& entry = document["entries"][0];
    EXPECT_EQ(KeysOf(entry),
              "id problemCode problemType raised title problem solution raisedTime raisedSeconds "
              "clearedTime clearedSeconds counter1 counter2");
    EXPECT_EQ(entry["id"], kLink);
    EXPECT_EQ(entry["raised"], true);
    EXPECT_EQ(entry["problem"], "problem of " + kLink);
    EXPECT_EQ(entry["counter1"], 2);
    EXPECT_EQ(entry["counter2"], 2);
    EXPECT_FALSE(entry["clearedSeconds"].is_null());
}

TEST_F(DisplayCommands, HistorySaysSoIfNothingWasRaised)
{
    StartOwner();
    EXPECT_EQ(Ctl({"history"}).output, "No error has been raised.\n");
    EXPECT_EQ(Document({"history"}).dump(), R"({"entries":[]})");
}

TEST_F(DisplayCommands, StatusCountsRecordsAndRaisedErrorsWithoutAConfiguration)
{
    StartOwner();
    Raise(kLink);
    Raise(kSound);
    Clear(kSound);
    char key[32];
    std::snprintf(key, sizeof key, "0x%08x", static_cast<unsigned>(m_directory.Key()));
    const SFinished status = Bare({"--run-dir", m_directory.Path(), "status"});
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(WithoutTimes(status.output), "    Run dir    " + m_directory.Path() +
                                               "\n"
                                               "    Key        " +
                                               key +
                                               "\n"
                                               "    Owner      running\n"
                                               "    Ready      yes\n"
                                               "    Records    5\n"
                                               "    Raised     1\n"
                                               "    Last raise TIME\n"
                                               "    Last clear TIME\n");
    EXPECT_EQ(status.errors, "");
}

TEST_F(DisplayCommands, StatusGivesTheSameAsADocument)
{
    StartOwner();
    Raise(kLink);
    const Json document = Document({"status"});
    EXPECT_EQ(KeysOf(document), "runDirectory key state owner ready message records raised lastRaiseTime "
                                "lastRaiseSeconds lastClearTime lastClearSeconds");
    EXPECT_EQ(document["runDirectory"], m_directory.Path());
    EXPECT_EQ(document["state"], "ready");
    EXPECT_EQ(document["owner"], true);
    EXPECT_EQ(document["ready"], true);
    EXPECT_EQ(document["records"], 5);
    EXPECT_EQ(document["raised"], 1);
    EXPECT_TRUE(document["lastRaiseSeconds"].is_number_integer());
    EXPECT_TRUE(document["lastClearTime"].is_null());
}
