#include "CheckCase.h"

#include "support/FreshDirectory.h"

#include <map>

namespace CheckCases
{

namespace
{
const char* const kListText = "<Faultkeeper>\n"
                              "  <ErrorList>\n"
                              "    <Module identifier=\"Positioning\" file=\"positioning.xml\"/>\n"
                              "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n"
                              "  </ErrorList>\n"
                              "</Faultkeeper>\n";

const char* const kPositioningText =
    "<Module>\n"
    "  <SubModule identifier=\"GPS\">\n"
    "    <Problem identifier=\"No Data\">\n"
    "      <Error identifier=\"DataErraticAndIntermittentlyIncorrect\" severity=\"High\" visible=\"yes\">\n"
    "        <Text type=\"title\" text=\"No Satellites\"/>\n"
    "        <Text type=\"problem\" text=\"The receiver sends no data.\"/>\n"
    "        <Text type=\"solution\" text=\"Check the cable of the receiver.\"/>\n"
    "        <Text type=\"shortProblem\" text=\"No satellites\"/>\n"
    "        <ServiceDescription>Look at the <b at=\"once\">fuse</b> first.</ServiceDescription>\n"
    "        <TriggerSets>\n"
    "          <TriggerSet>\n"
    "            <Options>\n"
    "              <Option name=\"autoTrigger\" value=\"yes\"/>\n"
    "              <Option name=\"triggersNeeded\" value=\"1\"/>\n"
    "              <Option name=\"errorLinking\" value=\"verbose\"/>\n"
    "              <Option name=\"titleSource\" value=\"trigger\"/>\n"
    "            </Options>\n"
    "            <Triggers>\n"
    "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
    "              <Trigger id=\"CAN:Bus:Power:4\"/>\n"
    "            </Triggers>\n"
    "          </TriggerSet>\n"
    "        </TriggerSets>\n"
    "      </Error>\n"
    "    </Problem>\n"
    "    <Problem identifier=\"Communications\">\n"
    "      <Error identifier=\"AbnormalUpdateRate\" severity=\"Low\" shouldBeep=\"yes\">\n"
    "        <Text type=\"problem\" text=\"The receiver is silent.\"/>\n"
    "        <Text type=\"solution\" text=\"Wait for a minute.\"/>\n"
    "        <Text type=\"shortProblem\" text=\"Silent\"/>\n"
    "      </Error>\n"
    "    </Problem>\n"
    "  </SubModule>\n"
    "</Module>\n";

} // namespace

const char* const kCanText = "<Module>\n"
                             "  <SubModule identifier=\"Bus\">\n"
                             "    <Problem identifier=\"Power\">\n"
                             "      <Error identifier=\"4\" severity=\"Medium\" visible=\"no\">\n"
                             "        <Text type=\"title\" text=\"Bus Without Power\"/>\n"
                             "        <Text type=\"problem\" text=\"The bus has no power.\"/>\n"
                             "        <Text type=\"solution\" text=\"Check the fuse.\"/>\n"
                             "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
                             "      </Error>\n"
                             "    </Problem>\n"
                             "  </SubModule>\n"
                             "</Module>\n";

namespace
{
const char* const kPatternsText = "<ErrorPatterns>\n"
                                  "  <Patterns>\n"
                                  "    <pattern fixedCode=\"P-1\" allowPartialMatch=\"no\">\n"
                                  "      <error id=\"Positioning:GPS:No Data:2\"/>\n"
                                  "      <error id=\"Positioning:GPS:Communications:9\"/>\n"
                                  "    </pattern>\n"
                                  "    <pattern fixedCode=\"P-2\" allowPartialMatch=\"yes\">\n"
                                  "      <error id=\"Positioning:GPS:No Data:2\"/>\n"
                                  "    </pattern>\n"
                                  "  </Patterns>\n"
                                  "</ErrorPatterns>\n";

typedef std::map<std::string, std::string> Files;

void Apply(const SEdit& edit, Files& files)
{
    if (edit.to == kNoFile)
    {
        ASSERT_EQ(files.erase(edit.file), 1U) << edit.file;
        return;
    }
    std::string& text = files[edit.file];
    const std::size_t place = edit.from == kWhole ? 0 : text.find(edit.from);
    ASSERT_NE(place, std::string::npos) << edit.file << " holds no " << edit.from;
    text.replace(place, edit.from == kWhole ? text.size() : edit.from.size(), edit.to);
}
} // namespace

SEdit BusWithoutTitle()
{
    return {kCan, "        <Text type=\"title\" text=\"Bus Without Power\"/>\n", ""};
}

SEdit BusVisible()
{
    return {kCan, "visible=\"no\"", "visible=\"yes\""};
}

SEdit SatellitesWithoutBus()
{
    return {kPositioning, "              <Trigger id=\"CAN:Bus:Power:4\"/>\n", ""};
}

SEdit SatellitesNotVisible()
{
    return {kPositioning, " visible=\"yes\"", ""};
}

SEdit SatellitesWithTheirOwnTitle()
{
    return {kPositioning, "value=\"trigger\"", "value=\"parent\""};
}

SEdit SatellitesWithoutReceiver()
{
    return {kPositioning, "              <Trigger id=\"Positioning:GPS:Communications:9\"/>\n", ""};
}

SEdit SecondSetOfBus()
{
    return {kPositioning,
            "          </TriggerSet>\n"
            "        </TriggerSets>",
            "          </TriggerSet>\n"
            "          <TriggerSet>\n"
            "            <Options>\n"
            "              <Option name=\"autoTrigger\" value=\"yes\"/>\n"
            "            </Options>\n"
            "            <Triggers>\n"
            "              <Trigger id=\"CAN:Bus:Power:4\"/>\n"
            "            </Triggers>\n"
            "          </TriggerSet>\n"
            "        </TriggerSets>"};
}

SEdit PatternOfSatellitesOnly()
{
    return {kPatterns, "      <error id=\"Positioning:GPS:Communications:9\"/>\n", ""};
}

void WriteEdited(const std::string& prefix, const std::vector<SEdit>& edits)
{
    Files files = {
        {kList, kListText}, {kPositioning, kPositioningText}, {kCan, kCanText}, {kPatterns, kPatternsText}};
    for (const SEdit& edit : edits)
        Apply(edit, files);
    for (const auto& file : files)
        Support::WriteFile(prefix + file.first, file.second);
}

} // namespace CheckCases
