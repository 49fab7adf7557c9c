#include "faultkeeperctl/text/TextWidth.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

using namespace Faultkeeper::Apps;

typedef std::vector<std::string> Lines;

namespace
{
// Standard output is no terminal meanwhile.
int WidthWithColumns(const char* columns)
{
    const int before = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    setenv("COLUMNS", columns, 1);
    const int width = OutputWidth();
    unsetenv("COLUMNS");
    dup2(before, STDOUT_FILENO);
    close(nowhere);
    close(before);
    return width;
}
} // namespace

TEST(DisplayWidth, CountsColumnsInsteadOfBytes)
{
    EXPECT_EQ(DisplayWidth(""), 0);
    EXPECT_EQ(DisplayWidth("GPS"), 3);
    EXPECT_EQ(DisplayWidth("Höhe"), 4);
    EXPECT_EQ(DisplayWidth("e\xCC\x81"), 1);                // e and a combining accent
    EXPECT_EQ(DisplayWidth("\xE5\x8D\xAB\xE6\x98\x9F"), 4); // two wide characters
    EXPECT_EQ(DisplayWidth("\xF0\x9F\x9A\x9C"), 2);         // a tractor
}

TEST(DisplayWidth, CountsBytesThatAreNoTextAsOneColumnEach)
{
    EXPECT_EQ(DisplayWidth("\xFF"), 1);
    EXPECT_EQ(DisplayWidth("\x80\x80"), 2);
    EXPECT_EQ(DisplayWidth("a\xC3"), 2); // cut off
    EXPECT_EQ(DisplayWidth("\xE5\x8D"), 2);
}

TEST(Padded, FillsUpToColumns)
{
    EXPECT_EQ(Padded("Höhe", 6), "Höhe  ");
    EXPECT_EQ(Padded("GPS", 3), "GPS");
    EXPECT_EQ(Padded("GPS", 2), "GPS");
}

TEST(Wrapped, ShowsControlCharactersInsteadOfPassingThemOn)
{
    EXPECT_EQ(Wrapped("\x1b[2Jgone \xC2\x9Bno\x07 \xFF\n\x7F", 40),
              (Lines{"\\x1B[2Jgone \\xC2\\x9Bno\\x07 \\xFF", "\\x7F"}));
    EXPECT_EQ(Wrapped("\x1b\x1b", 4), (Lines{"\\x1B", "\\x1B"}));
}

TEST(Wrapped, BreaksAtBlanks)
{
    EXPECT_EQ(Wrapped("check the antenna cable", 11), (Lines{"check the", "antenna", "cable"}));
    EXPECT_EQ(Wrapped("check the antenna", 17), (Lines{"check the antenna"}));
}

TEST(Wrapped, MeasuresColumns)
{
    EXPECT_EQ(Wrapped("über Höhe", 9), (Lines{"über Höhe"}));
}

TEST(Wrapped, BreaksWordsThatAreTooLong)
{
    EXPECT_EQ(Wrapped("a Positioning b", 4), (Lines{"a", "Posi", "tion", "ing", "b"}));
    EXPECT_EQ(Wrapped("\xC3\xB6\xC3\xB6\xC3\xB6", 2), (Lines{"\xC3\xB6\xC3\xB6", "\xC3\xB6"}));
}

TEST(Wrapped, KeepsLineEndsAndEmptyLines)
{
    EXPECT_EQ(Wrapped("a\n\nb", 10), (Lines{"a", "", "b"}));
    EXPECT_EQ(Wrapped("", 10), (Lines{""}));
}

TEST(Wrapped, EndsEvenWithoutRoom)
{
    EXPECT_EQ(Wrapped("ab", 0), (Lines{"a", "b"}));
}

TEST(Wrapped, BreaksAVeryLongWordWithoutLoss)
{
    const std::string word(1000000, 'x');
    const Lines lines = Wrapped(word, 50);
    EXPECT_EQ(lines.size(), 20000U);
    EXPECT_EQ(lines.back(), std::string(50, 'x'));
}

TEST(OutputWidth, IsWhatTheEnvironmentSaysWhereThereIsNoTerminal)
{
    EXPECT_EQ(WidthWithColumns("72"), 72);
    EXPECT_EQ(WidthWithColumns("10"), 40);
    EXPECT_EQ(WidthWithColumns("99999"), 10000);
    for (const char* const unusable : {"0", "-5", "80x", "", "99999999999"})
        EXPECT_EQ(WidthWithColumns(unusable), 100) << unusable;
}
