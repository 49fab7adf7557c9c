#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Slips, and nothing of what follows only from them.
const SCheckCase kSlipCases[] = {
    {"ASetWhoseTriggersAreElementsOfAnotherName",
     {{kPositioning,
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "              <Trigger id=\"CAN:Bus:Power:4\"/>\n",
       "              <Child id=\"CAN:Bus:Power:4\"/>\n"},
      PatternOfSatellitesOnly()},
     "positioning.xml:19:15: error: unknown element \"Child\" [rule 287: triggerNode.Name() == \"Trigger\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AThresholdBesideAnElementOfAnotherName",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2\""},
      {kPositioning, "<Trigger id=\"CAN", "<Child id=\"CAN"}},
     "positioning.xml:20:15: error: unknown element \"Child\" [rule 287: triggerNode.Name() == \"Trigger\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ASetBesideTheSameOneWithAnOptionOfAnotherName",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet><Triggers><Trigger "
       "id=\"Positioning:GPS:Communications:9\"/></Triggers></TriggerSet>\n"
       "          <TriggerSet><Options><Setup/></Options><Triggers><Trigger "
       "id=\"Positioning:GPS:Communications:9\"/></Triggers></TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "can.xml:11:32: error: unknown element \"Setup\" [rule 249: optionNode.Name() == \"Option\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ASetThatAnUnreadModuleMayShow",
     {SatellitesNotVisible(),
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"no\""},
      {kCan, "</Module>\n", ""}},
     "can.xml:12:1: error: no element found\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutTitleWhoseParentAnUnreadModuleMayHold",
     {{kPositioning, "        <Text type=\"title\" text=\"No Satellites\"/>\n", ""},
      {kCan, "</Module>\n", ""}},
     "can.xml:12:1: error: no element found\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutTitleWhoseParentMayBeBelowASkippedElement",
     {{kPositioning, "        <Text type=\"title\" text=\"No Satellites\"/>\n", ""},
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets><Any/></TriggerSets>\n"}},
     "can.xml:9:22: error: unknown element \"Any\" [rule 219: triggerSet.Name() == \"TriggerSet\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorWithoutTitleWhoseParentMayBeInTriggerSetsThatAreNotRead",
     {BusWithoutTitle(),
      BusVisible(),
      {kPositioning, "        </TriggerSets>\n",
       "        </TriggerSets>\n"
       "        <TriggerSets><TriggerSet><Triggers>\n"
       "          <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "        </Triggers></TriggerSet></TriggerSets>\n"}},
     "positioning.xml:24:9: warning: a second \"TriggerSets\" in one error: the one in line 10 is not read\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatTriggerSetsThatAreNotReadMayShow",
     {{kPositioning, "        </TriggerSets>\n",
       "        </TriggerSets>\n"
       "        <TriggerSets/>\n"},
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets><TriggerSet><Triggers>\n"
       "          <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "        </Triggers></TriggerSet></TriggerSets>\n"}},
     "positioning.xml:24:9: warning: a second \"TriggerSets\" in one error: the one in line 10 is not read, "
     "and there is no \"TriggerSet\" here\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnErrorWithoutTitleThatABrokenTriggerMayName",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power"}, BusWithoutTitle(), BusVisible()},
     "positioning.xml:20:24: error: the id \"CAN:Bus:Power\" has 3 fields: it takes four fields, "
     "Module:Sub-module:Problem:Failure mode, such as \"Positioning:GPS:No Data:2\" [rule 297: "
     "subStrings.size() == 4]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"APatternOfErrorsThatASkippedSetMayLink",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <Sets/>\n"},
      SatellitesWithoutBus(),
      {kPatterns, "      <error id=\"Positioning:GPS:Communications:9\"/>",
       "      <error id=\"CAN:Bus:Power:4\"/>"}},
     "can.xml:9:9: error: unknown element \"Sets\" [rule 178: textNode.Name() == \"Text\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerThatMayBeDefinedInASkippedSubModule",
     {{kCan, "<SubModule", "<Any"}, {kCan, "</SubModule>", "</Any>"}},
     "can.xml:2:3: error: unknown element \"Any\" [rule 91: subModuleNode.Name() == \"SubModule\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerThatMayBeDefinedInASkippedProblem",
     {{kCan, "<Problem", "<Any"}, {kCan, "</Problem>", "</Any>"}},
     "can.xml:3:5: error: unknown element \"Any\" [rule 111: problemNode.Name() == \"Problem\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerThatMayBeASkippedError",
     {{kCan, "<Error", "<Any"}, {kCan, "</Error>", "</Any>"}},
     "can.xml:4:7: error: unknown element \"Any\" [rule 125: errorNode.Name() == \"Error\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerThatMayBeDefinedInAModuleThatIsNotRead",
     {{kList, "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n  </ErrorList>",
       "  </ErrorList>\n"
       "  <ErrorList>\n"
       "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n"
       "  </ErrorList>"}},
     "FaultkeeperConfig.xml:5:3: warning: a second \"ErrorList\" is not read\n"
     "0 errors, 1 warning in 3 files\n"},
    {"ATriggerThatMayBeDefinedInAModuleWhoseEntryIsSkipped",
     {{kList, "<Module identifier=\"CAN\"", "<Any identifier=\"CAN\""}},
     "FaultkeeperConfig.xml:4:5: error: unknown element \"Any\" [rule 40: moduleNode.Name() == \"Module\"]\n"
     "1 error, 0 warnings in 3 files\n"},
    {"APatternOfAnErrorThatMayBeDefinedInASkippedSubModule",
     {{kCan, "<SubModule", "<Any"},
      {kCan, "</SubModule>", "</Any>"},
      {kPatterns, "Positioning:GPS:Communications:9", "CAN:Bus:Power:4"}},
     "can.xml:2:3: error: unknown element \"Any\" [rule 91: subModuleNode.Name() == \"SubModule\"]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ASetThatIsShownButForACapitalInItsFlag",
     {SatellitesNotVisible(),
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"Yes\""}},
     "positioning.xml:13:42: warning: \"autoTrigger\" is \"Yes\", which counts as \"no\"; did you mean "
     "\"yes\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatIsShownButForALetterInItsOption",
     {SatellitesNotVisible(), {kPositioning, "name=\"autoTrigger\"", "name=\"autoTriger\""}},
     "positioning.xml:13:23: warning: unknown option \"autoTriger\"; did you mean \"autoTrigger\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatIsShownButForACapitalInTheFlagOfItsError",
     {{kPositioning, " visible=\"yes\"", " visible=\"Yes\""},
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"no\""}},
     "positioning.xml:4:81: warning: \"visible\" is \"Yes\", which counts as \"no\"; did you mean \"yes\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatIsShownButForALetterInTheFlagOfItsError",
     {{kPositioning, " visible=\"yes\"", " visble=\"yes\""},
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"no\""}},
     "positioning.xml:4:81: warning: unknown attribute \"visble\"; did you mean \"visible\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatIsNotShownHoweverItsFlagIsSpelled",
     {{kPositioning, " visible=\"yes\"", " visible=\"No\""},
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"No\""}},
     "positioning.xml:4:81: warning: \"visible\" is \"No\", which counts as \"no\"; did you mean \"no\"?\n"
     "positioning.xml:11:11: warning: this set is never shown, and while its error is active it hides its "
     "triggers: it is not automatic, and its error is neither visible nor shown in the tree of one that is\n"
     "positioning.xml:13:42: warning: \"autoTrigger\" is \"No\", which counts as \"no\"; did you mean "
     "\"no\"?\n"
     "0 errors, 3 warnings in 4 files\n"},
    {"AnErrorThatNeedsNoTitleButForACapital",
     {BusWithoutTitle(),
      BusVisible(),
      SatellitesWithTheirOwnTitle(),
      {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\" value=\"Yes\""}},
     "positioning.xml:13:42: warning: \"autoTrigger\" is \"Yes\", which counts as \"no\"; did you mean "
     "\"yes\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnErrorThatNeedsNoTitleButForALetter",
     {BusWithoutTitle(),
      BusVisible(),
      SatellitesWithTheirOwnTitle(),
      {kPositioning, "name=\"autoTrigger\"", "name=\"autoTriger\""}},
     "positioning.xml:13:23: warning: unknown option \"autoTriger\"; did you mean \"autoTrigger\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnErrorThatMayNeedNoTitleButForANumber",
     {BusWithoutTitle(),
      BusVisible(),
      SatellitesWithTheirOwnTitle(),
      {kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2x\""}},
     "positioning.xml:14:45: warning: \"triggersNeeded\" is \"2x\", which is read as 2\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ATitleOfATriggerThatIsTakenOnlyForALetter",
     {BusWithoutTitle(),
      {kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2\""},
      {kPositioning, "name=\"autoTrigger\"", "name=\"autoTriger\""}},
     "positioning.xml:13:23: warning: unknown option \"autoTriger\"; did you mean \"autoTrigger\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatIsTheSameOnlyForALetterInAWord",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet><Triggers><Trigger "
       "id=\"Positioning:GPS:Communications:9\"/></Triggers></TriggerSet>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"errorLinking\" value=\"shalow\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "can.xml:13:43: warning: unknown way of linking \"shalow\"; did you mean \"shallow\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ASetThatNeverClearsOnlyForANumber",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"both\""},
      SecondSetOfBus()},
     "positioning.xml:14:45: warning: \"triggersNeeded\" is \"both\", which is read as 0\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnOptionWithoutAValueThatIsShownPerhaps",
     {SatellitesNotVisible(), {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "name=\"autoTrigger\""}},
     "positioning.xml:13:15: error: this \"Option\" has no \"value\" [rule 255: !value.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnOptionWithoutANameThatIsShownPerhaps",
     {SatellitesNotVisible(), {kPositioning, "name=\"autoTrigger\" value=\"yes\"", "value=\"yes\""}},
     "positioning.xml:13:15: error: this \"Option\" has no \"name\" [rule 254: !name.empty()]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"APatternThatMatchesPartlyButForALetter",
     {{kPatterns,
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n",
       "    <pattern fixedCode=\"P-1\" allowPartialMach=\"yes\">\n"}},
     "ErrorPatterns.xml:3:30: warning: unknown attribute \"allowPartialMach\"; did you mean "
     "\"allowPartialMatch\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APatternThatMatchesPartlyButForACapital",
     {{kPatterns,
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n",
       "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"Yes\">\n"}},
     "ErrorPatterns.xml:3:30: warning: \"allowPartialMatch\" is \"Yes\", which counts as \"no\"; did you "
     "mean "
     "\"yes\"?\n"
     "0 errors, 1 warning in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Slip, CheckTest, testing::ValuesIn(kSlipCases), NameOf);

} // namespace
