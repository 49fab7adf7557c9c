#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Friendly codes.
const SCheckCase kPatternCases[] = {
    {"APatternWithoutCode",
     {{kPatterns, " fixedCode=\"P-2\"", ""}},
     "ErrorPatterns.xml:7:5: warning: this \"pattern\" has no \"fixedCode\" and is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithAnEmptyCode",
     {{kPatterns, "\"P-1\"", "\"\""}},
     "ErrorPatterns.xml:3:14: warning: this \"pattern\" has no \"fixedCode\" and is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithAnUndefinedError",
     {{kPatterns, "Communications:9", "Communications:10"}},
     "ErrorPatterns.xml:5:14: warning: no error \"Positioning:GPS:Communications:10\" is defined; did you "
     "mean \"Positioning:GPS:Communications:9\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithAnUnknownModule",
     {{kPatterns, "Positioning:GPS:Communications:9", "Positionin:GPS:Communications:9"}},
     "ErrorPatterns.xml:5:14: warning: unknown module \"Positionin\" in an id; did you mean "
     "\"Positioning\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithThreeUnknownNames",
     {{kPatterns, "Positioning:GPS:Communications:9", "positioning:gps:communications:9"}},
     "ErrorPatterns.xml:5:14: warning: unknown module \"positioning\" in an id; did you mean "
     "\"Positioning\"?\n"
     "ErrorPatterns.xml:5:14: warning: unknown sub-module \"gps\" in an id; did you mean \"GPS\"?\n"
     "ErrorPatterns.xml:5:14: warning: unknown problem \"communications\" in an id; did you mean "
     "\"Communications\"?\n"
     "0 errors, 3 warnings in 4 files\n"},
    {"APatternWithThreeFields",
     {{kPatterns, "Positioning:GPS:Communications:9", "Positioning:GPS:Communications"}},
     "ErrorPatterns.xml:5:14: warning: the id \"Positioning:GPS:Communications\" has 3 fields: it takes four "
     "fields, Module:Sub-module:Problem:Failure mode, such as \"Positioning:GPS:No Data:2\"\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithAnElementWithoutId",
     {{kPatterns, "<error id=\"Positioning:GPS:Communications:9\"/>", "<error/>"}},
     "ErrorPatterns.xml:5:7: warning: this \"error\" has no \"id\" and is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithTheNameOfAFailureMode",
     {{kPatterns, "Communications:9", "Communications:AbnormalUpdateRate"}},
     "ErrorPatterns.xml:5:14: warning: the failure mode in an id is a number, but here it is "
     "\"AbnormalUpdateRate\", which is read as 0; did you mean \"9\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithTwoErrorLists",
     {{kPatterns, "  </Patterns>",
       "  </Patterns>\n"
       "  <Patterns/>"}},
     "ErrorPatterns.xml:11:3: warning: a second \"Patterns\" is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnExactPatternWithoutIds",
     {{kPatterns, "    <pattern fixedCode=\"P-2\"",
       "    <pattern fixedCode=\"P-0\"/>\n"
       "    <pattern fixedCode=\"P-2\""}},
     "ErrorPatterns.xml:7:5: warning: this pattern has no ids and never matches: in every tree there is an "
     "error\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APartialPatternWithAnErrorTwice",
     {{kPatterns, "    <pattern fixedCode=\"P-2\" allowPartialMatch=\"yes\">\n",
       "    <pattern fixedCode=\"P-2\" allowPartialMatch=\"yes\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n"}},
     "ErrorPatterns.xml:9:14: warning: \"Positioning:GPS:No Data:2\" stands twice in this partial pattern, "
     "which makes no difference\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternHiddenByAPartialOne",
     {{kPatterns, "\"no\"", "\"yes\""}, PatternOfSatellitesOnly()},
     "ErrorPatterns.xml:6:5: warning: this pattern never matches: the one in line 3 stands before it and "
     "matches wherever it would\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnExactPatternHiddenByAPartialOne",
     {{kPatterns, "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">",
       "    <pattern fixedCode=\"P-0\" allowPartialMatch=\"yes\">\n"
       "      <error id=\"Positioning:GPS:Communications:9\"/>\n"
       "    </pattern>\n"
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">"}},
     "ErrorPatterns.xml:6:5: warning: this pattern never matches: the one in line 3 stands before it and "
     "matches wherever it would\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnExactPatternHiddenByTheSameOne",
     {{kPatterns,
       "    <pattern fixedCode=\"P-2\" allowPartialMatch=\"yes\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n",
       "    <pattern fixedCode=\"P-2\">\n"
       "      <error id=\"Positioning:GPS:Communications:9\"/>\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n"}},
     "ErrorPatterns.xml:7:5: warning: this pattern never matches: the one in line 3 stands before it and "
     "matches wherever it would\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternWithoutIdsHidesAll",
     {{kPatterns, "    <pattern fixedCode=\"P-1\"",
       "    <pattern fixedCode=\"P-0\" allowPartialMatch=\"yes\"/>\n"
       "    <pattern fixedCode=\"P-1\""}},
     "ErrorPatterns.xml:4:5: warning: this pattern never matches: the one in line 3 stands before it and "
     "matches wherever it would\n"
     "ErrorPatterns.xml:8:5: warning: this pattern never matches: the one in line 3 stands before it and "
     "matches wherever it would\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"AnExactPatternWithoutTheParentThatIsRaisedAlong",
     {{kPatterns,
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n",
       "    <pattern fixedCode=\"P-1\">\n"}},
     "ErrorPatterns.xml:3:5: warning: this pattern matches only after \"Positioning:GPS:No Data:2\" was "
     "cleared on its own: these errors raise it\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnExactPatternWithoutTwoParentsThatAreRaisedAlong",
     {{kPatterns,
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n",
       "    <pattern fixedCode=\"P-1\">\n"},
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"yes\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "ErrorPatterns.xml:3:5: warning: this pattern matches only after \"Positioning:GPS:No Data:2\" and 1 "
     "other were cleared on their own: these errors raise them\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnExactPatternOfErrorsThatAreNotLinked",
     {{kCan, "        <Text type=\"title\"", "        <Text type=\"title\""},
      SatellitesWithoutBus(),
      {kPatterns, "      <error id=\"Positioning:GPS:Communications:9\"/>",
       "      <error id=\"CAN:Bus:Power:4\"/>"}},
     "ErrorPatterns.xml:3:5: warning: this pattern never matches: no tree can hold exactly these errors\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APartialPatternOfErrorsThatAreNotLinked",
     {SatellitesWithoutBus(),
      {kPatterns, "allowPartialMatch=\"no\"", "allowPartialMatch=\"yes\""},
      {kPatterns, "      <error id=\"Positioning:GPS:Communications:9\"/>",
       "      <error id=\"CAN:Bus:Power:4\"/>"}},
     "ErrorPatterns.xml:3:5: warning: this pattern never matches: no tree can hold all of these errors\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnExactPatternWithAnErrorTooOften",
     {{kPatterns, "      <error id=\"Positioning:GPS:Communications:9\"/>\n",
       "      <error id=\"Positioning:GPS:Communications:9\"/>\n"
       "      <error id=\"Positioning:GPS:Communications:9\"/>\n"}},
     "ErrorPatterns.xml:3:5: warning: this pattern never matches: no tree can hold exactly these errors\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APartialPatternBelowAShallowLink",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "              <Option name=\"errorLinking\" value=\"shallow\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:No Data:2\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"},
      SatellitesWithoutBus(),
      {kPatterns, "<pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">",
       "<pattern fixedCode=\"P-1\" allowPartialMatch=\"yes\">\n"
       "      <error id=\"CAN:Bus:Power:4\"/>"}},
     "can.xml:10:11: warning: this set is never shown, and while its error is active it hides its "
     "triggers: it is not automatic, and its error is neither visible nor shown in the tree of one that is\n"
     "ErrorPatterns.xml:3:5: warning: this pattern never matches: no tree can hold all of these errors\n"
     "0 errors, 2 warnings in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Pattern, CheckTest, testing::ValuesIn(kPatternCases), NameOf);

} // namespace
