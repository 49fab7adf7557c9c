#include "faultkeeperctl/check/CheckReport.h"

#include "cases/CheckCase.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

namespace
{

using namespace Faultkeeper::Apps;

SCheckResult Checked(const std::vector<CheckCases::SEdit>& edits)
{
    const Support::CFreshDirectory directory;
    const Support::CWorkingDirectory inside(directory.Path());
    CheckCases::WriteEdited("", edits);
    return CheckConfiguration("", 0);
}

TEST(CheckReportTest, ADocumentHasNumbersAndAllFindings)
{
    const Json document = CheckDocument(Checked({{CheckCases::kCan, "\"Medium\"", "\"medium\""},
                                                 {CheckCases::kCan, "visible=\"no\"", "visible=\"never\""}}));
    EXPECT_EQ(
        document.dump(),
        "{\"errors\":1,\"warnings\":1,\"files\":4,\"findings\":["
        "{\"file\":\"can.xml\",\"line\":4,\"column\":29,\"severity\":\"error\","
        "\"text\":\"unknown severity \\\"medium\\\"; did you mean \\\"Medium\\\"?\","
        "\"suggestion\":\"Medium\",\"rule\":{\"condition\":\"errorSeverity != eesUnknown\",\"line\":143,"
        "\"function\":\"void Faultkeeper::CErrorDatabase::LoadSubModule(Faultkeeper::EModuleIdentifier, "
        "Faultkeeper::ESubModuleIdentifier, const Core::IO::XMLNode&)\",\"order\":1}},"
        "{\"file\":\"can.xml\",\"line\":4,\"column\":47,\"severity\":\"warning\","
        "\"text\":\"\\\"visible\\\" is \\\"never\\\", which counts as \\\"no\\\": write \\\"yes\\\" or "
        "\\\"no\\\"\",\"suggestion\":null,\"rule\":null}]}");
}

/// What is suggested for the only finding.
Json Suggested(const std::vector<CheckCases::SEdit>& edits)
{
    return CheckDocument(Checked(edits)).at("findings").at(0).at("suggestion");
}

TEST(CheckReportTest, TheRightNameIsSuggestedForTopElements)
{
    EXPECT_EQ(Suggested({{CheckCases::kList, CheckCases::kWhole, "<Faultkeper/>"}}), "Faultkeeper");
    EXPECT_EQ(Suggested({{CheckCases::kCan, CheckCases::kWhole, "<Modul/>"}}), "Module");
    EXPECT_EQ(Suggested({{CheckCases::kCan, CheckCases::kWhole, "<Anything/>"}}), Json());
}

TEST(CheckReportTest, TheRightNameIsSuggestedForAMisspelledErrorList)
{
    EXPECT_EQ(Suggested({{CheckCases::kList, CheckCases::kWhole, "<Faultkeeper><ErorList/></Faultkeeper>"}}),
              "ErrorList");
}

TEST(CheckReportTest, NothingFoundIsADocumentToo)
{
    EXPECT_EQ(CheckDocument(Checked({})).dump(), "{\"errors\":0,\"warnings\":0,\"files\":4,\"findings\":[]}");
}

TEST(CheckReportTest, TheFirstBrokenRuleIsTheOneThatLoadingMeetsFirst)
{
    // trigger sets are read behind all definitions
    const SCheckResult result = Checked({{CheckCases::kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power"},
                                         {CheckCases::kCan, "\"Medium\"", "\"medium\""}});
    ASSERT_NE(result.FirstBrokenRule(), nullptr);
    EXPECT_EQ(result.findings.front().what.file, "positioning.xml");
    EXPECT_EQ(result.FirstBrokenRule()->what.file, "can.xml");
}

TEST(CheckReportTest, WithoutABrokenRuleThereIsNoFirstOne)
{
    EXPECT_EQ(Checked({CheckCases::Without(CheckCases::kList)}).FirstBrokenRule(), nullptr);
}

TEST(CheckReportTest, WhatStandsInFilesCanNotSteerATerminal)
{
    const std::string text = CheckText(Checked({{CheckCases::kList, "\"can.xml\"", "\"&#10;&#9;x\""}}));
    EXPECT_EQ(text, "FaultkeeperConfig.xml:4:30: error: module file \\x0A\\x09x: No such file or directory\n"
                    "1 error, 0 warnings in 4 files\n");
}

TEST(CheckReportTest, AFindingIsToldOnceHoweverOftenTheFileIsListed)
{
    const std::string text =
        CheckText(Checked({{CheckCases::kCan, "\"Medium\"", "\"medium\""},
                           {CheckCases::kList, "  </ErrorList>",
                            "    <Module identifier=\"System\" file=\"can.xml\"/>\n  </ErrorList>"}}));
    EXPECT_EQ(text, "can.xml:4:29: error: unknown severity \"medium\"; did you mean \"Medium\"? "
                    "[rule 143: errorSeverity != eesUnknown]\n"
                    "1 error, 0 warnings in 4 files\n");
}

TEST(CheckReportTest, SeveralFindingsAtOnePlaceAreToldOnceHoweverOftenTheFileIsListed)
{
    const std::string text =
        CheckText(Checked({{CheckCases::kCan,
                            "        <Text type=\"problem\" text=\"The bus has no power.\"/>\n"
                            "        <Text type=\"solution\" text=\"Check the fuse.\"/>\n",
                            ""},
                           {CheckCases::kList, "  </ErrorList>",
                            "    <Module identifier=\"System\" file=\"can.xml\"/>\n  </ErrorList>"}}));
    EXPECT_EQ(text, "can.xml:4:7: error: this \"Error\" has no text \"problem\" "
                    "[rule 197: !newError.ProblemText().empty()]\n"
                    "can.xml:4:7: error: this \"Error\" has no text \"solution\" "
                    "[rule 198: !newError.SolutionText().empty()]\n"
                    "2 errors, 0 warnings in 4 files\n");
}

} // namespace
