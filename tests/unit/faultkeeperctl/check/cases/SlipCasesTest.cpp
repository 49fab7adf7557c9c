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
      {kPatterns, "      <error id=\"Positioning:GPS:Communications:9\"/>\n", ""}},
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
};

INSTANTIATE_TEST_SUITE_P(Slip, CheckTest, testing::ValuesIn(kSlipCases), NameOf);

} // namespace
