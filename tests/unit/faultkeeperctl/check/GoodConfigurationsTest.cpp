#include "faultkeeperctl/check/CheckReport.h"

#include "common/text/ErrorNames.h"

#include "cases/CheckCase.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

namespace
{

using namespace Faultkeeper::Apps;
using Support::CConfigurationBuilder;
using Support::CFreshDirectory;
using Support::STestError;
using Support::STestTriggerSet;

const char* const kNoCodes = "<ErrorPatterns>\n<Patterns/>\n</ErrorPatterns>\n";

std::string Checked(const std::string& prefix)
{
    return CheckText(CheckConfiguration(prefix, 0));
}

/// What is told of a configuration without patterns of its own.
std::string Checked(const CConfigurationBuilder& builder)
{
    const CFreshDirectory directory;
    builder.WriteTo(directory.Prefix());
    Support::WriteFile(directory.File("ErrorPatterns.xml"), kNoCodes);
    return Checked(directory.Prefix());
}

std::string CheckedEdited(const std::vector<CheckCases::SEdit>& edits)
{
    const CFreshDirectory directory;
    CheckCases::WriteEdited(directory.Prefix(), edits);
    return Checked(directory.Prefix());
}

const char* const kNothingInFour = "0 errors, 0 warnings in 4 files\n";

TEST(GoodConfigurationTest, NothingIsToldOfTheExample)
{
    EXPECT_EQ(Checked(FAULTKEEPER_TEST_EXAMPLE), "0 errors, 0 warnings in 14 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfTheOneThatCasesAreMadeFrom)
{
    EXPECT_EQ(CheckedEdited({}), kNothingInFour);
}

TEST(GoodConfigurationTest, NothingIsToldOfOneError)
{
    EXPECT_EQ(Checked(CConfigurationBuilder().Leaf("Positioning:GPS:No Data:2")),
              "0 errors, 0 warnings in 3 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfThreeLevels)
{
    EXPECT_EQ(Checked(CConfigurationBuilder()
                          .Leaf("CAN:Bus:Power:4")
                          .Leaf("CAN:Bus:Data:9")
                          .Parent("CAN:Bus:Communications:11", {"CAN:Bus:Power:4", "CAN:Bus:Data:9"}, 2)
                          .Parent("System:Operation:Attention Required:11", {"CAN:Bus:Communications:11"})),
              "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfAnErrorBelowTwoParents)
{
    EXPECT_EQ(Checked(CConfigurationBuilder()
                          .Leaf("CAN:Bus:Power:4")
                          .Parent("CAN:Bus:Communications:11", {"CAN:Bus:Power:4"})
                          .Parent("System:Battery:Power:11", {"CAN:Bus:Power:4"})),
              "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfTwoAutomaticSetsWithTheSameTriggers)
{
    STestTriggerSet any;
    any.triggers = {"CAN:Bus:Power:4", "CAN:Bus:Data:9"};
    STestTriggerSet both = any;
    both.triggersNeeded = 2;
    both.errorLinking = "shallow";
    STestError parent;
    parent.name = "CAN:Bus:Communications:11";
    parent.sets = {any, both};
    EXPECT_EQ(Checked(CConfigurationBuilder().Leaf("CAN:Bus:Power:4").Leaf("CAN:Bus:Data:9").Add(parent)),
              "0 errors, 0 warnings in 3 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfASetThatOnlyExplainsAVisibleError)
{
    STestTriggerSet set;
    set.autoTrigger = false;
    set.errorLinking = "verbose";
    set.triggers = {"CAN:Bus:Power:4"};
    STestError parent;
    parent.name = "CAN:Bus:Communications:11";
    parent.sets = {set};
    EXPECT_EQ(Checked(CConfigurationBuilder().Leaf("CAN:Bus:Power:4").Add(parent)),
              "0 errors, 0 warnings in 3 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfAnInvisibleErrorThatExplainsAVisibleOne)
{
    STestTriggerSet set;
    set.autoTrigger = false;
    set.triggers = {"CAN:Bus:Power:4"};
    STestError hidden;
    hidden.name = "CAN:Bus:Communications:11";
    hidden.sets = {set};
    hidden.flags = "";
    EXPECT_EQ(Checked(CConfigurationBuilder()
                          .Leaf("CAN:Bus:Power:4")
                          .Add(hidden)
                          .Parent("System:Battery:Power:11", {"CAN:Bus:Communications:11"})),
              "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfAsManyErrorsAsTheTableHolds)
{
    CConfigurationBuilder builder;
    for (int error = 0; error < 400; ++error)
        builder.Leaf(ErrorName(0x10000 | (1 + error / 20) << 8 | 1, error % 20));
    EXPECT_EQ(Checked(builder), "0 errors, 0 warnings in 3 files\n");
}

TEST(GoodConfigurationTest, AnInvisibleErrorAndANoticeNeedNoTitle)
{
    STestError hidden;
    hidden.name = "CAN:Bus:Power:4";
    hidden.title = "-";
    hidden.flags = "shouldBeep=\"yes\" visible=\"no\"";
    STestError notice = hidden;
    notice.name = "CAN:Bus:Power:5";
    notice.severity = "Low";
    notice.flags = "visible=\"yes\"";
    EXPECT_EQ(Checked(CConfigurationBuilder().Add(hidden).Add(notice)), "0 errors, 0 warnings in 3 files\n");
}

TEST(GoodConfigurationTest, AnErrorThatRaisesItsParentNeedsNoTitle)
{
    EXPECT_EQ(
        CheckedEdited({{CheckCases::kCan, "        <Text type=\"title\" text=\"Bus Without Power\"/>\n", ""},
                       {CheckCases::kCan, "visible=\"no\"", "visible=\"yes\""},
                       {CheckCases::kPositioning, "value=\"trigger\"", "value=\"parent\""}}),
        kNothingInFour);
}

/// An error without a title that is raised by others and stands below another.
STestError Untitled(const std::string& titleSource, const std::vector<std::string>& triggers)
{
    STestTriggerSet set;
    set.titleSource = titleSource;
    set.triggers = triggers;
    STestError untitled;
    untitled.name = "CAN:Bus:Communications:11";
    untitled.title = "-";
    untitled.flags = "";
    untitled.sets = {set};
    return untitled;
}

/// A visible error with one set that takes the title of its triggers.
STestError TitledByTriggers(const std::vector<std::string>& triggers, int needed = 1,
                            const std::string& linking = "")
{
    STestTriggerSet set;
    set.titleSource = "trigger";
    set.triggers = triggers;
    set.triggersNeeded = needed;
    set.errorLinking = linking;
    STestError titled;
    titled.name = "System:Operation:Attention Required:11";
    titled.sets = {set};
    return titled;
}

TEST(GoodConfigurationTest, ATitleFromFurtherBelowWillDo)
{
    EXPECT_EQ(Checked(CConfigurationBuilder()
                          .Leaf("CAN:Bus:Power:4")
                          .Add(Untitled("trigger", {"CAN:Bus:Power:4"}))
                          .Add(TitledByTriggers({"CAN:Bus:Communications:11"}))),
              "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, ATitleFromThreeLevelsBelowWillDo)
{
    STestError middle = Untitled("", {"CAN:Bus:Communications:11"});
    middle.name = "CAN:Bus:Data:11";
    EXPECT_EQ(Checked(CConfigurationBuilder()
                          .Leaf("CAN:Bus:Power:4")
                          .Add(Untitled("trigger", {"CAN:Bus:Power:4"}))
                          .Add(middle)
                          .Add(TitledByTriggers({"CAN:Bus:Data:11"}))),
              "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, TriggersOfWhichSeveralAreNeededNeedNoTitles)
{
    STestError hidden;
    hidden.title = "-";
    hidden.flags = "";
    hidden.name = "CAN:Bus:Power:4";
    STestError other = hidden;
    other.name = "CAN:Bus:Data:9";
    EXPECT_EQ(Checked(CConfigurationBuilder().Add(hidden).Add(other).Add(
                  TitledByTriggers({"CAN:Bus:Power:4", "CAN:Bus:Data:9"}, 2))),
              "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, ATitleThatNoTreeTakesMayBeMissing)
{
    STestError leaf = Untitled("", {});
    leaf.name = "CAN:Bus:Power:4";
    leaf.sets.clear();
    STestError top = TitledByTriggers({"CAN:Bus:Communications:11"}, 1, "shallow");
    top.sets.front().titleSource = "";
    EXPECT_EQ(
        Checked(CConfigurationBuilder().Add(leaf).Add(Untitled("trigger", {"CAN:Bus:Power:4"})).Add(top)),
        "0 errors, 0 warnings in 4 files\n");
}

TEST(GoodConfigurationTest, NothingIsToldOfTriggerSetsWithoutASet)
{
    for (const char* const empty : {"<TriggerSets/>", "<TriggerSets><!-- none yet --></TriggerSets>"})
        EXPECT_EQ(CheckedEdited({{CheckCases::kCan, "      </Error>", std::string(empty) + "</Error>"}}),
                  kNothingInFour)
            << empty;
}

TEST(GoodConfigurationTest, NothingIsToldOfOptionsThatSayWhatIsUsual)
{
    EXPECT_EQ(CheckedEdited({{CheckCases::kPositioning, "\"verbose\"", "\"deep\""},
                             {CheckCases::kPositioning, "value=\"trigger\"", "value=\"parent\""}}),
              kNothingInFour);
}

TEST(GoodConfigurationTest, NothingIsToldOfNumbersWithBlanksInFrontAndSigns)
{
    for (const char* const one : {"1", " 1", "+1", "&#9;&#10;&#13;+01"})
        EXPECT_EQ(CheckedEdited({{CheckCases::kPositioning, "name=\"triggersNeeded\" value=\"1\"",
                                  "name=\"triggersNeeded\" value=\"" + std::string(one) + "\""}}),
                  kNothingInFour)
            << one;
    for (const char* const four : {"4", "04", " 4", "+4", "&#9;+4"})
        EXPECT_EQ(CheckedEdited(
                      {{CheckCases::kCan, "identifier=\"4\"", "identifier=\"" + std::string(four) + "\""}}),
                  kNothingInFour)
            << four;
    EXPECT_EQ(CheckedEdited({{CheckCases::kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:+4"}}),
              kNothingInFour);
}

TEST(GoodConfigurationTest, NothingIsToldOfASchemaThatEditorsFind)
{
    EXPECT_EQ(CheckedEdited({{CheckCases::kCan, "<Module>",
                              "<Module xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                              "xsi:noNamespaceSchemaLocation=\"Module.xsd\">"}}),
              kNothingInFour);
}

TEST(GoodConfigurationTest, NothingIsToldOfAPatternForAllThatIsLeft)
{
    EXPECT_EQ(CheckedEdited({{CheckCases::kPatterns, "  </Patterns>",
                              "    <pattern fixedCode=\"P-9\" allowPartialMatch=\"yes\"/>\n  </Patterns>"}}),
              kNothingInFour);
}

TEST(GoodConfigurationTest, ThePatternsAndTheirErrorsMayBeCalledOtherwise)
{
    EXPECT_EQ(CheckedEdited({{CheckCases::kPatterns, "<ErrorPatterns>", "<Codes>"},
                             {CheckCases::kPatterns, "</ErrorPatterns>", "</Codes>"},
                             {CheckCases::kPatterns, "<error id", "<fault id"}}),
              kNothingInFour);
}

TEST(GoodConfigurationTest, NothingIsToldOfAFileThatServesTwoModules)
{
    EXPECT_EQ(CheckedEdited({{CheckCases::kList, "  </ErrorList>",
                              "    <Module identifier=\"System\" file=\"can.xml\"/>\n  </ErrorList>"}}),
              kNothingInFour);
}

TEST(GoodConfigurationTest, TextsAsWideAsALineFit)
{
    const CFreshDirectory directory;
    CheckCases::WriteEdited(directory.Prefix(), {});
    EXPECT_EQ(CheckText(CheckConfiguration(directory.Prefix(), 32)), kNothingInFour);
}

TEST(GoodConfigurationTest, LessThanAndAmpersandAreNoMarkup)
{
    for (const char* const text : {"Is it &lt; 9 V &amp; > 0 V?",
                                   "See R&amp;D; C:\\Temp",
                                   "a &lt;- b, a &lt;b and c>.",
                                   "Is p &lt;max and min=3 or x> 5?",
                                   "a &lt;b c=1 d> e",
                                   "Voltage &lt;V min=9.5 V> now",
                                   "&lt;",
                                   "&lt;a",
                                   "&lt;a b='c",
                                   "&amp;",
                                   "&amp;#;",
                                   "&amp;#x;",
                                   "&lt;!",
                                   "&lt;?>",
                                   "\\",
                                   "a &lt;b =>",
                                   "&amp;nameless0123;",
                                   "&amp;ThickSpace123;",
                                   "&amp;abcdefghijklmnopqrstuvwxyzabcdef;",
                                   "&amp;#x12345678901;",
                                   "&lt;john@example.com>"})
        EXPECT_EQ(CheckedEdited({{CheckCases::kCan, "Check the fuse.", text}}), kNothingInFour) << text;
}

} // namespace
