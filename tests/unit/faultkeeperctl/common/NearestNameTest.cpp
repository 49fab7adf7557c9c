#include "common/text/NearestName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace Faultkeeper::Apps;

TEST(TypingDistance, IsNothingForTheSameText)
{
    EXPECT_EQ(TypingDistance("No Data", "No Data"), 0);
    EXPECT_EQ(TypingDistance("", ""), 0);
}

TEST(TypingDistance, CountsEachLetterLeftOutAddedReplacedOrSwappedOnce)
{
    EXPECT_EQ(TypingDistance("No Dat", "No Data"), 4);
    EXPECT_EQ(TypingDistance("No Dataa", "No Data"), 4);
    EXPECT_EQ(TypingDistance("No_Data", "No Data"), 4);
    EXPECT_EQ(TypingDistance("No Daat", "No Data"), 4);
    EXPECT_EQ(TypingDistance("", "GPS"), 12);
    EXPECT_EQ(TypingDistance("GPS", ""), 12);
}

TEST(TypingDistance, MakesLittleOfTheWrongCase)
{
    EXPECT_EQ(TypingDistance("no data", "No Data"), 2);
}

TEST(NearestName, IsTheOneWithTheFewestSlips)
{
    EXPECT_EQ(NearestName("Positionin", {"GPS", "Positioning", "Position"}), "Positioning");
}

TEST(NearestName, IsTheFirstAmongEquals)
{
    EXPECT_EQ(NearestName("Unable to Set", {"Unable to Set A", "Unable to Set B"}), "Unable to Set A");
}

TEST(NearestName, PrefersTheWrongCaseToAWrongLetter)
{
    EXPECT_EQ(NearestName("gps", {"GPA", "GPS"}), "GPS");
}

TEST(NearestName, IsNoneIfMoreThanHalfOfTheLettersDiffer)
{
    EXPECT_EQ(NearestName("Foo", {"GPS", "CAN"}), "");
    EXPECT_EQ(NearestName("GPS", {}), "");
}

TEST(NearestName, IsNoneForATextThatNobodyTypes)
{
    EXPECT_EQ(NearestName(std::string(200, 'x'), {std::string(201, 'x')}), std::string(201, 'x'));
    EXPECT_EQ(NearestName(std::string(201, 'x'), {std::string(201, 'x')}), "");
}

namespace
{
std::string RandomWord(std::mt19937& random)
{
    std::string word;
    for (std::size_t letters = random() % 9; word.size() < letters;)
        word += "abAB"[random() % 4];
    return word;
}

/// As it is said: the first of those with the least distance, unless half of the letters differ.
std::string NearestOfAll(const std::string& typed, const std::vector<std::string>& candidates)
{
    std::string nearest;
    int least = -1;
    for (const std::string& candidate : candidates)
    {
        const int distance = TypingDistance(typed, candidate);
        const bool near = distance <= 2 * static_cast<int>(std::max(typed.size(), candidate.size()));
        if (!near || (least >= 0 && distance >= least))
            continue;
        nearest = candidate;
        least = distance;
    }
    return nearest;
}
} // namespace

TEST(NearestName, IsTheSameAsIfAllDistancesWereKnown)
{
    std::mt19937 random(7);
    for (int number = 0; number < 3000; ++number)
    {
        std::vector<std::string> candidates;
        for (int candidate = 0; candidate < 6; ++candidate)
            candidates.push_back(RandomWord(random));
        const std::string typed = RandomWord(random);
        ASSERT_EQ(NearestName(typed, candidates), NearestOfAll(typed, candidates)) << typed;
    }
}
