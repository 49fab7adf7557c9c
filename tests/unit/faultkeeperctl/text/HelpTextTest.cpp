#include "faultkeeperctl/text/HelpText.h"

#include <gtest/gtest.h>

using namespace Faultkeeper::Apps;

TEST(HelpTextTest, WhatFitsStaysAsItIs)
{
    const char* const help =
        "Does it.\nUsage: x [OPTIONS]\n\nOptions:\n  -h,--help                   Print this\n";
    EXPECT_EQ(FittedHelp(help, 80), help);
}

TEST(HelpTextTest, DescriptionsGoOnBelowWhereTheyBegin)
{
    EXPECT_EQ(FittedHelp("  --config DIR                configuration directory, if there is one\n", 56),
              "  --config DIR                configuration directory,\n"
              "                              if there is one\n");
}

TEST(HelpTextTest, DescriptionsStandBelowWhereThereIsNoRoomBeside)
{
    EXPECT_EQ(FittedHelp("  --config DIR                configuration directory, if there is one\n"
                         "  -h,--help                   Print this help message and exit\n",
                         40),
              "  --config DIR\n"
              "      configuration directory, if there\n"
              "      is one\n"
              "  -h,--help\n"
              "      Print this help message and exit\n");
    EXPECT_EQ(FittedHelp("  KEY TEXT ... REQUIRED AND SO ON\n"
                         "                              the key as shown in a tree, or its groups\n",
                         40),
              "  KEY TEXT ... REQUIRED AND SO ON\n"
              "      the key as shown in a tree, or its\n"
              "      groups\n");
}

TEST(HelpTextTest, SentencesAreBrokenAnewAndExamplesAreNot)
{
    EXPECT_EQ(FittedHelp("Prints the errors of the tree, their codes and its texts, all of them,\n"
                         "whatever is active now.\n"
                         "Example: x decode 0140\n"
                         "--config may stand behind the command, too.\n",
                         50),
              "Prints the errors of the tree, their codes and its\n"
              "texts, all of them, whatever is active now.\n"
              "Example: x decode 0140\n"
              "--config may stand behind the command, too.\n");
}

TEST(HelpTextTest, AShortLineIsTheEndOfAParagraph)
{
    EXPECT_EQ(FittedHelp("One sentence.\nAnother one.\n", 100), "One sentence.\nAnother one.\n");
}
