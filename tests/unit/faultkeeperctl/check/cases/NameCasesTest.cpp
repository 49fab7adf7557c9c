#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Words that the library does not know and passes over.
const SCheckCase kNameCases[] = {
    {"AnUnknownAttributeOfAnError",
     {{kPositioning, "shouldBeep=\"yes\"", "shuoldBeep=\"yes\""}},
     "positioning.xml:27:61: warning: unknown attribute \"shuoldBeep\"; did you mean \"shouldBeep\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownAttributeInTheWrongCase",
     {{kPositioning, "visible=\"yes\"", "Visible=\"yes\""}},
     "positioning.xml:4:81: warning: unknown attribute \"Visible\"; did you mean \"visible\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownAttributeOfAModule",
     {{kList, "file=\"can.xml\"", "file=\"can.xml\" optional=\"yes\""}},
     "FaultkeeperConfig.xml:4:45: warning: unknown attribute \"optional\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownAttributeOfAnElementWithoutAny",
     {{kPositioning, "<Triggers>", "<Triggers all=\"yes\">"}},
     "positioning.xml:18:23: warning: unknown attribute \"all\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownAttributeOfATrigger",
     {{kPositioning, "<Trigger id=\"CAN:Bus:Power:4\"/>", "<Trigger id=\"CAN:Bus:Power:4\" note=\"fuse\"/>"}},
     "positioning.xml:20:45: warning: unknown attribute \"note\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownAttributeOfAPattern",
     {{kPatterns, "allowPartialMatch=\"yes\"", "allowPartialMach=\"yes\""}},
     "ErrorPatterns.xml:7:30: warning: unknown attribute \"allowPartialMach\"; did you mean "
     "\"allowPartialMatch\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ACodeUnderAnotherName",
     {{kPatterns, "fixedCode=\"P-2\"", "fixCode=\"P-2\""}},
     "ErrorPatterns.xml:7:14: warning: unknown attribute \"fixCode\"; did you mean \"fixedCode\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWhoseCodeBelongsToSomebodyElse",
     {{kPatterns, "fixedCode=\"P-2\"", "x:fixedCode=\"P-2\""}},
     "ErrorPatterns.xml:7:5: warning: this \"pattern\" has no \"fixedCode\" and is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ACodeUnderANameThatNobodyCouldMean",
     {{kPatterns, "fixedCode=\"P-2\"", "number=\"P-2\""}},
     "ErrorPatterns.xml:7:5: warning: this \"pattern\" has no \"fixedCode\" and is not read\n"
     "ErrorPatterns.xml:7:14: warning: unknown attribute \"number\"\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"AnIdUnderAnotherName",
     {{kPatterns, "<error id=", "<error ID="}},
     "ErrorPatterns.xml:4:14: warning: unknown attribute \"ID\"; did you mean \"id\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFlagThatIsTrue",
     {{kPositioning, "visible=\"yes\"", "visible=\"true\""}},
     "positioning.xml:4:81: warning: \"visible\" is \"true\", which counts as \"no\": write \"yes\" or "
     "\"no\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFlagInCapitals",
     {{kPositioning, "shouldBeep=\"yes\"", "shouldBeep=\"YES\""}},
     "positioning.xml:27:61: warning: \"shouldBeep\" is \"YES\", which counts as \"no\"; did you mean "
     "\"yes\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnEmptyFlag",
     {{kCan, "visible=\"no\"", "visible=\"\""}},
     "can.xml:4:47: warning: \"visible\" is \"\", which counts as \"no\": write \"yes\" or \"no\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFlagOfASet",
     {{kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"Yes\""}},
     "positioning.xml:13:42: warning: \"autoTrigger\" is \"Yes\", which counts as \"no\"; did you mean "
     "\"yes\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFlagOfAPattern",
     {{kPatterns, "allowPartialMatch=\"no\"", "allowPartialMatch=\"0\""}},
     "ErrorPatterns.xml:3:30: warning: \"allowPartialMatch\" is \"0\", which counts as \"no\": write \"yes\" "
     "or \"no\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownOption",
     {{kPositioning, "\"triggersNeeded\"", "\"triggerNeeded\""}},
     "positioning.xml:14:23: warning: unknown option \"triggerNeeded\"; did you mean \"triggersNeeded\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownOptionThatNobodyCouldMean",
     {{kPositioning, "\"triggersNeeded\"", "\"delay\""}},
     "positioning.xml:14:23: warning: unknown option \"delay\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownWayOfLinking",
     {{kPositioning, "\"verbose\"", "\"verbos\""}},
     "positioning.xml:15:43: warning: unknown way of linking \"verbos\"; did you mean \"verbose\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownSourceOfTitles",
     {{kPositioning, "value=\"trigger\"", "value=\"triggers\""}},
     "positioning.xml:16:42: warning: unknown source of titles \"triggers\"; did you mean \"trigger\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownTypeOfText",
     {{kPositioning, "\"title\"", "\"tittle\""}},
     "positioning.xml:5:15: warning: unknown type of text \"tittle\"; did you mean \"title\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownTypeOfTextBesideAMissingTitle",
     {{kPositioning, "type=\"title\" text=\"No Satellites\"", "type=\"problems\" text=\"No Satellites\""}},
     "positioning.xml:4:7: warning: this \"Error\" is visible but has no text \"title\"\n"
     "positioning.xml:5:15: warning: unknown type of text \"problems\"; did you mean \"problem\"?\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"AnUnknownTypeOfTextInPlaceOfOneThatIsNeeded",
     {{kCan, "\"shortProblem\"", "\"shortproblem\""}},
     "can.xml:4:7: error: this \"Error\" has no text \"shortProblem\" [rule 199: "
     "!newError.ShortProblemText().empty()]\n"
     "can.xml:8:15: warning: unknown type of text \"shortproblem\"; did you mean \"shortProblem\"?\n"
     "1 error, 1 warning in 4 files\n"},
    {"AnUnknownFailureMode",
     {{kPositioning, "\"AbnormalUpdateRate\"", "\"AbnormalUpdateRat\""}},
     "positioning.xml:27:14: warning: unknown failure mode \"AbnormalUpdateRat\", so that the error gets "
     "number 21; did you mean \"AbnormalUpdateRate\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnUnknownFailureModeThatNobodyCouldMean",
     {{kCan, "identifier=\"4\"", "identifier=\"22\""}, {kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:21"}},
     "can.xml:4:14: warning: unknown failure mode \"22\", so that the error gets number 21\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFailureModeWithTrailingText",
     {{kCan, "identifier=\"4\"", "identifier=\"4a\""}},
     "can.xml:4:14: warning: unknown failure mode \"4a\", so that the error gets number 4\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASkippedElementInTheTopOfTheList",
     {{kList, "  <ErrorList>",
       "  <Version number=\"3\"/>\n"
       "  <ErrorList>"}},
     "FaultkeeperConfig.xml:2:3: warning: \"Version\" in \"Faultkeeper\" is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASecondErrorList",
     {{kList, "  </ErrorList>",
       "  </ErrorList>\n"
       "  <ErrorList>\n"
       "    <Anything/>\n"
       "  </ErrorList>"}},
     "FaultkeeperConfig.xml:6:3: warning: a second \"ErrorList\" is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASkippedElementInASet",
     {{kPositioning, "<Triggers>", "<triggers>"}, {kPositioning, "</Triggers>", "</triggers>"}},
     "positioning.xml:18:13: warning: unknown element \"triggers\"; did you mean \"Triggers\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnElementInAText",
     {{kCan, " text=\"Check the fuse.\"/>", " text=\"Check the fuse.\"><b/></Text>"}},
     "can.xml:7:54: warning: \"b\" in \"Text\" is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"StrayTextInASet",
     {{kPositioning, "            <Options>",
       "            one of\n"
       "            <Options>"}},
     "positioning.xml:11:11: warning: text between the tags of \"TriggerSet\" is not read: all values are "
     "attributes\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnElementThatIsNoPattern",
     {{kPatterns, "    <pattern fixedCode=\"P-1\"", "    <Pattern fixedCode=\"P-1\""},
      {kPatterns,
       "</pattern>\n"
       "    <pattern",
       "</Pattern>\n"
       "    <pattern"}},
     "ErrorPatterns.xml:3:5: warning: unknown element \"Pattern\"; did you mean \"pattern\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"TextOfAnotherEncoding",
     {{kCan, "<Module>",
       "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
       "<Module>"},
      {kCan, "<SubModule identifier=\"Bus\">", "<!-- \374\374\374 --><SubModule identifier=\"B\374s\">"}},
     "can.xml:3:26: error: unknown sub-module \"Büs\"; did you mean \"Bus\"? [rule 97: subModuleId != "
     "esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Name, CheckTest, testing::ValuesIn(kNameCases), NameOf);

} // namespace
