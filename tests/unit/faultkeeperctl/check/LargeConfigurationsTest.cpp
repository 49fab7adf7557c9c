#include "faultkeeperctl/check/CheckReport.h"

#include "common/text/ErrorNames.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

namespace
{

using namespace Faultkeeper::Apps;
using Support::CConfigurationBuilder;

constexpr int kModule = 0x10000;

std::string NumberedName(int number)
{
    return ErrorName(kModule | (1 + number / 20) << 8 | 1, number % 20);
}

std::string Checked(const CConfigurationBuilder& builder)
{
    const Support::CFreshDirectory directory;
    const Support::CWorkingDirectory inside(directory.Path());
    builder.WriteTo("");
    Support::WriteFile("ErrorPatterns.xml", "<ErrorPatterns><Patterns/></ErrorPatterns>");
    return CheckText(CheckConfiguration("", 0));
}

/// Each error is raised by the two before it, so that ways to the first ones multiply as Fibonacci's rabbits
/// do.
CConfigurationBuilder Rabbits(int errors)
{
    CConfigurationBuilder builder;
    for (int error = 0; error < errors; ++error)
    {
        if (error < 2)
            builder.Leaf(NumberedName(error));
        else
            builder.Parent(NumberedName(error), {NumberedName(error - 1), NumberedName(error - 2)});
    }
    return builder;
}

TEST(LargeConfigurationTest, TheFirstErrorThatTheTableDoesNotHoldIsNamed)
{
    CConfigurationBuilder builder;
    for (int error = 0; error < 403; ++error)
        builder.Leaf(NumberedName(error));
    EXPECT_EQ(
        Checked(builder),
        "module0.xml:4004:1: error: 403 errors are defined, but the shared table holds 400: from here on "
        "they are not shown, and no state key can be built for them\n"
        "1 error, 0 warnings in 3 files\n");
}

TEST(LargeConfigurationTest, AKeyOfAMillionBitsIsBuilt)
{
    EXPECT_EQ(Checked(Rabbits(29)), "0 errors, 0 warnings in 3 files\n");
}

TEST(LargeConfigurationTest, ATreeWithALongerKeyIsTold)
{
    EXPECT_EQ(
        Checked(Rabbits(30)),
        "module0.xml:618:1: warning: with all that is below \"GPS:Battery:A Not Set:9\" active its state key "
        "takes more than 1048576 bits, because so many ways lead to the same errors: a display takes long "
        "for "
        "its tree\n"
        "0 errors, 1 warning in 3 files\n");
}

TEST(LargeConfigurationTest, ALadderOfFourHundredRungsIsToldInTime)
{
    EXPECT_EQ(Checked(Rabbits(400)).substr(0, 24), "module0.xml:8758:1: warn");
}

TEST(LargeConfigurationTest, CirclesThroughAllErrorsAreToldInTime)
{
    CConfigurationBuilder builder;
    for (int error = 0; error < 400; ++error)
        builder.Parent(NumberedName(error),
                       {NumberedName((error + 1) % 400), NumberedName((error + 7) % 400)});
    const std::string told = Checked(builder);
    EXPECT_NE(told.find("errors trigger each other in a circle: \"GPS:Accelerometers:A Not Set:0\" <- "),
              std::string::npos);
    EXPECT_LT(told.size(), 1000000U);
}

TEST(LargeConfigurationTest, ManySetsOfOneErrorAreNoTrouble)
{
    CConfigurationBuilder builder;
    Support::STestError parent;
    parent.name = NumberedName(399);
    for (int first = 0; first < 110; ++first)
    {
        builder.Leaf(NumberedName(first));
        for (int second = 0; second < first; ++second)
        {
            Support::STestTriggerSet set;
            set.autoTrigger = false;
            set.triggers = {NumberedName(first), NumberedName(second)};
            parent.sets.push_back(set);
        }
    }
    EXPECT_EQ(Checked(builder.Add(parent)), "0 errors, 0 warnings in 3 files\n");
}

/// All errors that trigger each other.
CConfigurationBuilder Knot(int errors)
{
    CConfigurationBuilder builder;
    for (int error = 0; error < errors; ++error)
    {
        std::vector<std::string> others;
        for (int other = 0; other < errors; ++other)
        {
            if (other != error)
                others.push_back(NumberedName(other));
        }
        builder.Parent(NumberedName(error), others);
    }
    return builder;
}

TEST(LargeConfigurationTest, OfAKnotOfCirclesThereAreFewerFindingsThanErrors)
{
    const std::string told = Checked(Knot(150));
    EXPECT_NE(told.find("\n149 errors, 0 warnings in 3 files\n"), std::string::npos);
    EXPECT_LT(told.size(), 50000U);
}

TEST(LargeConfigurationTest, WhatLongCirclesShareIsToldOnce)
{
    CConfigurationBuilder builder;
    for (int error = 0; error < 8; ++error)
    {
        std::vector<std::string> triggers = {NumberedName((error + 1) % 8)};
        if (error == 6)
            triggers.push_back(NumberedName(8));
        builder.Parent(NumberedName(error), triggers);
    }
    builder.Parent(NumberedName(8), {NumberedName(0)});
    EXPECT_EQ(Checked(builder), "module0.xml:16:10: error: errors trigger each other in a circle: "
                                "\"GPS:Accelerometers:A Not Set:0\" <- \"GPS:Accelerometers:A Not Set:1\" <- "
                                "\"GPS:Accelerometers:A Not Set:2\" <- \"GPS:Accelerometers:A Not Set:3\" <- "
                                "\"GPS:Accelerometers:A Not Set:4\" <- \"GPS:Accelerometers:A Not Set:5\" <- "
                                "\"GPS:Accelerometers:A Not Set:6\" <- \"GPS:Accelerometers:A Not Set:7\" <- "
                                "\"GPS:Accelerometers:A Not Set:0\" (\"<-\": is triggered by)\n"
                                "module0.xml:16:10: error: errors trigger each other in a circle: "
                                "\"GPS:Accelerometers:A Not Set:0\" <- 5 more, told with another circle <- "
                                "\"GPS:Accelerometers:A Not Set:6\" <- \"GPS:Accelerometers:A Not Set:8\" <- "
                                "\"GPS:Accelerometers:A Not Set:0\" (\"<-\": is triggered by)\n"
                                "2 errors, 0 warnings in 3 files\n");
}

/// Circles that one link closes, from each of several errors.
std::string CheckedFan(const std::vector<int>& order)
{
    CConfigurationBuilder builder;
    for (const int error : order)
    {
        if (error == 1)
            builder.Parent(NumberedName(1), {NumberedName(2), NumberedName(3)});
        else
            builder.Parent(NumberedName(error), {NumberedName(error == 0 ? 1 : 0)});
    }
    return Checked(builder);
}

TEST(LargeConfigurationTest, TheOrderOfTheErrorsDoesNotMatterForWhichCirclesAreTold)
{
    EXPECT_EQ(CheckedFan({0, 1, 2, 3}),
              "module0.xml:16:10: error: errors trigger each other in a circle: "
              "\"GPS:Accelerometers:A Not Set:0\" <- \"GPS:Accelerometers:A Not Set:1\" <- "
              "\"GPS:Accelerometers:A Not Set:2\" <- \"GPS:Accelerometers:A Not Set:0\" (\"<-\": is "
              "triggered by)\n"
              "module0.xml:16:10: error: errors trigger each other in a circle: "
              "\"GPS:Accelerometers:A Not Set:0\" <- \"GPS:Accelerometers:A Not Set:1\" <- "
              "\"GPS:Accelerometers:A Not Set:3\" <- \"GPS:Accelerometers:A Not Set:0\" (\"<-\": is "
              "triggered by)\n"
              "2 errors, 0 warnings in 3 files\n");
    EXPECT_EQ(CheckedFan({1, 2, 3, 0}),
              "module0.xml:16:10: error: errors trigger each other in a circle: "
              "\"GPS:Accelerometers:A Not Set:1\" <- \"GPS:Accelerometers:A Not Set:2\" <- "
              "\"GPS:Accelerometers:A Not Set:0\" <- \"GPS:Accelerometers:A Not Set:1\" (\"<-\": is "
              "triggered by)\n"
              "module0.xml:17:10: error: errors trigger each other in a circle: "
              "\"GPS:Accelerometers:A Not Set:1\" <- \"GPS:Accelerometers:A Not Set:3\" <- "
              "\"GPS:Accelerometers:A Not Set:0\" <- \"GPS:Accelerometers:A Not Set:1\" (\"<-\": is "
              "triggered by)\n"
              "2 errors, 0 warnings in 3 files\n");
}

TEST(LargeConfigurationTest, AChainOfAllErrorsIsNoTrouble)
{
    CConfigurationBuilder builder;
    builder.Leaf(NumberedName(0));
    for (int error = 1; error < 400; ++error)
        builder.Parent(NumberedName(error), {NumberedName(error - 1)});
    EXPECT_EQ(Checked(builder), "0 errors, 0 warnings in 3 files\n");
}

TEST(LargeConfigurationTest, IdsThatNameNothingInHundredsOfSetsAreToldInTime)
{
    CConfigurationBuilder builder;
    builder.Leaf(NumberedName(0));
    for (int error = 1; error <= 300; ++error)
        builder.Parent(NumberedName(error), {NumberedName(0), ErrorName(kModule | 1 << 8 | 1, 20)});
    const std::string told = Checked(builder);
    EXPECT_EQ(
        told.substr(0, told.find('\n')),
        "module0.xml:27:10: warning: no error \"GPS:Accelerometers:A Not Set:20\" is defined; did you mean "
        "\"GPS:Accelerometers:A Not Set:2\"?");
    EXPECT_NE(told.find("\n0 errors, 300 warnings in 3 files\n"), std::string::npos);
}

} // namespace
