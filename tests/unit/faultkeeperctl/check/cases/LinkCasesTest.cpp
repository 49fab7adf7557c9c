#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Triggers, sets and what follows from how errors are linked.
const SCheckCase kLinkCases[] = {
    {"ATriggerThatNamesNoError",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:5"}},
     "positioning.xml:20:24: warning: no error \"CAN:Bus:Power:5\" is defined; did you mean "
     "\"CAN:Bus:Power:4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerThatIsNearOneThatTheSetHas",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:Communications:8"},
      {kPositioning,
       "    </Problem>\n"
       "  </SubModule>",
       "      <Error identifier=\"SpecialInstructions\" severity=\"Low\">\n"
       "        <Text type=\"problem\" text=\"Sums are wrong.\"/>\n"
       "        <Text type=\"solution\" text=\"Wait.\"/>\n"
       "        <Text type=\"shortProblem\" text=\"Sums\"/>\n"
       "      </Error>\n"
       "    </Problem>\n"
       "  </SubModule>"}},
     "positioning.xml:20:24: warning: no error \"Positioning:GPS:Communications:8\" is defined; did you mean "
     "\"Positioning:GPS:Communications:14\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerThatIsNearItsOwnError",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:No Data:3"},
      Without(kCan),
      {kList, "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n", ""}},
     "positioning.xml:20:24: warning: no error \"Positioning:GPS:No Data:3\" is defined\n"
     "0 errors, 1 warning in 3 files\n"},
    {"ATriggerFarFromAnyError",
     {{kPositioning, "CAN:Bus:Power:4", "Service:Navigation:Initialisation:11"}},
     "positioning.xml:20:24: warning: no error \"Service:Navigation:Initialisation:11\" is defined\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerWithTheNameOfAFailureMode",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:VoltageBelowNormalOrShortedLow"}},
     "positioning.xml:20:24: warning: the failure mode in an id is a number, but here it is "
     "\"VoltageBelowNormalOrShortedLow\", which is read as 0; did you mean \"4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerWithTextBehindTheNumber",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:4 "}},
     "positioning.xml:20:24: warning: the failure mode in an id is a number, but here it is \"4 \", which is "
     "read as 4\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerWithABlankInFrontOfTheNumber",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power: 4"}},
     "positioning.xml:20:24: warning: the failure mode in an id is a number, but here it is \" 4\", which is "
     "read as 4\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASelfLink",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:No Data:2"}},
     "positioning.xml:20:24: warning: the error \"Positioning:GPS:No Data:2\" links to itself: the trigger "
     "is skipped\n"
     "0 errors, 1 warning in 4 files\n"},
    {"OnlyASelfLink",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:No Data:2"},
      SatellitesWithoutReceiver(),
      PatternOfSatellitesOnly()},
     "positioning.xml:11:11: warning: this \"TriggerSet\" is left without triggers: none names another "
     "error\n"
     "positioning.xml:19:24: warning: the error \"Positioning:GPS:No Data:2\" links to itself: the trigger "
     "is skipped\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"ATriggerTwice",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:Communications:9"}},
     "positioning.xml:20:24: warning: \"Positioning:GPS:Communications:9\" stands twice in this set, and "
     "counts twice\n"
     "ErrorPatterns.xml:3:5: warning: this pattern never matches: no tree can hold exactly these errors\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"ASetWithoutTriggers",
     {{kPositioning,
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "              <Trigger id=\"CAN:Bus:Power:4\"/>\n",
       ""},
      PatternOfSatellitesOnly()},
     "positioning.xml:11:11: warning: this \"TriggerSet\" has no triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetWithoutAnything",
     {{kPositioning, "          </TriggerSet>\n",
       "          </TriggerSet>\n"
       "          <TriggerSet/>\n"}},
     "positioning.xml:23:11: warning: this \"TriggerSet\" has no triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetWhoseTriggersLeadNowhere",
     {{kPositioning, "\"Positioning:GPS:Communications:9\"", "\"Service:Navigation:Initialisation:11\""},
      {kPositioning, "CAN:Bus:Power:4", "Service:Navigation:Initialisation:12"},
      PatternOfSatellitesOnly()},
     "positioning.xml:11:11: warning: this \"TriggerSet\" is left without triggers: none names another "
     "error\n"
     "positioning.xml:19:24: warning: no error \"Service:Navigation:Initialisation:11\" is defined\n"
     "positioning.xml:20:24: warning: no error \"Service:Navigation:Initialisation:12\" is defined\n"
     "0 errors, 3 warnings in 4 files\n"},
    {"ASetWhoseTriggersAreMisspelled",
     {{kPositioning, "\"Positioning:GPS:Communications:9\"", "\"Positioning:GPS:Communications:8\""},
      {kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:5"}},
     "positioning.xml:19:24: warning: no error \"Positioning:GPS:Communications:8\" is defined; did you mean "
     "\"Positioning:GPS:Communications:9\"?\n"
     "positioning.xml:20:24: warning: no error \"CAN:Bus:Power:5\" is defined; did you mean "
     "\"CAN:Bus:Power:4\"?\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"AMisspelledTriggerOfAnErrorWithoutTitle",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:5"},
      SatellitesWithTheirOwnTitle(),
      BusWithoutTitle(),
      BusVisible()},
     "positioning.xml:20:24: warning: no error \"CAN:Bus:Power:5\" is defined; did you mean "
     "\"CAN:Bus:Power:4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATriggerOfAnErrorWithoutTitleWithTheNameOfItsFailureMode",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:VoltageBelowNormalOrShortedLow"},
      SatellitesWithTheirOwnTitle(),
      BusWithoutTitle(),
      BusVisible()},
     "positioning.xml:20:24: warning: the failure mode in an id is a number, but here it is "
     "\"VoltageBelowNormalOrShortedLow\", which is read as 0; did you mean \"4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AMisspelledTriggerByWhichASetIsShown",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:5"},
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "positioning.xml:20:24: warning: no error \"CAN:Bus:Power:5\" is defined; did you mean "
     "\"CAN:Bus:Power:4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetTwice",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet><Triggers><Trigger "
       "id=\"Positioning:GPS:Communications:9\"/></Triggers></TriggerSet>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "can.xml:11:11: warning: this set is the same as the one in line 10: each of its triggers stands in the "
     "tree "
     "twice\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetTwiceWithItsTriggersInAnotherOrder",
     {{kPositioning, "        </TriggerSets>",
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"titleSource\" value=\"trigger\"/>\n"
       "              <Option name=\"errorLinking\" value=\"verbose\"/>\n"
       "              <Option name=\"autoTrigger\" value=\"yes\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"CAN:Bus:Power:4\"/>\n"
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>"},
      {kPatterns, "allowPartialMatch=\"no\"", "allowPartialMatch=\"yes\""}},
     "positioning.xml:23:11: warning: this set is the same as the one in line 11: each of its triggers "
     "stands "
     "in the tree twice\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdThatIsNeverMet",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"3\""}},
     "positioning.xml:14:45: warning: the threshold 3 can never be met: the set has 2 triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdThatIsNeverMetBecauseATriggerIsMissing",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2\""},
      {kPositioning, "CAN:Bus:Power:4", "Service:Navigation:Initialisation:11"},
      PatternOfSatellitesOnly()},
     "positioning.xml:14:45: warning: the threshold 2 can never be met: the set has 1 trigger\n"
     "positioning.xml:20:24: warning: no error \"Service:Navigation:Initialisation:11\" is defined\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"AThresholdThatIsNeverMetOnlyBecauseATriggerIsMisspelled",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2\""},
      {kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:3"}},
     "positioning.xml:20:24: warning: no error \"CAN:Bus:Power:3\" is defined; did you mean "
     "\"CAN:Bus:Power:4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdThatIsAlwaysMet",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"0\""}},
     "positioning.xml:14:45: warning: the threshold 0 is always met: any trigger raises the error, and it is "
     "never cleared by its triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ANegativeThreshold",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"-2\""}},
     "positioning.xml:14:45: warning: the threshold -2 is always met: any trigger raises the error, and it "
     "is never cleared by its triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdThatIsNoNumber",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"two\""}},
     "positioning.xml:14:45: warning: \"triggersNeeded\" is \"two\", which is read as 0\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdOfASignOnly",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\" +\""}},
     "positioning.xml:14:45: warning: \"triggersNeeded\" is \" +\", which is read as 0\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdWithABlankBehindTheSign",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"+ 1\""}},
     "positioning.xml:14:45: warning: \"triggersNeeded\" is \"+ 1\", which is read as 0\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AThresholdWithTextBehindIt",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2x\""},
      {kPatterns,
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n"
       "      <error id=\"Positioning:GPS:Communications:9\"/>\n"
       "    </pattern>\n",
       ""}},
     "positioning.xml:14:45: warning: \"triggersNeeded\" is \"2x\", which is read as 2\n"
     "0 errors, 1 warning in 4 files\n"},
    {"TwoAutomaticSetsWithoutACommonTrigger",
     {SatellitesWithoutBus(), SecondSetOfBus()},
     "positioning.xml:22:11: warning: this set and the one in line 11 are automatic but share no trigger: "
     "the error is never cleared by its triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichLinksToItself",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:No Data:2"}, SecondSetOfBus()},
     "positioning.xml:20:24: warning: the error \"Positioning:GPS:No Data:2\" links to itself: the trigger "
     "is skipped\n"
     "positioning.xml:23:11: warning: this set and the one in line 11 are automatic but share no trigger: "
     "the error is never cleared by its triggers\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichNamesNoError",
     {{kPositioning, "CAN:Bus:Power:4", "Service:Navigation:Initialisation:11"}, SecondSetOfBus()},
     "positioning.xml:20:24: warning: no error \"Service:Navigation:Initialisation:11\" is defined\n"
     "positioning.xml:23:11: warning: this set and the one in line 11 are automatic but share no trigger: "
     "the error is never cleared by its triggers\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichOnlyLinksToItself",
     {SatellitesWithoutReceiver(),
      {kPositioning, "CAN:Bus:Power:4", "Positioning:GPS:No Data:2"},
      SecondSetOfBus(),
      PatternOfSatellitesOnly()},
     "positioning.xml:11:11: warning: this \"TriggerSet\" is left without triggers: none names another "
     "error\n"
     "positioning.xml:19:24: warning: the error \"Positioning:GPS:No Data:2\" links to itself: the trigger "
     "is skipped\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichNamesOnlyWhatIsNotDefined",
     {SatellitesWithoutReceiver(),
      {kPositioning, "CAN:Bus:Power:4", "Service:Navigation:Initialisation:11"},
      SecondSetOfBus(),
      PatternOfSatellitesOnly()},
     "positioning.xml:11:11: warning: this \"TriggerSet\" is left without triggers: none names another "
     "error\n"
     "positioning.xml:19:24: warning: no error \"Service:Navigation:Initialisation:11\" is defined\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichHasNoTriggers",
     {{kPositioning,
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "              <Trigger id=\"CAN:Bus:Power:4\"/>\n",
       ""},
      SecondSetOfBus(),
      PatternOfSatellitesOnly()},
     "positioning.xml:11:11: warning: this \"TriggerSet\" has no triggers\n"
     "0 errors, 1 warning in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichHasAMisspelledTrigger",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Data:17"}, SecondSetOfBus()},
     "positioning.xml:20:24: warning: no error \"CAN:Bus:Data:17\" is defined; did you mean "
     "\"CAN:Bus:Power:4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichRaisesAlone",
     {SecondSetOfBus()},
     "positioning.xml:11:11: warning: \"Positioning:GPS:Communications:9\" raises the error by this "
     "automatic set, but does not stand in the one in line 23: clearing it does not clear the error\n"
     "0 errors, 1 warning in 4 files\n"},
    {"TwoAutomaticSetsOneOfWhichRaisesAloneBesideAMisspelledLinking",
     {SecondSetOfBus(), {kPositioning, "value=\"verbose\"", "value=\"verbos\""}},
     "positioning.xml:11:11: warning: \"Positioning:GPS:Communications:9\" raises the error by this "
     "automatic set, but does not stand in the one in line 23: clearing it does not clear the error\n"
     "positioning.xml:15:43: warning: unknown way of linking \"verbos\"; did you mean \"verbose\"?\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"ASetThatIsNotAutomaticAndNeverShown",
     {SatellitesNotVisible(),
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"no\""}},
     "positioning.xml:11:11: warning: this set is never shown, and while its error is active it hides its "
     "triggers: it is not automatic, and its error is neither visible nor shown in the tree of one that is\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatIsNotAutomaticBelowAShallowLink",
     {{kPositioning, "\"verbose\"", "\"shallow\""},
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets><TriggerSet><Triggers><Trigger id=\"Positioning:GPS:Communications:9\"/>"
       "</Triggers></TriggerSet></TriggerSets>\n"}},
     "can.xml:9:22: warning: this set is never shown, and while its error is active it hides its triggers: "
     "it "
     "is not automatic, and its error is not visible, and others show it by a shallow link only\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnErrorDefinedTwiceInAFile",
     {{kPositioning,
       "    </Problem>\n"
       "  </SubModule>",
       "    </Problem>\n"
       "    <Problem identifier=\"Communications\">\n"
       "      <Error identifier=\"AbnormalUpdateRate\" severity=\"Low\">\n"
       "        <Text type=\"problem\" text=\"Sums are wrong.\"/>\n"
       "        <Text type=\"solution\" text=\"Wait.\"/>\n"
       "        <Text type=\"shortProblem\" text=\"Sums\"/>\n"
       "      </Error>\n"
       "    </Problem>\n"
       "  </SubModule>"}},
     "positioning.xml:34:7: warning: \"Positioning:GPS:Communications:9\" is defined before, in "
     "positioning.xml:27:7: triggers and reports find this one only\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnErrorDefinedTwiceInTwoFiles",
     {{kList, "identifier=\"CAN\" file=\"can.xml\"/>",
       "identifier=\"CAN\" file=\"can.xml\"/>\n"
       "    <Module identifier=\"CAN\" file=\"more.xml\"/>"},
      {"more.xml", "", kCanText}},
     "more.xml:4:7: warning: \"CAN:Bus:Power:4\" is defined before, in can.xml:4:7: triggers and reports "
     "find this one only\n"
     "0 errors, 1 warning in 5 files\n"},
    {"AModuleListedTwice",
     {{kList, "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n",
       "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n"
       "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n"}},
     "FaultkeeperConfig.xml:5:5: warning: this \"Module\" is listed before, in line 4: all of its errors are "
     "defined twice\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASecondTriggerSets",
     {{kPositioning, "        <TriggerSets>",
       "        <TriggerSets><TriggerSet/></TriggerSets>\n"
       "        <TriggerSets>"}},
     "positioning.xml:11:9: warning: a second \"TriggerSets\" in one error: the one in line 10 is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASecondTriggerSetsWithoutASet",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets><TriggerSet/></TriggerSets>\n"
       "        <TriggerSets/>\n"}},
     "can.xml:10:9: warning: a second \"TriggerSets\" in one error: the one in line 9 is not read, and there "
     "is no \"TriggerSet\" here\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnOptionTwice",
     {{kPositioning, "<Option name=\"titleSource\" value=\"trigger\"/>",
       "<Option name=\"autoTrigger\" value=\"no\"/>"},
      {kPositioning, "<Option name=\"errorLinking\"",
       "<Option name=\"triggersNeeded\" value=\"2\"/>\n"
       "              <Option name=\"errorLinking\""}},
     "positioning.xml:15:23: warning: the option \"triggersNeeded\" was given before, in line 14\n"
     "positioning.xml:17:23: warning: the option \"autoTrigger\" was given before, in line 13\n"
     "0 errors, 2 warnings in 4 files\n"},
    {"ATextTwice",
     {{kCan, "<Text type=\"title\"",
       "<Text type=\"problem\" text=\"No power.\"/>\n"
       "        <Text type=\"title\""}},
     "can.xml:7:15: warning: a second text \"problem\" in one error takes the place of the one in line 5\n"
     "0 errors, 1 warning in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Link, CheckTest, testing::ValuesIn(kLinkCases), NameOf);

} // namespace
