#include "common/text/TypedText.h"

#include <gtest/gtest.h>

using namespace Faultkeeper::Apps;

TEST(WithoutControls, ShowsWhatWouldSteerATerminalAsNumbers)
{
    EXPECT_EQ(WithoutControls("a\x1b[2J\n\x7f"), "a\\x1B[2J\\x0A\\x7F");
    EXPECT_EQ(WithoutControls("\xC2\x9B"), "\\xC2\\x9B"); // one character that means the same as ESC [
    EXPECT_EQ(WithoutControls(std::string(1, '\0')), "\\x00");
}

TEST(WithoutControls, LeavesTextAsItIs)
{
    EXPECT_EQ(WithoutControls("C:\\Höhe \xE5\x8D\xAB \xF0\x9F\x9A\x9C"),
              "C:\\Höhe \xE5\x8D\xAB \xF0\x9F\x9A\x9C");
}

TEST(WithoutControls, ShowsBytesThatAreNoTextAsNumbers)
{
    EXPECT_EQ(WithoutControls("\xFF\x80"), "\\xFF\\x80");
    EXPECT_EQ(WithoutControls("a\xC3"), "a\\xC3");
}

TEST(WithoutControls, ShowsWhatOnlyLooksLikeACharacterAsNumbers)
{
    EXPECT_EQ(WithoutControls("\xC1\x9B"), "\\xC1\\x9B") << "longer than need be";
    EXPECT_EQ(WithoutControls("\xE0\x80\x9B[31m"), "\\xE0\\x80\\x9B[31m") << "likewise: ESC";
    EXPECT_EQ(WithoutControls("\xE0\x9F\xBF"), "\\xE0\\x9F\\xBF");
    EXPECT_EQ(WithoutControls("\xF0\x80\x80\x80"), "\\xF0\\x80\\x80\\x80");
    EXPECT_EQ(WithoutControls("\xF0\x8F\xBF\xBF"), "\\xF0\\x8F\\xBF\\xBF");
    EXPECT_EQ(WithoutControls("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "half of a pair";
    EXPECT_EQ(WithoutControls("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80") << "beyond the last one";
    const std::string atTheLimits = "\xC2\xA0 \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xF0\x90\x80\x80 "
                                    "\xF4\x8F\xBF\xBF";
    EXPECT_EQ(WithoutControls(atTheLimits), atTheLimits);
}

TEST(QuotedTyped, DoublesBackslashes)
{
    EXPECT_EQ(QuotedTyped("\\x1B\x1b"), "\"\\\\x1B\\x1B\"");
}

TEST(QuotedTyped, IsNotEndedByAMarkWithinIt)
{
    EXPECT_EQ(QuotedTyped("a\" \\\" b"), "\"a\\\" \\\\\\\" b\"");
}

TEST(QuotedTyped, CutsALongTextBetweenCharacters)
{
    EXPECT_EQ(QuotedTyped(std::string(200, 'x')), "\"" + std::string(200, 'x') + "\"");
    EXPECT_EQ(QuotedTyped(std::string(201, 'x')), "\"" + std::string(200, 'x') + "\"...");
    EXPECT_EQ(QuotedTyped(std::string(199, 'x') + "\xC3\xB6"), "\"" + std::string(199, 'x') + "\"...");
}
