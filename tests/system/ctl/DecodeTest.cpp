#include "CtlFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

using namespace Support;

namespace
{
class Decode : public CtlTest
{
protected:
    bool TemporaryDirectoryIsEmpty() const { return std::filesystem::is_empty(m_temporary.Path()); }

    CFreshDirectory m_temporary;
    CVariable m_temporaryPath{"TMPDIR", m_temporary.Path()};
};

// What the system's lists of segments and semaphore sets tell: the list and the number of each.
std::set<std::string> IpcObjects()
{
    std::set<std::string> objects;
    for (const char* const path : {"/proc/sysvipc/shm", "/proc/sysvipc/sem"})
    {
        std::ifstream file(path);
        std::string line;
        std::getline(file, line); // the headline
        for (std::string key, number; file >> key >> number && std::getline(file, line);)
            objects.insert(std::string(path) + " " + number);
    }
    return objects;
}

const char* const kLines = "+-System:Position:No Data:2\n"
                           "+---Positioning:GPS:No Data:2\n"
                           "+-----Positioning:GPS:Communications:9\n";
} // namespace

// Position 3; the position's one trigger; the receiver's two, of which the first; the rest is padding:
// 0000000011 1 10
TEST_F(Decode, TurnsAKeyBackIntoTheErrorsOfItsTreeAlsoBelowShallowLinks)
{
    const SFinished finished = Ctl({"decode", "00F0"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.output, "Key 00F0\n\n" + std::string(kLines) +
                                   "\n"
                                   "    Title      title of Positioning:GPS:No Data:2\n"
                                   "    Short      short of Positioning:GPS:No Data:2\n"
                                   "    Severity   High\n"
                                   "    Problem    problem of System:Position:No Data:2\n"
                                   "    Solution   solution of Positioning:GPS:Communications:9\n"
                                   "    Codes      System:Position:No Data:2 (0xA211B:2)\n"
                                   "               Positioning:GPS:No Data:2 (0x40C1B:2)\n"
                                   "               Positioning:GPS:Communications:9 (0x40C09:9)\n"
                                   "    Positions  the order of the configuration; there is no owner\n");
}

TEST_F(Decode, GivesTheSameAsADocument)
{
    const Json document = Document({"decode", "00F0"});
    EXPECT_EQ(KeysOf(document), "key positions lines errors title shortTitle severity problems solutions");
    EXPECT_EQ(document["key"], "00F0");
    EXPECT_EQ(document["positions"], "configuration");
    EXPECT_EQ(document["lines"].size(), 3U);
    EXPECT_EQ(document["errors"][2].dump(),
              R"({"id":"Positioning:GPS:Communications:9","problemCode":265225,"problemType":9})");
    EXPECT_EQ(document["solutions"], Json({"solution of " + kLink}));
}

TEST_F(Decode, LeavesNothingBehindWithoutAnOwner)
{
    EXPECT_EQ(Ctl({"decode", "00F0"}).status, 0);
    EXPECT_EQ(Ctl({"decode", "FFC0"}).status, 1);
    EXPECT_EQ(Ctl({"decode", "03"}).status, 2);
    EXPECT_EQ(Ctl({"decode", "00G0"}).status, 2);
    EXPECT_TRUE(TemporaryDirectoryIsEmpty());
    EXPECT_FALSE(m_directory.Table() != nullptr);
    EXPECT_EQ(m_directory.Semaphore(), -1);
}

TEST_F(Decode, LeavesNoSharedMemoryAndNoLockWithoutAnOwner)
{
    const std::set<std::string> before = IpcObjects();
    ASSERT_EQ(Ctl({"decode", "00F0"}).status, 0);
    std::set<std::string> added;
    for (const std::string& object : IpcObjects())
    {
        if (before.count(object) == 0)
            added.insert(object);
    }
    // tests running beside this one make tables as well, but theirs go
    EXPECT_TRUE(WaitUntil(
        [&added]
        {
            const std::set<std::string> now = IpcObjects();
            return std::none_of(added.begin(), added.end(),
                                [&now](const std::string& object) { return now.count(object) != 0; });
        }));
}

TEST_F(Decode, UsesThePositionsOfTheOwnersTable)
{
    StartOwner();
    const Json document = Document({"decode", "00F0"});
    EXPECT_EQ(document["positions"], "owner");
    EXPECT_EQ(document["lines"].size(), 3U);
    EXPECT_TRUE(Owner().FaultkeeperReady());
}

TEST_F(Decode, SaysThatThePositionsAreThoseOfTheOwnersTable)
{
    StartOwner();
    const SFinished finished = Ctl({"decode", "00F0"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_NE(finished.output.find("\n    Positions  those of the owner's table\n"), std::string::npos);
}

TEST_F(Decode, TakesAKeyFromTheList)
{
    StartOwner();
    Raise(kData);
    Raise(kReceiver);
    Raise(kPosition);
    const std::string key = Document({"list"})["trees"][0]["stateKey"];
    const Json document = Document({"decode", key});
    ASSERT_EQ(document["errors"].size(), 3U);
    EXPECT_EQ(document["errors"][0]["id"], kPosition);
    EXPECT_EQ(document["errors"][1]["id"], kReceiver);
    EXPECT_EQ(document["errors"][2]["id"], kData);
}

TEST_F(Decode, IgnoresATableThatHasNoOwner)
{
    CChildProcess owner(
        [this]
        {
            StartOwner();
            return 0;
        });
    ASSERT_EQ(owner.Wait(), 0);
    EXPECT_EQ(Document({"decode", "00F0"})["positions"], "configuration");
}

TEST_F(Decode, ReadsSmallLettersAsCapitals)
{
    const SFinished finished = Ctl({"decode", "00f0"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_NE(finished.output.find(kLines), std::string::npos);
}

TEST_F(Decode, TellsAKeyThatNamesNoError)
{
    const SFinished finished = Ctl({"decode", "FFC0"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors, "faultkeeperctl: the key \"FFC0\" names no error of the configuration in " +
                                   Configuration() + "/\n");
}

TEST_F(Decode, TellsAKeyThatIsTooShort)
{
    EXPECT_EQ(Ctl({"decode", ""}).status, 2);
    const SFinished finished = Ctl({"decode", "03"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(
        finished.errors,
        "faultkeeperctl: the key \"03\" is too short: at least 10 bits, that is 3 digits, name an error\n");
}

TEST_F(Decode, TellsAKeyThatIsNone)
{
    const SFinished finished = Ctl({"decode", "00G0"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.errors,
              "faultkeeperctl: \"00G0\" is no state key: it holds other characters than 0-9 and A-F\n");
}

TEST_F(Decode, TakesTheFormForThePhoneInOneWordOrSeveral)
{
    const std::string expected = Ctl({"decode", "00F0"}).output;
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"decode", "GGYGL"}, {"decode", "ggyg-l"}, {"decode", "G", "gyg", "L"}, {"decode", "00 f0"}})
        EXPECT_EQ(Ctl(arguments).output, expected);
    EXPECT_EQ(Document({"decode", "GGYGL"})["key"], "00F0");
}

TEST_F(Decode, TellsWhichGroupIsWrong)
{
    const SFinished finished = Ctl({"decode", "GGYGT SHYZQ"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors, "faultkeeperctl: group 2 of the key, \"SHYZQ\", is wrong\n");
    EXPECT_EQ(Json::parse(Ctl({"--json", "decode", "SHZZQ", "GGYGT"}).output)["error"],
              "groups 1 and 2 of the key are wrong, as if they had changed places");
}

TEST_F(Decode, GoesOnInTheUsualPlaceIfTheTemporaryDirectoryIsNotThere)
{
    const CVariable nowhere("TMPDIR", m_temporary.File("none"));
    EXPECT_EQ(Ctl({"decode", "00F0"}).status, 0);
}
