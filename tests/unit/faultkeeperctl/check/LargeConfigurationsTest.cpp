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

TEST(LargeConfigurationTest, AChainOfAllErrorsIsNoTrouble)
{
    CConfigurationBuilder builder;
    builder.Leaf(NumberedName(0));
    for (int error = 1; error < 400; ++error)
        builder.Parent(NumberedName(error), {NumberedName(error - 1)});
    EXPECT_EQ(Checked(builder), "0 errors, 0 warnings in 3 files\n");
}

} // namespace
