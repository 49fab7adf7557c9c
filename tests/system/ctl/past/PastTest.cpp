#include "system/ctl/CtlFixture.h"

#include "faultkeeperd/store/StateStore.h"
#include "store/BootClock.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace Faultkeeper::Apps;
using namespace Support;

namespace
{
constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kMarch = 1772384709; // 2026-03-01T17:05:09Z
const std::string kSession = "0123456789abcdef0123456789abcdef";

/// A store as an owner has left it that ran from 17:05:09 on, a minute after the machine was started.
class Past : public CtlTest
{
protected:
    static constexpr std::pair<int, int> kLinkId{0x40C09, 9};
    static constexpr std::pair<int, int> kReceiverId{0x40C1B, 2};
    static constexpr std::pair<int, int> kPositionId{0xA211B, 2};
    static constexpr std::pair<int, int> kSoundId{0x81F06, 11};

    std::string Store() const { return m_directory.File("faultkeeper.db"); }

    void Add(std::int64_t milliseconds, const std::pair<int, int>& id, bool raised)
    {
        STransition transition;
        transition.time = Core::Time::FromNanoseconds(kMarch * kSecond + milliseconds * 1000000);
        transition.sinceBoot = m_boot + milliseconds * 1000000;
        transition.raised = raised;
        transition.problemCode = id.first;
        transition.problemType = id.second;
        m_batch.transitions.push_back(transition);
    }

    void AddCaused(std::int64_t milliseconds, const std::pair<int, int>& id, bool raised,
                   const std::pair<int, int>& cause)
    {
        Add(milliseconds, id, raised);
        STransition& transition = m_batch.transitions.back();
        transition.caused = true;
        transition.causeCode = cause.first;
        transition.causeType = cause.second;
    }

    void Write(std::size_t journalLimit = 100)
    {
        SStoreSettings settings;
        settings.path = Store();
        settings.journalLimit = journalLimit;
        CStateStore store(settings);
        store.Begin(BootId(), "configuration");
        store.Commit(m_batch);
    }

    // The position is lost for ten seconds, then the sound.
    void WriteTheUsual(std::size_t journalLimit = 100)
    {
        Add(0, kLinkId, true);
        m_batch.transitions.back().session = kSession;
        AddCaused(1, kReceiverId, true, kLinkId);
        AddCaused(2, kPositionId, true, kReceiverId);
        Add(10000, kLinkId, false);
        AddCaused(10001, kReceiverId, false, kLinkId);
        AddCaused(10002, kPositionId, false, kReceiverId);
        Add(20000, kSoundId, true);
        Write(journalLimit);
    }

    SStoreBatch m_batch;
    std::int64_t m_boot = 60 * kSecond;
};

constexpr const char* kLines[] = {
    ("2026-03-01T17:05:09.000+00:00 + Positioning:GPS:Communications:9, reported by "
     "0123456789abcdef0123456789abcdef\n"),
    "2026-03-01T17:05:09.001+00:00 + Positioning:GPS:No Data:2 follows Positioning:GPS:Communications:9\n",
    "2026-03-01T17:05:09.002+00:00 + System:Position:No Data:2 follows Positioning:GPS:No Data:2\n",
    "2026-03-01T17:05:19.000+00:00 - Positioning:GPS:Communications:9, reported\n",
    "2026-03-01T17:05:19.001+00:00 - Positioning:GPS:No Data:2 follows Positioning:GPS:Communications:9\n",
    "2026-03-01T17:05:19.002+00:00 - System:Position:No Data:2 follows Positioning:GPS:No Data:2\n",
    "2026-03-01T17:05:29.000+00:00 + Audio:None:Cannot Open:11, reported\n"};

std::string LinesFrom(std::size_t first)
{
    std::string text;
    for (std::size_t i = first; i < 7; ++i)
        text += kLines[i];
    return text;
}
} // namespace

