#include "common/text/NearestName.h"

#include <gtest/gtest.h>

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
