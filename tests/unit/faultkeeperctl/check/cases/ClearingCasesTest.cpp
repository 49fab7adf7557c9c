#include "faultkeeperctl/check/CheckReport.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

namespace
{

using Support::CConfigurationBuilder;
using Support::STestTriggerSet;

const char* const kPower = "CAN:Bus:Power:4";
const char* const kData = "CAN:Bus:Data:9";
const char* const kChecksum = "CAN:Bus:Checksum:9";

STestTriggerSet Set(const std::vector<std::string>& triggers, int needed)
{
    STestTriggerSet set;
    set.triggers = triggers;
    set.triggersNeeded = needed;
    return set;
}

/// What is told of an error with these automatic sets.
std::string Checked(CConfigurationBuilder triggers, const std::vector<STestTriggerSet>& sets)
{
    Support::STestError parent;
    parent.name = "CAN:Bus:Communications:11";
    parent.sets = sets;
    const Support::CFreshDirectory directory;
    const Support::CWorkingDirectory inside(directory.Path());
    triggers.Add(parent).WriteTo("");
    Support::WriteFile("ErrorPatterns.xml", "<ErrorPatterns><Patterns/></ErrorPatterns>");
    return CheckText(Faultkeeper::Apps::CheckConfiguration("", 0));
}

std::string CheckedLeaves(const std::vector<STestTriggerSet>& sets)
{
    return Checked(CConfigurationBuilder().Leaf(kPower).Leaf(kData).Leaf(kChecksum), sets);
}

TEST(ClearingCaseTest, TwoTriggersThatRaiseTogetherWhatTheyDoNotClear)
{
    EXPECT_EQ(CheckedLeaves({Set({kPower, kData, kChecksum}, 2), Set({kChecksum}, 1)}),
              "module0.xml:40:1: warning: \"CAN:Bus:Power:4\" and \"CAN:Bus:Data:9\" together raise the "
              "error by this automatic set, "
              "but do not stand in the one in line 51: clearing them does not clear the error\n0 errors, 1 "
              "warning in 3 files\n");
}

TEST(ClearingCaseTest, ThreeTriggersThatRaiseTogetherWhatTheyDoNotClear)
{
    const char* const more = "CAN:Bus:Initialisation:9";
    EXPECT_EQ(Checked(CConfigurationBuilder().Leaf(kPower).Leaf(kData).Leaf(kChecksum).Leaf(more),
                      {Set({kPower, kData, kChecksum, more}, 3), Set({kChecksum}, 1)}),
              "module0.xml:50:1: warning: \"CAN:Bus:Power:4\" and 2 others together raise the error by this "
              "automatic set, "
              "but do not stand in the one in line 62: clearing them does not clear the error\n0 errors, 1 "
              "warning in 3 files\n");
}

TEST(ClearingCaseTest, TwoTriggersEachOfWhichIsMissingElsewhere)
{
    EXPECT_EQ(CheckedLeaves({Set({kPower, kData, kChecksum}, 2), Set({kPower, kChecksum}, 2),
                             Set({kData, kChecksum}, 2)}),
              "module0.xml:40:1: warning: \"CAN:Bus:Power:4\" and \"CAN:Bus:Data:9\" together raise the "
              "error by this automatic set, "
              "but each of them is missing in another one: clearing them does not clear the error\n0 errors, "
              "1 warning in 3 files\n");
}

TEST(ClearingCaseTest, NothingIsToldIfItTakesATriggerThatClears)
{
    EXPECT_EQ(CheckedLeaves({Set({kPower, kData, kChecksum}, 3), Set({kChecksum}, 1)}),
              "0 errors, 0 warnings in 3 files\n");
}

TEST(ClearingCaseTest, NothingIsToldIfATriggerRaisesOneThatClears)
{
    const CConfigurationBuilder triggers = CConfigurationBuilder().Leaf(kPower).Parent(kChecksum, {kPower});
    EXPECT_EQ(Checked(triggers, {Set({kPower, kChecksum}, 1), Set({kChecksum}, 1)}),
              "0 errors, 0 warnings in 3 files\n");
}

TEST(ClearingCaseTest, TwoTriggersBesideOneThatRaisesOneThatClears)
{
    const char* const speed = "CAN:Bus:Speed:2";
    const CConfigurationBuilder triggers =
        CConfigurationBuilder().Leaf(kPower).Leaf(speed).Leaf(kData).Parent(kChecksum, {kPower});
    EXPECT_EQ(
        Checked(triggers, {Set({kPower, speed, kData, kChecksum}, 2), Set({kChecksum}, 1)}),
        "module0.xml:61:1: warning: \"CAN:Bus:Speed:2\" and \"CAN:Bus:Data:9\" together raise the error by "
        "this automatic set, but do not stand in the one in line 73: clearing them does not clear the "
        "error\n"
        "0 errors, 1 warning in 3 files\n");
}

} // namespace
