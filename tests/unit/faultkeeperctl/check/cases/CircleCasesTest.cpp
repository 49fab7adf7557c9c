#include "CheckCase.h"

namespace
{

using namespace CheckCases;

/// One trigger set, as an error of these files has it.
std::string Sets(const std::vector<std::string>& triggers, const std::string& automatic)
{
    std::string text = "        <TriggerSets>\n"
                       "          <TriggerSet>\n"
                       "            <Options>\n"
                       "              <Option name=\"autoTrigger\" value=\"" +
                       automatic +
                       "\"/>\n"
                       "            </Options>\n"
                       "            <Triggers>\n";
    for (const std::string& trigger : triggers)
        text += "              <Trigger id=\"" + trigger + "\"/>\n";
    return text + "            </Triggers>\n"
                  "          </TriggerSet>\n"
                  "        </TriggerSets>\n";
}

/// Gives the error with that short text a set with that trigger.
SEdit TriggeredBy(const std::string& file, const std::string& shortProblem, const std::string& trigger,
                  const std::string& automatic = "no")
{
    const std::string line = "        <Text type=\"shortProblem\" text=\"" + shortProblem + "\"/>\n";
    return {file, line, line + Sets({trigger}, automatic)};
}

/// Adds Positioning:GPS:Checksum:9.
SEdit ChecksumTriggeredBy(const std::vector<std::string>& triggers)
{
    return {kPositioning,
            "    </Problem>\n"
            "  </SubModule>",
            "    </Problem>\n"
            "    <Problem identifier=\"Checksum\">\n"
            "      <Error identifier=\"AbnormalUpdateRate\" severity=\"Low\">\n"
            "        <Text type=\"problem\" text=\"Sums are wrong.\"/>\n"
            "        <Text type=\"solution\" text=\"Wait.\"/>\n"
            "        <Text type=\"shortProblem\" text=\"Sums\"/>\n" +
                Sets(triggers, "no") +
                "      </Error>\n"
                "    </Problem>\n"
                "  </SubModule>"};
}

// Errors that are raised by what they raise.
const SCheckCase kCircleCases[] = {
    {"ACircleOfTwo",
     {TriggeredBy(kCan, "Bus power", "Positioning:GPS:No Data:2", "yes")},
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is triggered by)\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ACircleOfThree",
     {TriggeredBy(kCan, "Bus power", "Positioning:GPS:Checksum:9"),
      ChecksumTriggeredBy({"Positioning:GPS:No Data:2"})},
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:Checksum:9\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is "
     "triggered by)\n"
     "1 error, 0 warnings in 4 files\n"},
    {"CirclesThatShareMembers",
     {TriggeredBy(kCan, "Bus power", "Positioning:GPS:Checksum:9"),
      ChecksumTriggeredBy({"Positioning:GPS:No Data:2", "CAN:Bus:Power:4"})},
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:Checksum:9\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is "
     "triggered by)\n"
     "positioning.xml:45:24: error: errors trigger each other in a circle: \"Positioning:GPS:Checksum:9\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:Checksum:9\" (\"<-\": is triggered by)\n"
     "2 errors, 0 warnings in 4 files\n"},
    {"TwoCircles",
     {TriggeredBy(kCan, "Bus power", "Positioning:GPS:No Data:2"),
      TriggeredBy(kPositioning, "Silent", "Positioning:GPS:No Data:2")},
     "positioning.xml:19:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"Positioning:GPS:Communications:9\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is triggered by)\n"
     "positioning.xml:20:24: error: errors trigger each other in a circle: \"Positioning:GPS:No Data:2\" <- "
     "\"CAN:Bus:Power:4\" <- \"Positioning:GPS:No Data:2\" (\"<-\": is triggered by)\n"
     "2 errors, 0 warnings in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Circle, CheckTest, testing::ValuesIn(kCircleCases), NameOf);

} // namespace
