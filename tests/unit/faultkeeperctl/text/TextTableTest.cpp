#include "faultkeeperctl/text/TextTable.h"

#include <gtest/gtest.h>

using namespace Faultkeeper::Apps;

TEST(TextTable, AlignsColumnsAndContinuesTheLastOne)
{
    CTextTable table({"State", "Error and problem"});
    table.AddRow({"raised", "Höhe\nno satellite data at all"});
    table.AddRow({"über", "GPS"});
    EXPECT_EQ(table.Text(28), "State   Error and problem\n"
                              "raised  Höhe\n"
                              "        no satellite data at\n"
                              "        all\n"
                              "über    GPS\n");
}

TEST(TextTable, LeavesTheLastColumnSomeRoomOnANarrowTerminal)
{
    CTextTable table({"State", "Problem"});
    table.AddRow({"raised", "twenty columns are left"});
    EXPECT_EQ(table.Text(5), "State   Problem\n"
                             "raised  twenty columns are\n"
                             "        left\n");
}

TEST(TextTable, LeavesNoBlanksAtLineEnds)
{
    CTextTable table({"State", "Problem"});
    table.AddRow({"x", ""});
    EXPECT_EQ(table.Text(40), "State  Problem\nx\n");
}

TEST(FieldText, PutsValuesBelowEachOtherBehindTheLabel)
{
    EXPECT_EQ(FieldText("Problem", {"first", "second one"}, 40), "    Problem    first\n"
                                                                 "               second one\n");
}

TEST(FieldText, IsEmptyWithoutValues)
{
    EXPECT_EQ(FieldText("Problem", {}, 40), "");
}
