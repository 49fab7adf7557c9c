#include "faultkeeperctl/strings/Translation.h"

#include "faultkeeperctl/strings/TranslationReport.h"

#include <Faultkeeper/ErrorTree.h>

#include <gtest/gtest.h>

#include <random>
#include <set>

using namespace Faultkeeper::Apps;

namespace
{
const std::string kOne = "GPS:GPS:No Data:2.problem";
const std::string kTwo = "GPS:GPS:No Data:2.solution";

std::vector<STextRecord> Originals()
{
    return {{kOne, "No data", 1}, {kTwo, "Wait\nand see", 3}};
}

std::string Checked(const std::string& content)
{
    return TranslationText("de.txt", CTranslation(Originals(), ParsedTexts(content)));
}

std::string KeyOf(unsigned number)
{
    return "GPS:GPS:No Data:" + std::to_string(number) + ".problem";
}

std::set<std::string> KeysOf(const std::vector<STextFinding>& findings, ETextFinding kind)
{
    std::set<std::string> keys;
    for (const STextFinding& finding : findings)
    {
        if (finding.kind == kind)
            keys.insert(finding.key);
    }
    return keys;
}
} // namespace

TEST(TextFileTest, KeysStandInBracketsAndTextsBelowThem)
{
    const std::vector<STextRecord> records =
        ParsedTexts("[a:b:c:1.problem]\none\ntwo\n \n\n[a:b:c:1.solution]\n\n");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].key, "a:b:c:1.problem");
    EXPECT_EQ(records[0].text, "one\ntwo");
    EXPECT_EQ(records[0].line, 1);
    EXPECT_EQ(records[1].text, "");
    EXPECT_EQ(records[1].line, 6);
}

TEST(TextFileTest, BracketsInTextsAreNoKeys)
{
    for (const char* const line :
         {"[see below]", "[1:2:3]", "[a:b:c:d] or so", "[]", "[[a:b:c:d]]", "a[b:c:d:e]"})
    {
        const std::vector<STextRecord> records =
            ParsedTexts("[a:b:c:1.problem]\n" + std::string(line) + "\n");
        ASSERT_EQ(records.size(), 1U) << line;
        EXPECT_EQ(records[0].text, line);
    }
}

TEST(TextFileTest, LineEndsOfWindowsChangeNothing)
{
    const std::vector<STextRecord> records =
        ParsedTexts("[a:b:c:1.problem]\r\none\r\ntwo\r\n[a:b:c:1.solution]\r\nthree");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].text, "one\ntwo");
    EXPECT_EQ(records[1].text, "three");
}

TEST(TextFileTest, TextInFrontOfTheFirstKeyHasNoKey)
{
    const std::vector<STextRecord> records = ParsedTexts("\nGerman\nby me\n[a:b:c:1.problem]\none\n");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].key, "");
    EXPECT_EQ(records[0].text, "German\nby me");
    EXPECT_EQ(records[0].line, 2);
}

TEST(TextFileTest, AnEmptyFileHasNoTexts)
{
    EXPECT_TRUE(ParsedTexts("").empty());
    EXPECT_TRUE(ParsedTexts("\n\n").empty());
}

TEST(TranslationTest, NothingIsWrongWithAWholeOne)
{
    EXPECT_EQ(Checked(TextFileContent(Originals())), "2 texts, 2 without what they were translated from\n");
    EXPECT_EQ(Checked(TextFileContent(WithOriginals(Originals()))), "2 texts\n");
}

TEST(TranslationTest, AMissingTextIsTold)
{
    const char* const missing = "de.txt:1:1: error: missing: GPS:GPS:No Data:2.solution\n"
                                "    text:  Wait\n"
                                "           and see\n";
    EXPECT_EQ(Checked("[" + kOne + "]\nKeine Daten\n[" + kOne + ".original]\nNo data\n"),
              std::string(missing) + "2 texts, 1 missing\n");
    EXPECT_EQ(Checked("[" + kTwo + "]\n \n[" + kOne + "]\nKeine Daten\n[" + kOne + ".original]\nNo data\n"),
              std::string(missing) + "2 texts, 1 missing\n");
}

TEST(TranslationTest, ATextThatIsLeftOverIsTold)
{
    EXPECT_EQ(Checked(TextFileContent(WithOriginals(Originals())) +
                      "[GPS:GPS:No Data:3.problem]\nFort\n[GPS:GPS:No Data:2.solved]\nx\n"),
              "de.txt:11:1: error: left over: GPS:GPS:No Data:3.problem\n"
              "de.txt:13:1: error: left over: GPS:GPS:No Data:2.solved\n"
              "2 texts, 2 left over\n");
    EXPECT_EQ(Checked(" \t\n\n" + TextFileContent(WithOriginals(Originals()))), "2 texts\n");
    EXPECT_EQ(Checked("deutsch\n" + TextFileContent(WithOriginals(Originals()))),
              "de.txt:1:1: error: text in front of the first key\n2 texts, 1 left over\n");
}

