#include "CtlFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
class Key : public CtlTest
{
};
} // namespace

TEST_F(Key, ShowsTheKeysOfTheActiveFaultsInBothForms)
{
    StartOwner();
    Raise(kSound);
    Raise(kLink);
    Raise(kReceiver);
    Raise(kPosition);
    const SFinished finished = Ctl({"key"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.output, "System:Position:No Data:2\n"
                               "    Title      title of Positioning:GPS:No Data:2\n"
                               "    Key        00F0\n"
                               "    Phone      GGYGL\n"
                               "\n"
                               "Audio:None:Cannot Open:11\n"
                               "    Key        0100\n"
                               "    Phone      GHGGV\n");
}

TEST_F(Key, GivesThemAsADocument)
{
    StartOwner();
    Raise(kPosition);
    const Json keys = Document({"key"})["keys"];
    ASSERT_EQ(keys.size(), 1U);
    EXPECT_EQ(KeysOf(keys[0]), "id problemCode problemType title stateKey phoneKey");
    EXPECT_EQ(keys[0]["id"], kPosition);
    EXPECT_EQ(keys[0]["stateKey"], Document({"list"})["trees"][0]["stateKey"]);
    EXPECT_EQ(Document({"decode", keys[0]["phoneKey"]})["key"], keys[0]["stateKey"]);
}

TEST_F(Key, SaysThatNothingIsActive)
{
    StartOwner();
    EXPECT_EQ(Ctl({"key"}).output, "No active faults.\n");
    EXPECT_EQ(Document({"key"}), Json({{"keys", Json::array()}}));
}

TEST_F(Key, NeedsAnOwner)
{
    EXPECT_EQ(Ctl({"key"}).status, 3);
}

TEST_F(Key, ShowsBothFormsOfAKeyThatIsGivenWithoutOwnerAndConfiguration)
{
    for (const char* const typed : {"00f0", "GGYGL", "ggyg l"})
    {
        const SFinished finished =
            Bare({"--config", "/nonexistent", "--run-dir", "/nonexistent", "key", typed});
        EXPECT_EQ(finished.status, 0);
        EXPECT_EQ(finished.output, "    Key        00F0\n    Phone      GGYGL\n");
    }
    EXPECT_EQ(Document({"key", "00F0"}).dump(), R"({"keys":[{"stateKey":"00F0","phoneKey":"GGYGL"}]})");
    EXPECT_EQ(Bare({"key", "GGYGR"}).errors, "faultkeeperctl: group 1 of the key, \"GGYGR\", is wrong\n");
}