TEST_F(Past, TheJournalListsWhatHappened)
{
    WriteTheUsual();
    const SFinished finished = Ctl({"journal"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, LinesFrom(0));
    EXPECT_EQ(finished.errors, "");
}

TEST_F(Past, TheJournalCanBeListedFromATimeOn)
{
    WriteTheUsual();
    EXPECT_EQ(Ctl({"journal", "--since", "2026-03-01T17:05:19.001+00:00"}).output, LinesFrom(4));
    EXPECT_EQ(Ctl({"journal", "--since", "2026-03-01T18:05:10+01:00"}).output, LinesFrom(3));
    EXPECT_EQ(Ctl({"journal", "--since", "2026-03-01"}).output, LinesFrom(0));
    EXPECT_EQ(Ctl({"journal", "--since", "1s"}).output, "Nothing was raised or cleared since.\n");
    const SFinished future = Ctl({"journal", "--since", "2200-01-01T00:00Z"});
    EXPECT_EQ(future.status, 2);
    EXPECT_EQ(future.output, "");
    EXPECT_EQ(future.errors, "faultkeeperctl: 2200-01-01T00:00:00.000+00:00 has not come yet\n");
    const SFinished wrong = Ctl({"journal", "--since", "noon"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.errors, "faultkeeperctl: \"noon\" is no time: type one as it is printed, such as "
                            "2026-03-01T17:05:09+01:00 or less of it, or how long ago it was, such as 90s, "
                            "10m, 2h, 1d or 1h30m\n");
}

TEST_F(Past, TheJournalSaysWhereItBegins)
{
    WriteTheUsual(4);
    const SFinished finished = Ctl({"journal"});
    EXPECT_EQ(finished.output, LinesFrom(3));
    EXPECT_EQ(finished.errors,
              "faultkeeperctl: the journal begins at 2026-03-01T17:05:19.000+00:00; what was before "
              "is forgotten\n");
    EXPECT_EQ(Ctl({"journal", "--since", "2026-03-01T17:05:19.001Z"}).errors, "");
    EXPECT_EQ(Ctl({"journal", "--since", "2026-03-01T17:05:19.000Z"}).errors, "") << "as it is printed";
    for (const char* const within : {"2026-03-01T17:05:18.999Z", "2026-03-01", "2026-03", "2026-03-01T17"})
        EXPECT_EQ(Ctl({"journal", "--since", within}).errors, finished.errors)
            << within << " begins before the journal does";
}

TEST_F(Past, TheJournalListsWhatAClockHasSeenThatWasSetBackSince)
{
    Add(0, kLinkId, true);
    Add(0, kSoundId, true);
    m_batch.transitions.back().time = Core::Time(8835955200); // 2250-01-01T00:00:00Z
    Write();
    EXPECT_EQ(Ctl({"journal", "--since", "2250-01-01T00:00:00.000+00:00"}).output,
              "2250-01-01T00:00:00.000+00:00 + Audio:None:Cannot Open:11, reported\n");
    EXPECT_EQ(Ctl({"journal", "--since", "2250-01-01T00:00:01.000+00:00"}).errors,
              "faultkeeperctl: 2250-01-01T00:00:01.000+00:00 has not come yet\n");
}

TEST_F(Past, TheJournalTellsThatTheMachineWasStartedAgain)
{
    Add(0, kSoundId, true);
    m_boot = -5 * kSecond;
    Add(10000, kSoundId, true);
    Write();
    EXPECT_EQ(Ctl({"journal"}).output,
              "2026-03-01T17:05:09.000+00:00 + Audio:None:Cannot Open:11, reported\n"
              "(the machine was started again)\n"
              "2026-03-01T17:05:19.000+00:00 + Audio:None:Cannot Open:11, reported\n");
}

TEST_F(Past, TheJournalTellsWhatTheOwnerDidByItself)
{
    for (const EOwnersReason reason : {eorConfiguration, eorTable})
    {
        Add(0, kSoundId, reason == eorTable);
        m_batch.transitions.back().reason = reason;
    }
    Add(0, kSoundId, false);
    Write();
    EXPECT_EQ(Ctl({"journal"}).output,
              "2026-03-01T17:05:09.000+00:00 - Audio:None:Cannot Open:11, cleared with the configuration\n"
              "2026-03-01T17:05:09.000+00:00 + Audio:None:Cannot Open:11, taken from the table\n"
              "2026-03-01T17:05:09.000+00:00 - Audio:None:Cannot Open:11, reported\n");
    const Json transitions = Document({"journal"})["transitions"];
    EXPECT_EQ(transitions[0]["origin"], "configuration");
    EXPECT_EQ(transitions[1]["origin"], "table");
    EXPECT_EQ(transitions[2]["origin"], "report");
    EXPECT_EQ(transitions[0]["cause"], Json());
}

TEST_F(Past, TheJournalIsADocumentToo)
{
    WriteTheUsual(4);
    const SFinished finished = Ctl({"journal", "--json"});
    const Json document = Json::parse(finished.output);
    EXPECT_EQ(KeysOf(document), "store complete transitions");
    EXPECT_EQ(document["store"], Store());
    EXPECT_EQ(document["complete"], false);
    ASSERT_EQ(document["transitions"].size(), 4U);
    EXPECT_EQ(document["transitions"][1].dump(),
              R"({"id":"Positioning:GPS:No Data:2","problemCode":265243,"problemType":2,"number":5,)"
              R"("raised":false,"changedTime":"2026-03-01T17:05:19.001000000+00:00",)"
              R"("changedSeconds":1772384719,"sinceBootSeconds":70,"origin":"trigger",)"
              R"("cause":{"id":"Positioning:GPS:Communications:9","problemCode":265225,"problemType":9},)"
              R"("session":null})");
}

TEST_F(Past, TheFaultsOfAMomentAreShownAsTrees)
{
    WriteTheUsual();
    const SFinished finished = Ctl({"at", "2026-03-01T17:05:09"}); // all of that second
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(
        finished.output,
        "At 2026-03-01T17:05:09.999+00:00:\n"
        "\n"
        "1 active fault\n"
        "\n"
        "[1] title of Positioning:GPS:No Data:2                                                          "
        "High\n"
        "    Short      short of Positioning:GPS:No Data:2\n"
        "    Problem    problem of System:Position:No Data:2\n"
        "    Solution   solution of System:Position:No Data:2\n"
        "    Key        00F0\n"
        "    Code       P-100\n"
        "    Error      System:Position:No Data:2 (0xA211B:2)\n"
        "\n"
        "Active errors\n"
        "    Positioning:GPS:Communications:9 since 2026-03-01T17:05:09.000+00:00\n"
        "    Positioning:GPS:No Data:2 since 2026-03-01T17:05:09.001+00:00\n"
        "    System:Position:No Data:2 since 2026-03-01T17:05:09.002+00:00\n");
    EXPECT_EQ(Ctl({"at", "2026-03-01T17:05:19.002Z"}).output,
              "At 2026-03-01T17:05:19.002+00:00:\n\nNo active faults.\n");
}

TEST_F(Past, TheFaultsOfAMomentAreADocumentToo)
{
    WriteTheUsual();
    const Json document = Document({"at", "2026-03-01T17:05:12Z"});
    EXPECT_EQ(KeysOf(document), "atTime atSeconds complete notes trees active unknown");
    EXPECT_EQ(document["atTime"], "2026-03-01T17:05:12.999999999+00:00");
    EXPECT_EQ(document["complete"], true);
    EXPECT_EQ(document["trees"][0]["stateKey"], "00F0");
    EXPECT_EQ(document["trees"][0]["raisedSeconds"], kMarch);
    EXPECT_FALSE(document["trees"][0].contains("counter1"));
    EXPECT_EQ(document["active"][2].dump(),
              R"({"id":"System:Position:No Data:2","problemCode":663835,"problemType":2,)"
              R"("raisedTime":"2026-03-01T17:05:09+00:00","raisedSeconds":1772384709,"defined":true})");
}

TEST_F(Past, AMomentThatTheJournalDoesNotReachIsNotGuessed)
{
    WriteTheUsual(4);
    const SFinished finished = Ctl({"at", "2026-03-01T17:05:12Z"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors,
              "faultkeeperctl: the journal begins at 2026-03-01T17:05:19.000+00:00: what was active "
              "before is not known\n");
    const SFinished future = Ctl({"at", "2200-01-01"});
    EXPECT_EQ(future.status, 2);
    EXPECT_EQ(future.errors, "faultkeeperctl: 2200-01-01T00:00:00.000+00:00 has not come yet\n");
}

TEST_F(Past, WhatNobodyCanTellIsNamed)
{
    Add(0, kLinkId, true);
    Add(10000, kSoundId, true);
    Add(11000, kSoundId, false);
    m_boot = -15 * kSecond;
    Add(20000, kSoundId, true);
    SStoredError link;
    link.entry.problemCode = kLinkId.first;
    link.entry.problemType = static_cast<std::int16_t>(kLinkId.second);
    link.entry.raisedTime = Core::Time(kMarch);
    link.raises = 1;
    m_batch.errors = {link}; // it was raised when the machine went down, or when it did so before
    Write(3);
    const SFinished finished = Ctl({"at", "2026-03-01T17:05:19Z"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_NE(finished.output.find("    Audio:None:Cannot Open:11 since 2026-03-01T17:05:19.000+00:00\n"),
              std::string::npos);
    EXPECT_EQ(
        finished.errors,
        "faultkeeperctl: Positioning:GPS:Communications:9 may have been active: the journal does not tell\n");
    const Json document = Json::parse(Ctl({"at", "2026-03-01T17:05:19Z", "--json"}).output);
    EXPECT_EQ(document["complete"], false);
    EXPECT_EQ(document["unknown"][0]["id"], kLink);
}

TEST_F(Past, AStoreElsewhereCanBeNamed)
{
    WriteTheUsual();
    const std::string other = m_directory.File("other.db");
    std::filesystem::rename(Store(), other);
    EXPECT_EQ(Ctl({"journal", "--state", other}).output, LinesFrom(0));
    EXPECT_EQ(Ctl({"at", "2026-03-01T17:05:19.5Z", "--state", other}).status, 0);
    const SFinished none = Ctl({"journal"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.errors, "faultkeeperctl: the state store " + Store() + ": cannot read " + Store() +
                               ": No such file or directory\n");
    EXPECT_EQ(Ctl({"at", "now"}).status, 1);
}

TEST_F(Past, AFileThatIsNoStoreIsRefusedAndLeft)
{
    WriteFile(Store(), std::string(5000, 'x'));
    const SFinished finished = Ctl({"journal"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors, "faultkeeperctl: the state store " + Store() + ": file is not a database\n");
    EXPECT_EQ(ReadFile(Store()), std::string(5000, 'x'));
}
