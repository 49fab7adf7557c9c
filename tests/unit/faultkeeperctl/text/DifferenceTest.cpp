#include "faultkeeperctl/text/Difference.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

using namespace Faultkeeper::Apps;

namespace
{
std::string Listed(const std::string& before, const std::string& after)
{
    std::string text;
    for (const std::string& line : Difference("a", before, "b", after))
        text += line + "\n";
    return text;
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// What becomes of a text if all places of a difference are applied to it. "@@ -line,count +line,count @@"
std::string Applied(const std::string& before, const std::vector<std::string>& difference)
{
    const std::vector<std::string> lines = LinesOf(before);
    std::string after;
    std::size_t at = 0;
    for (std::size_t i = 2; i < difference.size(); ++i)
    {
        const std::string& line = difference[i];
        if (line[0] == '@')
        {
            const std::size_t comma = line.find_first_of(", ", 4);
            std::size_t first = std::stoul(line.substr(4, comma - 4));
            const bool none = line[comma] == ',' && std::stoul(line.substr(comma + 1)) == 0;
            for (first -= none ? 0 : 1; at < first; ++at)
                after += lines.at(at) + "\n";
            continue;
        }
        if (line[0] != '+')
        {
            EXPECT_EQ(lines.at(at++), line.substr(1));
        }
        if (line[0] != '-')
            after += line.substr(1) + "\n";
    }
    for (; at < lines.size(); ++at)
        after += lines[at] + "\n";
    return after;
}

class DifferenceOfRandomTexts : public testing::TestWithParam<unsigned>
{
};
} // namespace

TEST(Difference, OfTheSameTextIsNothing)
{
    EXPECT_EQ(Listed("", ""), "");
    EXPECT_EQ(Listed("a\nb", "a\nb"), "");
}

TEST(Difference, ShowsThreeLinesAroundAChange)
{
    EXPECT_EQ(Listed("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "1\n2\n3\n4\nfive\n6\n7\n8\n9\n"), "--- a\n"
                                                                                       "+++ b\n"
                                                                                       "@@ -2,7 +2,7 @@\n"
                                                                                       " 2\n"
                                                                                       " 3\n"
                                                                                       " 4\n"
                                                                                       "-5\n"
                                                                                       "+five\n"
                                                                                       " 6\n"
                                                                                       " 7\n"
                                                                                       " 8\n");
}

TEST(Difference, ShowsPlacesThatAreFarApartByThemselves)
{
    EXPECT_EQ(Listed("x\n1\n2\n3\n4\n5\n6\n7\ny\n", "1\n2\n3\n4\n5\n6\n7\ny\nz\n"), "--- a\n"
                                                                                    "+++ b\n"
                                                                                    "@@ -1,4 +1,3 @@\n"
                                                                                    "-x\n"
                                                                                    " 1\n"
                                                                                    " 2\n"
                                                                                    " 3\n"
                                                                                    "@@ -7,3 +6,4 @@\n"
                                                                                    " 6\n"
                                                                                    " 7\n"
                                                                                    " y\n"
                                                                                    "+z\n");
}

TEST(Difference, ToAndFromNothing)
{
    EXPECT_EQ(Listed("", "1\n2\n"), "--- a\n+++ b\n@@ -0,0 +1,2 @@\n+1\n+2\n");
    EXPECT_EQ(Listed("1\n", ""), "--- a\n+++ b\n@@ -1 +0,0 @@\n-1\n");
}

TEST(Difference, TellsALineEndThatIsMissing)
{
    EXPECT_EQ(Listed("1\n2", "1\n2\n"), "--- a\n"
                                        "+++ b\n"
                                        "@@ -1,2 +1,2 @@\n"
                                        " 1\n"
                                        "-2\n"
                                        "\\ No newline at end of file\n"
                                        "+2\n");
}

TEST(Difference, OfLargeTextsThatHaveNothingInCommonIsAllOfBoth)
{
    std::string before;
    std::string after;
    for (int i = 0; i < 5000; ++i)
    {
        before += "b" + std::to_string(i) + "\n";
        after += "a" + std::to_string(i) + "\n";
    }
    const std::vector<std::string> difference = Difference("a", before, "b", after);
    EXPECT_EQ(difference.size(), 10003u);
    EXPECT_EQ(difference[2], "@@ -1,5000 +1,5000 @@");
    EXPECT_EQ(Applied(before, difference), after);
}

TEST_P(DifferenceOfRandomTexts, TurnsOneIntoTheOther)
{
    std::mt19937 random(GetParam());
    for (int i = 0; i < 200; ++i)
    {
        std::string before;
        std::string after;
        for (auto line = random() % 30; line > 0; --line)
            before += std::string(1, static_cast<char>('a' + random() % 5)) + "\n";
        for (const std::string& line : LinesOf(before))
        {
            if (random() % 6 != 0)
                after += line + "\n";
            if (random() % 8 == 0)
                after += "new\n";
        }
        const std::vector<std::string> difference = Difference("a", before, "b", after);
        ASSERT_EQ(difference.empty(), before == after);
        ASSERT_EQ(Applied(before, difference), after);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DifferenceOfRandomTexts, testing::Range(0u, 20u));
