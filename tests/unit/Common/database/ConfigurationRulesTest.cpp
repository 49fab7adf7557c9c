#include <Faultkeeper/ErrorDatabase.h>

#include "support/FreshDirectory.h"
#include "unit/Common/fixtures/ConfigurationText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>

// Broken configuration ends the process with the C library's assertion message. Support staff search logs for
// it, so every line is compared whole.
namespace
{

using namespace ConfigurationText;

#define MODULE "Faultkeeper::EModuleIdentifier"
#define SUBMODULE "Faultkeeper::ESubModuleIdentifier"
#define NODE "const Core::IO::XMLNode&"

const char* const kConstructor = "Faultkeeper::CErrorDatabase::CErrorDatabase(const std::string&)";
const char* const kLoadModule =
    "void Faultkeeper::CErrorDatabase::LoadModule(" MODULE ", const std::string&)";
const char* const kLoadSubModule =
    "void Faultkeeper::CErrorDatabase::LoadSubModule(" MODULE ", " SUBMODULE ", " NODE ")";
const char* const kLoadError =
    "void Faultkeeper::CErrorDatabase::LoadError(" MODULE ", " SUBMODULE ", Faultkeeper::EProblemIdentifier, "
    "Faultkeeper::EProblemType, Faultkeeper::EErrorSeverity, " NODE ", bool, bool, bool, bool, bool, bool)";
const char* const kLoadTriggerSet =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSet(Faultkeeper::CError&, " NODE ")";
const char* const kLoadOptions =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSetOptions(Faultkeeper::CTriggerSet&, " NODE ")";
const char* const kLoadTriggers =
    "void Faultkeeper::CErrorDatabase::LoadTriggerSetTriggers(Faultkeeper::CError&, "
    "Faultkeeper::CTriggerSet&, " NODE ")";

#undef MODULE
#undef SUBMODULE
#undef NODE

/// A configuration and the rule that stops it.
struct SFault
{
    const char* title;
    int line;
    const char* function;
    const char* condition;
    std::string entries; ///< children of "ErrorList"
    std::string module;  ///< children of the module file's "Module"
};

std::ostream& operator<<(std::ostream& out, const SFault& fault)
{
    return out << fault.title;
}

std::string MessageOf(const SFault& fault)
{
    return ": src/Common/ErrorDatabase:" + std::to_string(fault.line) + ": " + fault.function +
           ": Assertion `" + fault.condition + "' failed.\n";
}

class ConfigurationRulesDeathTest : public testing::TestWithParam<SFault>
{
protected:
    Support::CFreshDirectory m_directory;
};

TEST_P(ConfigurationRulesDeathTest, StopsTheLoad)
{
    WriteList(m_directory.Prefix(), GetParam().entries);
    WriteModule(m_directory.Prefix(), GetParam().module);
    EXPECT_EXIT(Faultkeeper::CErrorDatabase(m_directory.Prefix()), testing::KilledBySignal(SIGABRT),
                testing::HasSubstr(MessageOf(GetParam())));
}

std::string TitleOf(const testing::TestParamInfo<SFault>& info)
{
    return info.param.title;
}

// A fault in the list, in a module file, inside "Error", inside a "TriggerSet", in "Options" and in
// "Triggers".
SFault InList(const char* title, int line, const char* condition, const std::string& entries)
{
    return {title, line, kConstructor, condition, entries, WholeError("No Data")};
}

SFault InModule(const char* title, int line, const char* function, const char* condition,
                const std::string& module)
{
    return {title, line, function, condition, kEntry, module};
}

SFault InProblem(const char* title, int line, const char* condition, const std::string& errors)
{
    return InModule(title, line, kLoadSubModule, condition, SubModule(Problem(errors)));
}

SFault InError(const char* title, int line, const char* condition, const std::string& content)
{
    return InModule(title, line, kLoadError, condition, SubModule(Problem(Error(content))));
}

SFault InSets(const char* title, int line, const char* function, const char* condition,
              const std::string& sets)
{
    return InModule(title, line, function, condition, WholeError("No Data", TriggerSets(sets)));
}

SFault InOptions(const char* title, int line, const char* condition, const std::string& options)
{
    return InSets(title, line, kLoadOptions, condition, TriggerSet(Options(options)));
}

SFault InTriggers(const char* title, int line, const char* condition, const std::string& triggers)
{
    return InSets(title, line, kLoadTriggers, condition, TriggerSet(Triggers(triggers)));
}

const char* const kIsModule = "moduleNode.Name() == \"Module\"";
const char* const kModuleKnown = "moduleId != emiUnknown";
const char* const kIsSubModule = "subModuleNode.Name() == \"SubModule\"";
const char* const kSubModuleKnown = "subModuleId != esmiUnknown";
const char* const kIsProblem = "problemNode.Name() == \"Problem\"";
const char* const kProblemKnown = "problemId != epiUnknown";
const char* const kIsError = "errorNode.Name() == \"Error\"";
const char* const kErrorIdentified = "!errorIdentifier.empty()";
const char* const kSeverityKnown = "errorSeverity != eesUnknown";
const char* const kIsText = "textNode.Name() == \"Text\"";
const char* const kTypeGiven = "!textType.empty()";
const char* const kTextGiven = "!textContent.empty()";
const char* const kProblemGiven = "!newError.ProblemText().empty()";
const char* const kSolutionGiven = "!newError.SolutionText().empty()";
const char* const kShortGiven = "!newError.ShortProblemText().empty()";
const char* const kIsTriggerSet = "triggerSet.Name() == \"TriggerSet\"";
const char* const kIsOption = "optionNode.Name() == \"Option\"";
const char* const kNameGiven = "!name.empty()";
const char* const kValueGiven = "!value.empty()";
const char* const kIsTrigger = "triggerNode.Name() == \"Trigger\"";
const char* const kIdGiven = "!identifier.empty()";
const char* const kFourFields = "subStrings.size() == 4";

const std::string kAnyEntry = R"(<Module identifier="Nowhere" file="module.xml"/>)";

// ---- Every rule; the failing split has a program of its own

INSTANTIATE_TEST_SUITE_P(
    List, ConfigurationRulesDeathTest,
    testing::Values(
        InList("AnElementOtherThanModule", 40, kIsModule, "<Note/>"),
        InList("AModuleElementInLowerCase", 40, kIsModule, R"(<module identifier="GPS" file="module.xml"/>)"),
        InList("AnUnknownModule", 47, kModuleKnown, kAnyEntry),
        InList("AModuleInLowerCase", 47, kModuleKnown, R"(<Module identifier="gps" file="module.xml"/>)"),
        InList("AModuleWithoutIdentifier", 47, kModuleKnown, R"(<Module file="module.xml"/>)"),
        InList("AModuleOfEmptyIdentifier", 47, kModuleKnown, R"(<Module identifier="" file="module.xml"/>)"),
        InList("AnUnknownModuleOfAMissingFile", 47, kModuleKnown,
               R"(<Module identifier="X" file="none.xml"/>)")),
    TitleOf);

INSTANTIATE_TEST_SUITE_P(
    Module, ConfigurationRulesDeathTest,
    testing::Values(
        InModule("AnElementOtherThanSubModule", 91, kLoadModule, kIsSubModule, Problem("")),
        InModule("AnUnknownSubModule", 97, kLoadModule, kSubModuleKnown, SubModule("", "No Data")),
        InModule("ASubModuleWithoutIdentifier", 97, kLoadModule, kSubModuleKnown, "<SubModule/>"),
        InModule("AnElementOtherThanProblem", 111, kLoadSubModule, kIsProblem, SubModule(Error(kTexts))),
        InModule("AnUnknownProblem", 117, kLoadSubModule, kProblemKnown, SubModule(Problem("", "GPS"))),
        InModule("AProblemInLowerCase", 117, kLoadSubModule, kProblemKnown,
                 SubModule(Problem("", "no data"))),
        InModule("AProblemWithoutIdentifier", 117, kLoadSubModule, kProblemKnown, SubModule("<Problem/>"))),
    TitleOf);

INSTANTIATE_TEST_SUITE_P(Problem, ConfigurationRulesDeathTest,
                         testing::Values(InProblem("AnElementOtherThanError", 125, kIsError, kProblemText),
                                         InProblem("AnErrorWithoutIdentifier", 136, kErrorIdentified,
                                                   Error(kTexts, R"(severity="High")")),
                                         InProblem("AnErrorOfEmptyIdentifier", 136, kErrorIdentified,
                                                   Error(kTexts, R"(identifier="" severity="High")")),
                                         InProblem("AnErrorWithoutSeverity", 143, kSeverityKnown,
                                                   Error(kTexts, R"(identifier="RootCauseUnknown")")),
                                         InProblem("AnErrorOfEmptySeverity", 143, kSeverityKnown,
                                                   Error(kTexts, R"(identifier="2" severity="")")),
                                         InProblem("AnErrorOfUnknownSeverity", 143, kSeverityKnown,
                                                   Error(kTexts, R"(identifier="2" severity="3")")),
                                         InProblem("ASeverityInLowerCase", 143, kSeverityKnown,
                                                   Error(kTexts, R"(identifier="2" severity="critical")"))),
                         TitleOf);

INSTANTIATE_TEST_SUITE_P(
    Error, ConfigurationRulesDeathTest,
    testing::Values(
        InError("AnUnknownElement", 178, kIsText, kTexts + "<Note/>"),
        InError("ATextElementInLowerCase", 178, kIsText, kTexts + R"(<text type="title" text="GPS"/>)"),
        InError("ATriggerSetWithoutItsTriggerSets", 178, kIsText, kTexts + TriggerSet("")),
        InError("ATextWithoutType", 183, kTypeGiven, kTexts + R"(<Text text="x"/>)"),
        InError("ATextOfEmptyType", 183, kTypeGiven, kTexts + R"(<Text type="" text="x"/>)"),
        InError("ATextWithoutText", 184, kTextGiven, kTexts + R"(<Text type="title"/>)"),
        InError("ATextOfEmptyText", 184, kTextGiven, kTexts + R"(<Text type="title" text=""/>)"),
        InError("ATextOfUnknownTypeWithoutText", 184, kTextGiven, kTexts + R"(<Text type="other"/>)"),
        InError("ATextThatIsContentOnly", 184, kTextGiven, R"(<Text type="problem">No data</Text>)"),
        InError("AnErrorWithoutProblemText", 197, kProblemGiven, kSolutionText + kShortText),
        InError("AnErrorWithoutSolutionText", 198, kSolutionGiven, kShortText + kProblemText),
        InError("AnErrorWithoutShortProblemText", 199, kShortGiven,
                kProblemText + kSolutionText + R"(<Text type="title" text="GPS"/>)"),
        InError("TextTypesAreCaseSensitive", 199, kShortGiven,
                kProblemText + kSolutionText + R"(<Text type="shortproblem" text="GPS"/>)")),
    TitleOf);

INSTANTIATE_TEST_SUITE_P(
    TriggerSets, ConfigurationRulesDeathTest,
    testing::Values(
        InSets("AnElementOtherThanTriggerSet", 219, kLoadTriggerSet, kIsTriggerSet, Triggers("")),
        InOptions("AnElementOtherThanOption", 249, kIsOption, Trigger("Positioning:GPS:No Data:1")),
        InOptions("AnOptionWithoutName", 254, kNameGiven, R"(<Option value="yes"/>)"),
        InOptions("AnOptionOfEmptyName", 254, kNameGiven, Option("", "yes")),
        InOptions("AnOptionWithoutValue", 255, kValueGiven, R"(<Option name="autoTrigger"/>)"),
        InOptions("AnOptionOfEmptyValue", 255, kValueGiven, Option("triggersNeeded", "")),
        InOptions("AnUnknownOptionOfEmptyValue", 255, kValueGiven, Option("colour", "")),
        InTriggers("AnElementOtherThanTrigger", 287, kIsTrigger, Option("autoTrigger", "yes")),
        InTriggers("ATriggerWithoutId", 291, kIdGiven, "<Trigger/>"),
        InTriggers("ATriggerOfEmptyId", 291, kIdGiven, Trigger("")),
        InTriggers("AnIdOfOneField", 297, kFourFields, Trigger("Positioning")),
        InTriggers("AnIdOfThreeFields", 297, kFourFields, Trigger("Positioning:GPS:No Data")),
        InTriggers("AnIdOfFiveFields", 297, kFourFields, Trigger("Positioning:GPS:No Data:1:1")),
        InTriggers("AnIdOfFiveFieldsTheLastEmpty", 297, kFourFields, Trigger("Positioning:GPS:No Data:1:")),
        InTriggers("AnIdOfUnknownModule", 304, kModuleKnown, Trigger("Nowhere:GPS:No Data:1")),
        InTriggers("AnIdOfAModuleWithABlankBehind", 304, kModuleKnown, Trigger("Positioning :GPS:No Data:1")),
        InTriggers("AnIdOfUnknownSubModule", 305, kSubModuleKnown, Trigger("Positioning:No Data:No Data:1")),
        InTriggers("AnIdOfEmptySubModule", 305, kSubModuleKnown, Trigger("Positioning::No Data:1")),
        InTriggers("AnIdOfASubModuleWithABlankBefore", 305, kSubModuleKnown, Trigger("GPS: GPS:No Data:1")),
        InTriggers("AnIdOfUnknownProblem", 306, kProblemKnown, Trigger("Positioning:GPS:no data:1")),
        InTriggers("AnIdOfAnUnassignedProblem", 306, kProblemKnown, Trigger("Positioning:GPS::1"))),
    TitleOf);

// ---- Which of two broken rules is reported

const std::string kBrokenSubModule = SubModule("", "Nothing");
const std::string kBrokenError = SubModule(Problem(Error("")), "Bus");
const std::string kBrokenSets = WholeError("No Data", TriggerSets("<Note/>"));

INSTANTIATE_TEST_SUITE_P(
    FirstComes, ConfigurationRulesDeathTest,
    testing::Values(InList("TheElementBeforeItsIdentifier", 40, kIsModule, R"(<Note identifier="Nowhere"/>)"),
                    SFault{"TheFirstFileBeforeTheSecondEntry", 97, kLoadModule, kSubModuleKnown,
                           kEntry + "<Note/>", kBrokenSubModule},
                    SFault{"TheSecondEntryBeforeTheFirstFilesTriggers", 47, kConstructor, kModuleKnown,
                           kEntry + kAnyEntry, kBrokenSets},
                    InModule("TheSubModuleElementBeforeItsIdentifier", 91, kLoadModule, kIsSubModule,
                             R"(<Submodule identifier="Nothing"/>)"),
                    InModule("TheSubModuleBeforeItsContent", 97, kLoadModule, kSubModuleKnown,
                             SubModule("<Note/>", "Nothing")),
                    InModule("TheFirstSubModulesContentBeforeTheSecond", 111, kLoadSubModule, kIsProblem,
                             SubModule("<Note/>") + kBrokenSubModule),
                    InModule("TheProblemElementBeforeItsIdentifier", 111, kLoadSubModule, kIsProblem,
                             SubModule(R"(<Note identifier="Nothing"/>)")),
                    InModule("TheProblemBeforeItsContent", 117, kLoadSubModule, kProblemKnown,
                             SubModule(Problem("<Note/>", "Nothing"))),
                    InProblem("TheErrorElementBeforeItsIdentifier", 125, kIsError, Element("Fault", "", "")),
                    InProblem("TheIdentifierBeforeTheSeverity", 136, kErrorIdentified, Error("<Note/>", "")),
                    InProblem("TheSeverityBeforeTheContent", 143, kSeverityKnown,
                              Error("<Note/>", R"(identifier="2" severity="None")")),
                    InError("TheElementBeforeItsType", 178, kIsText, R"(<Note type="" text=""/>)"),
                    InError("TheTypeBeforeTheText", 183, kTypeGiven, "<Text/>"),
                    InError("TheChildrenInTheirOrder", 184, kTextGiven, R"(<Text type="problem"/><Note/>)"),
                    InError("TheContentBeforeWhatIsMissing", 178, kIsText, "<Note/>"),
                    InError("TheProblemTextBeforeTheOthers", 197, kProblemGiven, ""),
                    InError("TheSolutionTextBeforeTheShortOne", 198, kSolutionGiven, kProblemText),
                    InModule("AnErrorsTextsBeforeTheNextError", 199, kLoadError, kShortGiven,
                             SubModule(Problem(Error(kProblemText + kSolutionText) + "<Note/>"))),
                    InModule("TheLastErrorBeforeTheFirstTriggers", 197, kLoadError, kProblemGiven,
                             kBrokenSets + kBrokenError)),
    TitleOf);

INSTANTIATE_TEST_SUITE_P(
    FirstComesOfTriggers, ConfigurationRulesDeathTest,
    testing::Values(
        InSets("TheFirstSetsContentBeforeTheSecondSet", 254, kLoadOptions, kNameGiven,
               TriggerSet(Options("<Option/>")) + "<Note/>"),
        InSets("TriggersAndOptionsInTheirOrder", 287, kLoadTriggers, kIsTrigger,
               TriggerSet(Triggers("<Note/>") + Options("<Note/>"))),
        InOptions("TheOptionElementBeforeItsName", 249, kIsOption, R"(<Note name="" value=""/>)"),
        InOptions("TheNameBeforeTheValue", 254, kNameGiven, Option("", "")),
        InTriggers("TheTriggerElementBeforeItsId", 287, kIsTrigger, R"(<Note id=""/>)"),
        InTriggers("TheFieldCountBeforeTheNames", 297, kFourFields, Trigger("Nowhere:Nothing:None")),
        InTriggers("TheModuleBeforeTheOtherNames", 304, kModuleKnown, Trigger(":::")),
        InTriggers("TheSubModuleBeforeTheProblem", 305, kSubModuleKnown, Trigger("Positioning:x:x:x")),
        InModule("ErrorsInTheOrderOfTheFileNotOfTheirNumbers", 249, kLoadOptions, kIsOption,
                 WholeError("No Network", TriggerSets(TriggerSet(Options("<Note/>")))) + kBrokenSets)),
    TitleOf);

// ---- What all of the above are bent from

TEST(ConfigurationRulesTest, TheSameConfigurationWithoutFaultLoads)
{
    const Support::CFreshDirectory directory;
    WriteList(directory.Prefix(), kEntry);
    WriteModule(
        directory.Prefix(),
        WholeError("No Data", TriggerSets(TriggerSet(Options(Option("autoTrigger", "yes")) +
                                                     Triggers(Trigger("Positioning:GPS:No Data:1"))))));
    const Faultkeeper::CErrorDatabase database(directory.Prefix());
    EXPECT_TRUE(database.Loaded());
    EXPECT_EQ(database.GetErrorList().size(), 1u);
}

} // namespace
