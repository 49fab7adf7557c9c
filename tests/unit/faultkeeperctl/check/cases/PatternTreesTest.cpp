#include "faultkeeperctl/check/CheckReport.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

namespace
{

using Support::CConfigurationBuilder;

const char* const kPower = "CAN:Bus:Power:4";
const char* const kChecksum = "CAN:Bus:Checksum:9";
const char* const kData = "CAN:Bus:Data:9";

/// What is told of these errors with an exact pattern of some of them.
std::string Checked(const CConfigurationBuilder& builder, const std::vector<std::string>& pattern)
{
    std::string patterns = "<ErrorPatterns><Patterns>\n<pattern fixedCode=\"P\">";
    for (const std::string& id : pattern)
        patterns += "<error id=\"" + id + "\"/>";
    const Support::CFreshDirectory directory;
    const Support::CWorkingDirectory inside(directory.Path());
    builder.WriteTo("");
    Support::WriteFile("ErrorPatterns.xml", patterns + "</pattern></Patterns></ErrorPatterns>");
    return CheckText(Faultkeeper::Apps::CheckConfiguration("", 0));
}

/// Two errors of one size that the same one raises: the tree is headed by the one with the smaller
/// identifier.
CConfigurationBuilder Twins()
{
    return CConfigurationBuilder().Leaf(kPower).Parent(kData, {kPower}).Parent(kChecksum, {kPower});
}

TEST(PatternTreeTest, AnErrorOfTheSameSizeThatHeadsTheTreeIsInTheWay)
{
    EXPECT_EQ(Checked(Twins(), {kPower, kData}),
              "ErrorPatterns.xml:2:1: warning: this pattern matches only after \"CAN:Bus:Checksum:9\" was "
              "cleared on its own: these errors raise it\n"
              "0 errors, 1 warning in 3 files\n");
}

TEST(PatternTreeTest, AnErrorOfTheSameSizeBesideTheTreeIsNot)
{
    EXPECT_EQ(Checked(Twins(), {kPower, kChecksum}), "0 errors, 0 warnings in 3 files\n");
}

/// One whose only set has no triggers is no leaf, so that its parent does not grow above it.
TEST(PatternTreeTest, AParentOfAnErrorWhoseSetIsEmptyIsNoLarger)
{
    const CConfigurationBuilder builder =
        CConfigurationBuilder().Parent(kChecksum, {}).Parent(kPower, {kChecksum});
    const std::string told = "module0.xml:10:1: warning: this \"TriggerSet\" has no triggers\n";
    EXPECT_EQ(Checked(builder, {kChecksum}), told + "0 errors, 1 warning in 3 files\n");
    EXPECT_EQ(Checked(builder, {kChecksum, kPower}),
              told + "ErrorPatterns.xml:2:1: warning: this pattern never matches: no tree can hold exactly "
                     "these errors\n"
                     "0 errors, 2 warnings in 3 files\n");
}

TEST(PatternTreeTest, OnlyErrorsThatStayRaisedByThemselvesAreInTheWay)
{
    EXPECT_EQ(
        Checked(CConfigurationBuilder().Leaf(kPower).Parent(kData, {kPower}).Parent(kChecksum, {kData}),
                {kPower}),
        "ErrorPatterns.xml:2:1: warning: this pattern matches only after \"CAN:Bus:Data:9\" was cleared on "
        "its own: these errors raise it\n"
        "0 errors, 1 warning in 3 files\n");
}

/// A parent of six that the pattern holds with one of them; the same one raises two more that form a smaller
/// group with it.
std::string CheckedBesideAChain(bool topOfTheChainFirst)
{
    const char* const more[] = {"CAN:Bus:Speed:2", "CAN:Bus:Framing:2", "CAN:Bus:Heading:2",
                                "CAN:Bus:No Data:2", "CAN:Bus:Port Error:2"};
    CConfigurationBuilder builder;
    if (topOfTheChainFirst)
        builder.Parent(kData, {kChecksum}).Parent(kChecksum, {kPower});
    else
        builder.Parent(kChecksum, {kPower}).Parent(kData, {kChecksum});
    builder.Leaf(kPower);
    std::vector<std::string> triggers = {kPower};
    for (const char* const leaf : more)
    {
        builder.Leaf(leaf);
        triggers.emplace_back(leaf);
    }
    const char* const parent = "CAN:Bus:Position Calculation:11";
    return Checked(builder.Parent(parent, triggers), {parent, kPower});
}

TEST(PatternTreeTest, AChainBelowTheSizeOfTheTreeIsNotInTheWayWhateverIsLoadedFirst)
{
    EXPECT_EQ(CheckedBesideAChain(true), "0 errors, 0 warnings in 3 files\n");
    EXPECT_EQ(CheckedBesideAChain(false), "0 errors, 0 warnings in 3 files\n");
}

/// The chain is larger than the tree: what links it to the tree is in the way, and nothing else.
std::string CheckedBelowAChain(bool topOfTheChainFirst)
{
    const char* const link = "CAN:Bus:Framing:2";
    CConfigurationBuilder builder = CConfigurationBuilder().Leaf(kPower);
    if (topOfTheChainFirst)
        builder.Parent(kData, {link}).Parent(link, {kChecksum}).Parent(kChecksum, {kPower});
    else
        builder.Parent(kChecksum, {kPower}).Parent(link, {kChecksum}).Parent(kData, {link});
    return Checked(builder, {kPower});
}

TEST(PatternTreeTest, OfAChainOnlyTheLinkIsInTheWayWhateverIsLoadedFirst)
{
    const char* const expected =
        "ErrorPatterns.xml:2:1: warning: this pattern matches only after \"CAN:Bus:Checksum:9\" was cleared "
        "on its own: these errors raise it\n"
        "0 errors, 1 warning in 3 files\n";
    EXPECT_EQ(CheckedBelowAChain(true), expected);
    EXPECT_EQ(CheckedBelowAChain(false), expected);
}

} // namespace
