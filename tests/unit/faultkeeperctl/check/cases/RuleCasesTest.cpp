#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Rules over which the library ends the process: each finding names its rule.
const SCheckCase kRuleCases[] = {
    {"AnotherElementInTheList",
     {{kList, "<Module identifier=\"CAN\"", "<Modul identifier=\"CAN\""}},
     "FaultkeeperConfig.xml:4:5: error: unknown element \"Modul\"; did you mean \"Module\"? [rule 40: "
     "moduleNode.Name() == \"Module\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AStrangeElementInTheList",
     {{kList, "<Module identifier=\"CAN\" file=\"can.xml\"/>", "<Include/>"}, SatellitesWithoutBus()},
     "FaultkeeperConfig.xml:4:5: error: unknown element \"Include\" [rule 40: moduleNode.Name() == "
     "\"Module\"]\n"
     "1 error, 0 warnings in 3 files\n"},
    {"AnUnknownModule",
     {{kList, "\"CAN\"", "\"Can\""}},
     "FaultkeeperConfig.xml:4:13: error: unknown module \"Can\"; did you mean \"CAN\"? [rule 47: moduleId != "
     "emiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleWithoutName",
     {{kList, "identifier=\"CAN\" ", ""}},
     "FaultkeeperConfig.xml:4:5: error: this \"Module\" has no \"identifier\" [rule 47: moduleId != "
     "emiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleThatNobodyCouldMean",
     {{kList, "\"CAN\"", "\"Hydraulics and Brakes\""}},
     "FaultkeeperConfig.xml:4:13: error: unknown module \"Hydraulics and Brakes\" [rule 47: moduleId != "
     "emiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnotherElementInAModule",
     {{kCan, "<SubModule identifier=\"Bus\">", "<Submodule identifier=\"Bus\">"},
      {kCan, "</SubModule>", "</Submodule>"}},
     "can.xml:2:3: error: unknown element \"Submodule\"; did you mean \"SubModule\"? [rule 91: "
     "subModuleNode.Name() == \"SubModule\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnUnknownSubModule",
     {{kPositioning, "\"GPS\">", "\"GSP\">"}},
     "positioning.xml:2:14: error: unknown sub-module \"GSP\"; did you mean \"GPS\"? [rule 97: subModuleId "
     "!= esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ASubModuleWithoutName",
     {{kCan, " identifier=\"Bus\"", ""}},
     "can.xml:2:3: error: this \"SubModule\" has no \"identifier\" [rule 97: subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnotherElementInASubModule",
     {{kCan, "<Problem identifier", "<Problems identifier"}, {kCan, "</Problem>", "</Problems>"}},
     "can.xml:3:5: error: unknown element \"Problems\"; did you mean \"Problem\"? [rule 111: "
     "problemNode.Name() == \"Problem\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnUnknownProblem",
     {{kPositioning, "Problem identifier=\"No Data\"", "Problem identifier=\"No data\""}},
     "positioning.xml:3:14: error: unknown problem \"No data\"; did you mean \"No Data\"? [rule 117: "
     "problemId != epiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AProblemWithAnEmptyName",
     {{kCan, "\"Power\"", "\"\""}},
     "can.xml:3:14: error: this \"Problem\" has no \"identifier\" [rule 117: problemId != epiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnotherElementInAProblem",
     {{kCan, "<Error identifier", "<Eror identifier"}, {kCan, "</Error>", "</Eror>"}},
     "can.xml:4:7: error: unknown element \"Eror\"; did you mean \"Error\"? [rule 125: errorNode.Name() == "
     "\"Error\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutFailureMode",
     {{kCan, "identifier=\"4\" ", ""}},
     "can.xml:4:7: error: this \"Error\" has no \"identifier\" [rule 136: !errorIdentifier.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnUnknownSeverity",
     {{kCan, "\"Medium\"", "\"medium\""}},
     "can.xml:4:29: error: unknown severity \"medium\"; did you mean \"Medium\"? [rule 143: errorSeverity != "
     "eesUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutSeverity",
     {{kCan, " severity=\"Medium\"", ""}},
     "can.xml:4:7: error: this \"Error\" has no \"severity\" [rule 143: errorSeverity != eesUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ASeverityThatNobodyCouldMean",
     {{kCan, "\"Medium\"", "\"7\""}},
     "can.xml:4:29: error: unknown severity \"7\" [rule 143: errorSeverity != eesUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnotherElementInAnError",
     {{kCan, "<Text type=\"title\"", "<Txt type=\"title\""}},
     "can.xml:5:9: error: unknown element \"Txt\"; did you mean \"Text\"? [rule 178: textNode.Name() == "
     "\"Text\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AStrangeElementInAnError",
     {{kCan, "<Text type=\"title\" text=\"Bus Without Power\"/>", "<Picture file=\"fuse.png\"/>"}},
     "can.xml:5:9: error: unknown element \"Picture\" [rule 178: textNode.Name() == \"Text\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATextWithoutType",
     {{kCan, "type=\"title\" ", ""}},
     "can.xml:5:9: error: this \"Text\" has no \"type\" [rule 183: !textType.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATextWithoutContent",
     {{kCan, " text=\"Check the fuse.\"", ""}},
     "can.xml:7:9: error: this \"Text\" has no \"text\" [rule 184: !textContent.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnEmptyText",
     {{kCan, "\"Check the fuse.\"", "\"\""}},
     "can.xml:7:31: error: this \"Text\" has no \"text\" [rule 184: !textContent.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATextBetweenTheTags",
     {{kCan, " text=\"Check the fuse.\"/>", ">Check the fuse.</Text>"}},
     "can.xml:7:9: warning: text between the tags of \"Text\" is not read: all values are attributes\n"
     "can.xml:7:9: error: this \"Text\" has no \"text\" [rule 184: !textContent.empty()]\n"
     "1 error, 1 warning in 4 files\n"},
    {"AnErrorWithoutProblemText",
     {{kCan, "        <Text type=\"problem\" text=\"The bus has no power.\"/>\n", ""}},
     "can.xml:4:7: error: this \"Error\" has no text \"problem\" [rule 197: "
     "!newError.ProblemText().empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutSolutionText",
     {{kCan, "        <Text type=\"solution\" text=\"Check the fuse.\"/>\n", ""}},
     "can.xml:4:7: error: this \"Error\" has no text \"solution\" [rule 198: "
     "!newError.SolutionText().empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutShortProblemText",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n", ""}},
     "can.xml:4:7: error: this \"Error\" has no text \"shortProblem\" [rule 199: "
     "!newError.ShortProblemText().empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutTexts",
     {{kCan,
       "        <Text type=\"title\" text=\"Bus Without Power\"/>\n"
       "        <Text type=\"problem\" text=\"The bus has no power.\"/>\n"
       "        <Text type=\"solution\" text=\"Check the fuse.\"/>\n"
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       ""}},
     "positioning.xml:20:24: warning: \"CAN:Bus:Power:4\" has no text \"title\", which this set's trees are "
     "to "
     "be headed with: they are headed with the error's own\n"
     "can.xml:4:7: error: this \"Error\" has no text \"problem\" [rule 197: "
     "!newError.ProblemText().empty()]\n"
     "can.xml:4:7: error: this \"Error\" has no text \"solution\" [rule 198: "
     "!newError.SolutionText().empty()]\n"
     "can.xml:4:7: error: this \"Error\" has no text \"shortProblem\" [rule 199: "
     "!newError.ShortProblemText().empty()]\n"
     "3 errors, 1 warning in 4 files\n"},
    {"AnotherElementInTriggerSets",
     {{kPositioning, "<TriggerSet>", "<TrigerSet>"}, {kPositioning, "</TriggerSet>", "</TrigerSet>"}},
     "positioning.xml:11:11: error: unknown element \"TrigerSet\"; did you mean \"TriggerSet\"? [rule 219: "
     "triggerSet.Name() == \"TriggerSet\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnotherElementInOptions",
     {{kPositioning, "<Option name=\"titleSource\"", "<Opton name=\"titleSource\""}},
     "positioning.xml:16:15: error: unknown element \"Opton\"; did you mean \"Option\"? [rule 249: "
     "optionNode.Name() == \"Option\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnOptionWithoutName",
     {{kPositioning, "name=\"titleSource\" ", ""}},
     "positioning.xml:16:15: error: this \"Option\" has no \"name\" [rule 254: !name.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnOptionWithoutValue",
     {{kPositioning, "name=\"titleSource\" value=\"trigger\"", "name=\"titleSource\""}},
     "positioning.xml:16:15: error: this \"Option\" has no \"value\" [rule 255: !value.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnEmptyOption",
     {{kPositioning, "name=\"titleSource\" value=\"trigger\"", "name=\"\" value=\"\""}},
     "positioning.xml:16:23: error: this \"Option\" has no \"name\" [rule 254: !name.empty()]\n"
     "positioning.xml:16:31: error: this \"Option\" has no \"value\" [rule 255: !value.empty()]\n"
     "2 errors, 0 warnings in 4 files\n"},
    {"AnotherElementInTriggers",
     {{kPositioning, "<Trigger id=\"CAN", "<Triger id=\"CAN"}},
     "positioning.xml:20:15: error: unknown element \"Triger\"; did you mean \"Trigger\"? [rule 287: "
     "triggerNode.Name() == \"Trigger\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerWithoutId",
     {{kPositioning, " id=\"CAN:Bus:Power:4\"", ""}},
     "positioning.xml:20:15: error: this \"Trigger\" has no \"id\" [rule 291: !identifier.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerWithThreeFields",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power"}},
     "positioning.xml:20:24: error: the id \"CAN:Bus:Power\" has 3 fields: it takes four fields, "
     "Module:Sub-module:Problem:Failure mode, such as \"Positioning:GPS:No Data:2\" [rule 297: "
     "subStrings.size() == 4]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerWithFiveFields",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:4:"}},
     "positioning.xml:20:24: error: the id \"CAN:Bus:Power:4:\" has 5 fields: it takes four fields, "
     "Module:Sub-module:Problem:Failure mode, such as \"Positioning:GPS:No Data:2\" [rule 297: "
     "subStrings.size() == 4]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerWithOneField",
     {{kPositioning, "CAN:Bus:Power:4", "Power"}},
     "positioning.xml:20:24: error: the id \"Power\" has 1 field: it takes four fields, "
     "Module:Sub-module:Problem:Failure mode, such as \"Positioning:GPS:No Data:2\" [rule 297: "
     "subStrings.size() == 4]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerOfAnUnknownModule",
     {{kPositioning, "CAN:Bus:Power:4", "CNA:Bus:Power:4"}},
     "positioning.xml:20:24: error: unknown module \"CNA\" in an id; did you mean \"CAN\"? [rule 304: "
     "moduleId != emiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerOfAnUnknownSubModule",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bsu:Power:4"}},
     "positioning.xml:20:24: error: unknown sub-module \"Bsu\" in an id; did you mean \"Bus\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerOfAnUnknownProblem",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:power:4"}},
     "positioning.xml:20:24: error: unknown problem \"power\" in an id; did you mean \"Power\"? [rule 306: "
     "problemId != epiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerWithThreeUnknownNames",
     {{kPositioning, "CAN:Bus:Power:4", "Can:bus:Powr:4"}},
     "positioning.xml:20:24: error: unknown module \"Can\" in an id; did you mean \"CAN\"? [rule 304: "
     "moduleId != emiUnknown]\n"
     "positioning.xml:20:24: error: unknown sub-module \"bus\" in an id; did you mean \"Bus\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "positioning.xml:20:24: error: unknown problem \"Powr\" in an id; did you mean \"Power\"? [rule 306: "
     "problemId != epiUnknown]\n"
     "3 errors, 0 warnings in 4 files\n"},
    {"ATriggerWithAnEmptyField",
     {{kPositioning, "CAN:Bus:Power:4", "CAN::Power:4"}},
     "positioning.xml:20:24: error: unknown sub-module \"\" in an id [rule 305: subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"BlanksAroundAFieldOfATrigger",
     {{kPositioning, "CAN:Bus:Power:4", "CAN: Bus:Power:4"}},
     "positioning.xml:20:24: error: unknown sub-module \" Bus\" in an id; did you mean \"Bus\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"SeveralRulesInSeveralFiles",
     {{kList, "\"CAN\"", "\"CAM\""},
      {kCan, "\"Medium\"", "\"Middle\""},
      {kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Powder:4"},
      {kPositioning, "<SubModule identifier=\"GPS\">", "<SubModule identifier=\"gps\">"},
      {kPositioning, "type=\"title\" ", "tipe=\"title\" "}},
     "FaultkeeperConfig.xml:4:13: error: unknown module \"CAM\"; did you mean \"CAN\"? [rule 47: moduleId != "
     "emiUnknown]\n"
     "positioning.xml:2:14: error: unknown sub-module \"gps\"; did you mean \"GPS\"? [rule 97: subModuleId "
     "!= esmiUnknown]\n"
     "positioning.xml:5:9: error: this \"Text\" has no \"type\" [rule 183: !textType.empty()]\n"
     "positioning.xml:5:15: warning: unknown attribute \"tipe\"; did you mean \"type\"?\n"
     "positioning.xml:20:24: error: unknown problem \"Powder\" in an id; did you mean \"Power\"? [rule 306: "
     "problemId != epiUnknown]\n"
     "can.xml:4:29: error: unknown severity \"Middle\" [rule 143: errorSeverity != eesUnknown]\n"
     "5 errors, 1 warning in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Rule, CheckTest, testing::ValuesIn(kRuleCases), NameOf);

} // namespace
