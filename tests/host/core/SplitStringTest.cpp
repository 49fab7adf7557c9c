#include <Core/Utilities/SplitString.h>

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace
{

using Core::Utilities::SplitString;
using Fields = std::vector<std::string>;

Fields Split(const std::string& text, const std::string& separator, int limit = 0)
{
    Fields fields;
    EXPECT_TRUE(SplitString(text, separator, fields, limit));
    return fields;
}

TEST(HostSplitString, SplitsAtEverySeparator)
{
    EXPECT_EQ(Split("Positioning:GPS:No Data:2", ":"), (Fields{"Positioning", "GPS", "No Data", "2"}));
    EXPECT_EQ(Split("no separator", ":"), (Fields{"no separator"}));
}

TEST(HostSplitString, KeepsEmptyFields)
{
    EXPECT_EQ(Split(":a::b:", ":"), (Fields{"", "a", "", "b", ""}));
    EXPECT_EQ(Split(":", ":"), (Fields{"", ""}));
}

TEST(HostSplitString, AnEmptyTextIsOneEmptyField)
{
    EXPECT_EQ(Split("", ":"), (Fields{""}));
}

TEST(HostSplitString, SeparatorsMayHaveSeveralCharacters)
{
    EXPECT_EQ(Split("a, b,c, ", ", "), (Fields{"a", "b,c", ""}));
    EXPECT_EQ(Split("aaaaa", "aa"), (Fields{"", "", "a"}));
}

TEST(HostSplitString, ReplacesWhatWasInTheVector)
{
    Fields fields = {"old", "older", "oldest"};
    EXPECT_TRUE(SplitString("new", ":", fields));
    EXPECT_EQ(fields, (Fields{"new"}));
}

TEST(HostSplitString, TheTextMayBeOneOfTheFields)
{
    Fields fields = {"a:b"};
    EXPECT_TRUE(SplitString(fields[0], ":", fields));
    EXPECT_EQ(fields, (Fields{"a", "b"}));
}

TEST(HostSplitString, TheLastFieldWithinALimitHoldsTheRest)
{
    EXPECT_EQ(Split("a:b:c:d", ":", 1), (Fields{"a:b:c:d"}));
    EXPECT_EQ(Split("a:b:c:d", ":", 3), (Fields{"a", "b", "c:d"}));
    EXPECT_EQ(Split("a:b:c:d", ":", 4), (Fields{"a", "b", "c", "d"}));
    EXPECT_EQ(Split("a:b:c:d", ":", 9), (Fields{"a", "b", "c", "d"}));
}

TEST(HostSplitString, ZeroOrLessIsNoLimit)
{
    EXPECT_EQ(Split("a:b:c", ":", 0), (Fields{"a", "b", "c"}));
    EXPECT_EQ(Split("a:b:c", ":", -1), (Fields{"a", "b", "c"}));
}

TEST(HostSplitString, AnEmptySeparatorGivesFalseAndLeavesTheVectorAlone)
{
    Fields fields = {"untouched"};
    EXPECT_FALSE(SplitString("text", "", fields));
    EXPECT_EQ(fields, (Fields{"untouched"}));
}

class HostSplitStringModel : public testing::TestWithParam<unsigned>
{
};

TEST_P(HostSplitStringModel, JoinedFieldsAreTheTextAgain)
{
    std::mt19937 random(GetParam());
    for (int round = 0; round < 200; ++round)
    {
        std::string text;
        for (auto length = random() % 20; length > 0; --length)
            text += "ab:"[random() % 3];
        std::string joined;
        for (const std::string& field : Split(text, ":"))
        {
            EXPECT_EQ(field.find(':'), std::string::npos);
            joined += ":" + field;
        }
        ASSERT_EQ(joined, ":" + text);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, HostSplitStringModel, testing::Range(0u, 10u));

} // namespace