TEST(TranslationTest, ATextWhoseOriginalHasChangedIsToldWithBoth)
{
    EXPECT_EQ(Checked("[" + kOne + "]\nKeine\n[" + kOne + ".original]\nNone\n[" + kTwo + "]\nWarten\n[" +
                      kTwo + ".original]\nWait\nand see\n"),
              "de.txt:1:1: error: changed: GPS:GPS:No Data:2.problem\n"
              "    was:   None\n"
              "    is:    No data\n"
              "2 texts, 1 changed\n");
}

TEST(TranslationTest, AKeyThatIsThereTwiceIsToldIfTheTextsDiffer)
{
    const std::string whole = TextFileContent(WithOriginals(Originals()));
    EXPECT_EQ(Checked(whole + "[" + kOne + "]\nNo data\n"), "2 texts\n");
    EXPECT_EQ(Checked(whole + "[" + kOne + "]\nNichts\n"),
              "de.txt:11:1: error: there twice: GPS:GPS:No Data:2.problem\n2 texts, 1 there twice\n");
}

TEST(TranslationTest, BlankLinesBehindATextAreNoChange)
{
    std::string spaced;
    for (const STextRecord& record : WithOriginals(Originals()))
        spaced += "[" + record.key + "]\n" + record.text + "\n\n  \n";
    EXPECT_EQ(Checked(spaced), "2 texts\n");
    EXPECT_EQ(Checked(spaced + TextFileContent(Originals())), "2 texts\n");
}

TEST(TranslationTest, GivesADocument)
{
    const std::string content = "[" + kOne + "]\nKeine\n[" + kOne + ".original]\nNone\n[a:b:c:d]\n\n";
    EXPECT_EQ(TranslationDocument("de.txt", CTranslation(Originals(), ParsedTexts(content))).dump(),
              R"({"file":"de.txt","texts":2,"missing":[{"key":"GPS:GPS:No Data:2.solution","line":null,)"
              R"("original":"Wait\nand see"}],"leftOver":[{"key":"a:b:c:d","line":5}],"changed":[{"key":)"
              R"("GPS:GPS:No Data:2.problem","line":1,"translatedFrom":"None","original":"No data"}],)"
              R"("twice":[],"incomparable":0})");
}

TEST(TranslationTest, TreesAreShownInItAndWhereItHasNothingInTheOriginal)
{
    Faultkeeper::SErrorTree tree;
    tree.title = "a:b:c:1.shortTitle";
    tree.shortTitle = kOne;
    tree.problems = {kOne, kTwo};
    tree.solutions = {kTwo};
    std::vector<std::string> missing;
    Translate(tree, CTranslation(Originals(), ParsedTexts("[" + kOne + "]\nKeine\n")), missing);
    EXPECT_EQ(tree.title, "");
    EXPECT_EQ(tree.shortTitle, "Keine");
    EXPECT_EQ(tree.problems, std::vector<std::string>({"Keine", "Wait\nand see"}));
    EXPECT_EQ(tree.solutions, std::vector<std::string>({"Wait\nand see"}));
    EXPECT_EQ(missing, std::vector<std::string>({kTwo, kTwo}));
}

/// The model: which keys were taken away, added, and given another text since.
class TranslationModelTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(TranslationModelTest, FindsExactlyWhatWasDoneToIt)
{
    std::mt19937 random(GetParam());
    std::vector<STextRecord> originals;
    std::vector<STextRecord> records;
    std::set<std::string> missing;
    std::set<std::string> leftOver;
    std::set<std::string> changed;
    for (unsigned number = 0; number < 60; ++number)
    {
        const STextRecord original = {KeyOf(number), "text " + std::to_string(random() % 4), 0};
        const auto fate = random() % 6;
        if (fate != 0)
            originals.push_back(original);
        else
            leftOver.insert(original.key);
        if (fate == 1)
            missing.insert(original.key);
        else
            for (const STextRecord& record : WithOriginals({original}))
                records.push_back(record);
        if (fate == 0)
            leftOver.insert(original.key + ".original");
        if (fate == 2)
        {
            originals.back().text += " or so";
            changed.insert(original.key);
        }
    }
    const CTranslation translation(originals, ParsedTexts(TextFileContent(records)));
    EXPECT_EQ(KeysOf(translation.Findings(), etfMissing), missing);
    EXPECT_EQ(KeysOf(translation.Findings(), etfLeftOver), leftOver);
    EXPECT_EQ(KeysOf(translation.Findings(), etfChanged), changed);
    EXPECT_EQ(translation.Findings().size(), missing.size() + leftOver.size() + changed.size());
}

INSTANTIATE_TEST_SUITE_P(Seeds, TranslationModelTest, testing::Range(0U, 10U));
