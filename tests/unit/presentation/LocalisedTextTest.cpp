#include "support/CapturedOutput.h"
#include "unit/presentation/DisplayFixture.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <filesystem>

using namespace Faultkeeper;
using Support::ReadFile;

namespace
{

class LocalisedTextTest : public DisplayFixture
{
protected:
    std::string Dumped(const std::vector<CError>& errors) const
    {
        const std::string path = m_directory.File("strings.txt");
        CErrorPresentation::DumpLocalisedText(errors, path);
        return ReadFile(path);
    }
};

TEST_F(LocalisedTextTest, HasEightLinesForEachErrorInTheOrderOfTheList)
{
    Support::STestError other = Node(1);
    other.name = "Cell Radio:GSM:No Network:11";
    Load({other, Node(0)});
    EXPECT_EQ(Dumped(m_database->GetErrorList()), "[Cell Radio:GSM:No Network:11.problem]\n"
                                                  "P1\n"
                                                  "[Cell Radio:GSM:No Network:11.solution]\n"
                                                  "S1\n"
                                                  "[Cell Radio:GSM:No Network:11.shortTitle]\n"
                                                  "T1\n"
                                                  "[Cell Radio:GSM:No Network:11.vtTitle]\n"
                                                  "s1\n"
                                                  "[Positioning:GPS:No Data:0.problem]\n"
                                                  "P0\n"
                                                  "[Positioning:GPS:No Data:0.solution]\n"
                                                  "S0\n"
                                                  "[Positioning:GPS:No Data:0.shortTitle]\n"
                                                  "T0\n"
                                                  "[Positioning:GPS:No Data:0.vtTitle]\n"
                                                  "s0\n");
}

TEST_F(LocalisedTextTest, OfNoErrorsIsAnEmptyFile)
{
    EXPECT_EQ(Dumped({}), "");
}

TEST_F(LocalisedTextTest, ReplacesWhatTheFileHeld)
{
    Support::WriteFile(m_directory.File("strings.txt"), std::string(10000, 'x'));
    EXPECT_EQ(Dumped({}), "");
}

TEST_F(LocalisedTextTest, HasTextsAsTheyStand)
{
    Support::STestError error = Node(0);
    error.problem = "first line\nsecond [line]";
    error.solution = "\"quoted\" & <marked> \\n \xC3\xA4";
    error.shortProblem = "  blanks  ";
    error.title = "-";
    Load({error});
    EXPECT_EQ(Dumped(m_database->GetErrorList()), "[Positioning:GPS:No Data:0.problem]\n"
                                                  "first line\nsecond [line]\n"
                                                  "[Positioning:GPS:No Data:0.solution]\n"
                                                  "\"quoted\" & <marked> \\n \xC3\xA4\n"
                                                  "[Positioning:GPS:No Data:0.shortTitle]\n"
                                                  "\n"
                                                  "[Positioning:GPS:No Data:0.vtTitle]\n"
                                                  "  blanks  \n");
}

TEST_F(LocalisedTextTest, HoldsEachTextUnderTheKeyThatTreesCarry)
{
    Load({Node(0)});
    const std::string dumped = Dumped(m_database->GetErrorList());
    const SErrorTree keys = Tree(0, true);
    const SErrorTree texts = Tree(0, false);
    EXPECT_NE(dumped.find("[" + keys.title + "]\n" + texts.title + "\n"), std::string::npos);
    EXPECT_NE(dumped.find("[" + keys.shortTitle + "]\n" + texts.shortTitle + "\n"), std::string::npos);
    EXPECT_NE(dumped.find("[" + keys.problems.at(0) + "]\n" + texts.problems.at(0) + "\n"),
              std::string::npos);
    EXPECT_NE(dumped.find("[" + keys.solutions.at(0) + "]\n" + texts.solutions.at(0) + "\n"),
              std::string::npos);
}

TEST_F(LocalisedTextTest, HasErrorsThatAreInTheListTwiceTwice)
{
    Load({Node(0), Node(0)});
    const std::string dumped = Dumped(m_database->GetErrorList());
    EXPECT_EQ(dumped.substr(0, dumped.size() / 2), dumped.substr(dumped.size() / 2));
    EXPECT_FALSE(dumped.empty());
}

TEST_F(LocalisedTextTest, ThatCannotBeOpenedIsPassedOverWithoutAMessage)
{
    Load({Node(0)});
    for (const std::string& path :
         {m_directory.File("no such directory/strings.txt"), m_directory.Path(), std::string()})
        EXPECT_EQ(
            Support::WarnedBy(
                [&]
                {
                    EXPECT_EQ(
                        Support::PrintedBy(
                            [&] { CErrorPresentation::DumpLocalisedText(m_database->GetErrorList(), path); }),
                        "");
                }),
            "")
            << path;
    EXPECT_FALSE(std::filesystem::exists(m_directory.File("no such directory")));
}

} // namespace
