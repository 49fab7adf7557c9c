#include "CtlFixture.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace Support;

namespace
{
class ListingCommands : public CtlTest
{
};
} // namespace

TEST_F(ListingCommands, HierarchyPrintsParentsWithTheirSets)
{
    const SFinished finished = Ctl({"hierarchy"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output,
              "System:Position:No Data:2  (4) [problem of System:Position:No Data:2] visible\n"
              "---Trigger threshold is 1. Linking mode is shallow. Title source is trigger.\n"
              "   Positioning:GPS:No Data:2  (3) [problem of Positioning:GPS:No Data:2]\n"
              "      Trigger threshold is 1. Linking mode is deep. Title source is parent.\n"
              "      Positioning:GPS:Communications:9  (1) [problem of Positioning:GPS:Communications:9]\n"
              "      Positioning:Ublox:No Data:2  (1) [problem of Positioning:Ublox:No Data:2]\n"
              "\n");
}

TEST_F(ListingCommands, HierarchyPrintsLeavesIfAskedTo)
{
    const std::string output = Ctl({"hierarchy", "--all"}).output;
    EXPECT_EQ(output.find(
                  "Audio:None:Cannot Open:11  (1) [Höhe des Tons: <unbekannt> & \"stumm\"] not visible\n\n"),
              0U);
}

TEST_F(ListingCommands, HierarchyGivesADocument)
{
    const Json document = Document({"hierarchy"});
    ASSERT_EQ(document["errors"].size(), 1U);
    const Json& top = document["errors"][0];
    EXPECT_EQ(KeysOf(top), "id problemCode problemType position problem visible triggerSets");
    EXPECT_EQ(top["id"], kPosition);
    EXPECT_EQ(top["position"], 4);
    const Json& set = top["triggerSets"][0];
    EXPECT_EQ(KeysOf(set), "autoTrigger triggersRequired linkingMode titleSource triggers");
    EXPECT_EQ(set["linkingMode"], "shallow");
    EXPECT_EQ(set["titleSource"], "trigger");
    EXPECT_EQ(set["triggers"][0]["triggerSets"][0]["triggers"][1]["id"], kData);
    EXPECT_EQ(Document({"hierarchy", "--all"})["errors"][0]["id"], kSound);
}

TEST_F(ListingCommands, TreePrintsEveryErrorInIdentifierOrder)
{
    const SFinished finished = Ctl({"tree"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "+Positioning\n|--+GPS\n|  ---+Communications\n|     --->9\n"
                               "+Positioning\n|--+GPS\n|  ---+No Data\n|     --->2\n"
                               "+Positioning\n|--+Ublox\n|  ---+No Data\n|     --->2\n"
                               "+Audio\n|--+None\n|  ---+Cannot Open\n|     --->11\n"
                               "+System\n|--+Position\n|  ---+No Data\n|     --->2\n");
}

TEST_F(ListingCommands, TreeGivesADocument)
{
    const Json document = Document({"tree"});
    ASSERT_EQ(document["errors"].size(), 5U);
    EXPECT_EQ(document["errors"][3].dump(),
              R"({"id":"Audio:None:Cannot Open:11","problemCode":532230,"problemType":11,"module":"Audio",)"
              R"("subModule":"None","problem":"Cannot Open","failureMode":"RootCauseUnknown"})");
}

TEST_F(ListingCommands, SymbolsNeedNeitherConfigurationNorOwner)
{
    const SFinished finished = Bare({"--config", "/nonexistent", "--run-dir", "/nonexistent", "symbols"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output.find("MODULE,GPS\nMODULE,CAN\n"), 0U);
    EXPECT_NE(finished.output.find("\nFMI,20,DataCollectionTimeout \n"), std::string::npos);
}

TEST_F(ListingCommands, SymbolsGiveADocument)
{
    const Json document = Document({"symbols"});
    EXPECT_EQ(KeysOf(document), "modules subModules problems failureModes severities");
    EXPECT_EQ(document["modules"].size(), 12U);
    EXPECT_EQ(document["subModules"].size(), 54U);
    EXPECT_EQ(document["problems"].size(), 89U);
    EXPECT_EQ(document["failureModes"].size(), 21U);
    EXPECT_EQ(document["problems"][26].dump(), R"({"name":"No Data","value":27})");
    EXPECT_EQ(document["severities"][3].dump(), R"({"name":"Critical","value":3})");
}

TEST_F(ListingCommands, StringsWritesTheTextsToAFile)
{
    const std::string path = m_directory.File("texts.txt");
    const SFinished finished = Ctl({"strings", path});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "wrote the texts of 5 errors to " + path + "\n");
    const std::string text = ReadFile(path);
    EXPECT_EQ(
        text.find(
            "[Positioning:GPS:Communications:9.problem]\nproblem of Positioning:GPS:Communications:9\n"),
        0U);
    EXPECT_EQ(text.substr(text.rfind('[')),
              "[Audio:None:Cannot Open:11.vtTitle]\nshort of Audio:None:Cannot Open:11\n");
    EXPECT_EQ(Document({"strings", path}).dump(), Json({{"file", path}, {"errors", 5}}).dump());
}

TEST_F(ListingCommands, StringsWritesToStandardOutputAndKeepsNoTemporaryFile)
{
    const CFreshDirectory temporary;
    const CVariable temporaryPath("TMPDIR", temporary.Path());
    const std::string path = m_directory.File("texts.txt");
    ASSERT_EQ(Ctl({"strings", path}).status, 0);
    EXPECT_EQ(Ctl({"strings", "-"}).output, ReadFile(path));
    EXPECT_TRUE(std::filesystem::is_empty(temporary.Path()));
}

TEST_F(ListingCommands, StringsOnStandardOutputAreRefusedAsADocument)
{
    const SFinished finished = Ctl({"--json", "strings", "-"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(Json::parse(finished.output)["status"], 2);
    EXPECT_NE(finished.errors.find("name a file"), std::string::npos);
}

TEST_F(ListingCommands, StringsTellsAFileThatCannotBeWritten)
{
    const SFinished finished = Ctl({"strings", m_directory.File("none/texts.txt")});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors, "faultkeeperctl: cannot write " + m_directory.File("none/texts.txt") +
                                   ": No such file or directory\n");
    EXPECT_EQ(Ctl({"strings", "/dev/full"}).errors,
              "faultkeeperctl: cannot write /dev/full: No space left on device\n");
}
