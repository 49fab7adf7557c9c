#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Errors that are raised by what they raise.
const SCheckCase kCircleCases[] = {
    {"ACircleOfTwo",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"yes\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:No Data:2\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is triggered by)\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ACircleOfThree",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:Checksum:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"},
      {kPositioning,
       "    </Problem>\n"
       "  </SubModule>",
       "    </Problem>\n"
       "    <Problem identifier=\"Checksum\">\n"
       "      <Error identifier=\"AbnormalUpdateRate\" severity=\"Low\">\n"
       "        <Text type=\"problem\" text=\"Sums are wrong.\"/>\n"
       "        <Text type=\"solution\" text=\"Wait.\"/>\n"
       "        <Text type=\"shortProblem\" text=\"Sums\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:No Data:2\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"
       "      </Error>\n"
       "    </Problem>\n"
       "  </SubModule>"}},
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:Checksum:9\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is "
     "triggered by)\n"
     "1 error, 0 warnings in 4 files\n"},
    {"CirclesThatShareMembers",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:Checksum:9\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"},
      {kPositioning,
       "    </Problem>\n"
       "  </SubModule>",
       "    </Problem>\n"
       "    <Problem identifier=\"Checksum\">\n"
       "      <Error identifier=\"AbnormalUpdateRate\" severity=\"Low\">\n"
       "        <Text type=\"problem\" text=\"Sums are wrong.\"/>\n"
       "        <Text type=\"solution\" text=\"Wait.\"/>\n"
       "        <Text type=\"shortProblem\" text=\"Sums\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:No Data:2\"/>\n"
       "              <Trigger id=\"CAN:Bus:Power:4\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"
       "      </Error>\n"
       "    </Problem>\n"
       "  </SubModule>"}},
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:Checksum:9\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is "
     "triggered by)\n"
     "positioning.xml:45:24: error: errors trigger each other in a circle: \"Positioning:GPS:Checksum:9\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:Checksum:9\" (\"<-\": is triggered by)\n"
     "2 errors, 0 warnings in 4 files\n"},
    {"TwoCircles",
     {{kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:No Data:2\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"},
      {kPositioning, "        <Text type=\"shortProblem\" text=\"Silent\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Silent\"/>\n"
       "        <TriggerSets>\n"
       "          <TriggerSet>\n"
       "            <Options>\n"
       "              <Option name=\"autoTrigger\" value=\"no\"/>\n"
       "            </Options>\n"
       "            <Triggers>\n"
       "              <Trigger id=\"Positioning:GPS:No Data:2\"/>\n"
       "            </Triggers>\n"
       "          </TriggerSet>\n"
       "        </TriggerSets>\n"}},
     "positioning.xml:19:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"Positioning:GPS:Communications:9\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is triggered by)\n"
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is triggered by)\n"
     "2 errors, 0 warnings in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Circle, CheckTest, testing::ValuesIn(kCircleCases), NameOf);

} // namespace
