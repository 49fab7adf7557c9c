#include <Core/Utilities/SplitString.h>

#include "faultkeeperctl/check/CheckReport.h"

#include "cases/CheckCase.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

// Stands in for the host's function in this whole program: a host that cannot split.
bool Core::Utilities::SplitString(const std::string&, const std::string&, std::vector<std::string>&, int)
{
    return false;
}

namespace
{

TEST(CheckSplitTest, IdsThatTheHostCannotSplitAreTold)
{
    const Support::CFreshDirectory directory;
    const Support::CWorkingDirectory inside(directory.Path());
    CheckCases::WriteEdited(
        "", {{CheckCases::kPatterns, "      <error id=\"Positioning:GPS:No Data:2\"/>\n", ""}});
    EXPECT_EQ(
        Faultkeeper::Apps::CheckText(Faultkeeper::Apps::CheckConfiguration("", 0)),
        "positioning.xml:19:24: error: the id \"Positioning:GPS:Communications:9\" cannot be split at its "
        "colons [rule 295: Core::Utilities::SplitString(identifier, \":\", subStrings)]\n"
        "positioning.xml:20:24: error: the id \"CAN:Bus:Power:4\" cannot be split at its colons [rule 295: "
        "Core::Utilities::SplitString(identifier, \":\", subStrings)]\n"
        "ErrorPatterns.xml:4:14: warning: the id \"Positioning:GPS:Communications:9\" cannot be split at its "
        "colons\n"
        "ErrorPatterns.xml:7:14: warning: the id \"Positioning:GPS:No Data:2\" cannot be split at its "
        "colons\n"
        "2 errors, 2 warnings in 4 files\n");
}

} // namespace
