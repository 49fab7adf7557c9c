#include "system/ctl/CtlFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
class Why : public CtlTest
{
protected:
    void RaisePosition()
    {
        Raise(kLink);
        Raise(kReceiver);
        Raise(kPosition);
    }
};

const std::string kPositionReason = "System:Position:No Data:2: active since TIME\n"
                                    "  set 1 has 1 of 1 active and needs 1, which holds it active\n"
                                    "    Positioning:GPS:No Data:2: active since TIME\n"
                                    "      set 1 has 1 of 2 active and needs 1, which holds it active\n"
                                    "        Positioning:GPS:Communications:9: active since TIME; reported\n";
} // namespace

TEST_F(Why, AnActiveErrorIsActiveDownToWhatWasReported)
{
    StartOwner();
    RaisePosition();
    const SFinished finished = Ctl({"why", kPosition});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(WithoutTimes(finished.output), kPositionReason);
    EXPECT_EQ(Ctl({"why", "0xA211B:2"}).output, finished.output);
}

TEST_F(Why, TheWordsOfAKeyOrANameNeedNoQuotes)
{
    StartOwner();
    RaisePosition();
    const std::string output = Ctl({"why", "GGYGL"}).output;
    EXPECT_NE(output, "");
    EXPECT_EQ(Ctl({"why", "ggy", "gl"}).output, output);
    EXPECT_EQ(Ctl({"why", "Positioning:GPS:No", "Data:2"}).output, Ctl({"why", kReceiver}).output);
    EXPECT_EQ(Ctl({"why", "GGYGL", "GGYGL"}).status, 2);
}

TEST_F(Why, AnotherErrorLacksSomething)
{
    StartOwner();
    Raise(kSound);
    Clear(kSound);
    EXPECT_EQ(Ctl({"why", kReceiver}).output,
              "Positioning:GPS:No Data:2: not active, and never was\n"
              "  set 1 has 0 of 2 active and needs 1: 1 more would raise it\n"
              "    Positioning:GPS:Communications:9: not active, and never was\n"
              "    Positioning:Ublox:No Data:2: not active, and never was\n");
    const SFinished sound = Ctl({"why", kSound});
    EXPECT_EQ(sound.status, 0);
    EXPECT_EQ(WithoutTimes(sound.output),
              "Audio:None:Cannot Open:11: not active; last raised TIME, cleared TIME; it "
              "has no triggers: only a report of it raises it\n");
}

TEST_F(Why, AKeyStandsForAllErrorsOfItsTree)
{
    StartOwner();
    RaisePosition();
    const SFinished finished = Ctl({"why", "00f0"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(WithoutTimes(finished.output), kPositionReason);
    Clear(kLink);
    Clear(kReceiver);
    Clear(kPosition);
    const std::string later = WithoutTimes(Ctl({"why", "00F0"}).output);
    EXPECT_EQ(later,
              "System:Position:No Data:2: not active; last raised TIME, cleared TIME\n"
              "  set 1 has 0 of 1 active and needs 1: 1 more would raise it\n"
              "    Positioning:GPS:No Data:2: not active; last raised TIME, cleared TIME\n"
              "Positioning:GPS:No Data:2: not active; last raised TIME, cleared TIME\n"
              "  set 1 has 0 of 2 active and needs 1: 1 more would raise it\n"
              "    Positioning:GPS:Communications:9: not active; last raised TIME, cleared TIME\n"
              "    Positioning:Ublox:No Data:2: not active, and never was\n"
              "Positioning:GPS:Communications:9: not active; last raised TIME, cleared TIME; it has no "
              "triggers: only a report of it raises it\n");
}

TEST_F(Why, AKeyMayComeByPhone)
{
    StartOwner();
    RaisePosition();
    const std::string phone = Document({"key", "00F0"})["keys"][0]["phoneKey"];
    EXPECT_EQ(WithoutTimes(Ctl({"why", phone}).output), kPositionReason);
    const SFinished misheard =
        Ctl({"why", phone.substr(0, phone.size() - 1) + (phone.back() == 'G' ? "H" : "G")});
    EXPECT_EQ(misheard.status, 2);
    EXPECT_NE(misheard.errors.find("group"), std::string::npos);
}

TEST_F(Why, GivesADocument)
{
    StartOwner();
    RaisePosition();
    const Json document = Document({"why", kPosition});
    EXPECT_EQ(KeysOf(document), "key errors");
    EXPECT_TRUE(document["key"].is_null());
    const Json& error = document["errors"][0];
    EXPECT_EQ(KeysOf(error), "id problemCode problemType active raisedTime raisedSeconds clearedTime "
                             "clearedSeconds above why sets");
    EXPECT_EQ(error["active"], true);
    EXPECT_EQ(KeysOf(error["sets"][0]), "set automatic active of needed satisfied missing why triggers");
    EXPECT_EQ(error["sets"][0]["triggers"][0]["sets"][0]["triggers"][0]["why"], "reported");
    EXPECT_EQ(Document({"why", "00F0"})["key"], "00F0");
}

TEST_F(Why, TellsWhatCannotBeExplained)
{
    EXPECT_EQ(Ctl({"why", kPosition}).status, 3);
    StartOwner();
    const SFinished unknown = Ctl({"why", "Audio:None:Cannot Open:12"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.errors,
              "faultkeeperctl: the configuration defines no error \"Audio:None:Cannot Open:12\"; the "
              "nearest is \"Audio:None:Cannot Open:11\"\n");
    const SFinished slip = Ctl({"why", "Audio:None:Canot Open:11"});
    EXPECT_EQ(slip.status, 2);
    EXPECT_NE(slip.errors.find("did you mean \"Audio:None:Cannot Open:11\"?"), std::string::npos);
    const SFinished nothing = Ctl({"why", "Position"});
    EXPECT_EQ(nothing.status, 2);
    EXPECT_EQ(nothing.errors,
              "faultkeeperctl: \"Position\" is neither an error, such as \"Positioning:GPS:No "
              "Data:2\", nor a state key\n");
    EXPECT_EQ(Ctl({"why", "FF"}).status, 2);
    const SFinished key = Ctl({"why", "FFC0"});
    EXPECT_EQ(key.status, 1);
    EXPECT_EQ(key.errors, "faultkeeperctl: the key \"FFC0\" names no error of the owner's table\n");
}
