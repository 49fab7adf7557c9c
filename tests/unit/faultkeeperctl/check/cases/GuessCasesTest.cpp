#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// An automatic set that the bus gets, with one trigger.
SEdit SetOfBus(const std::string& trigger)
{
    const char* const last = "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n";
    return {kCan, last,
            last + ("        <TriggerSets><TriggerSet>\n"
                    "          <Options><Option name=\"autoTrigger\" value=\"yes\"/></Options>\n"
                    "          <Triggers><Trigger id=\"" +
                    trigger +
                    "\"/></Triggers>\n"
                    "        </TriggerSet></TriggerSets>\n")};
}

// Another sub-module of the bus's module, with the same error.
std::string SubModuleLikeBus(const std::string& name)
{
    return "  <SubModule identifier=\"" + name +
           "\">\n"
           "    <Problem identifier=\"Power\">\n"
           "      <Error identifier=\"4\" severity=\"Medium\">\n"
           "        <Text type=\"title\" text=\"Strange\"/>\n"
           "        <Text type=\"problem\" text=\"Strange things happen.\"/>\n"
           "        <Text type=\"solution\" text=\"Wait.\"/>\n"
           "        <Text type=\"shortProblem\" text=\"Strange\"/>\n"
           "      </Error>\n"
           "    </Problem>\n"
           "  </SubModule>\n";
}

const char* const kUnknownBusInAnId =
    "positioning.xml:20:24: error: unknown sub-module \"Bos\" in an id; did you mean \"Bus\"? [rule 305: "
    "subModuleId != esmiUnknown]\n"
    "1 error, 0 warnings in 4 files\n";

const char* const kUnknownSubModuleInCan =
    "can.xml:12:14: error: unknown sub-module \"Bos\"; did you mean \"Bus\"? [rule 97: subModuleId != "
    "esmiUnknown]\n"
    "1 error, 0 warnings in 4 files\n";

// Names that are not known, and come near one that was probably not meant.
const SCheckCase kGuessCases[] = {
    {"AnUnknownNameNearTheErrorThatHoldsIt",
     {{kPositioning, "CAN:Bus:Power:4", "Positioning:GSP:No Data:2"},
      SatellitesWithoutReceiver(),
      PatternOfSatellitesOnly()},
     "positioning.xml:19:24: error: unknown sub-module \"GSP\" in an id; did you mean \"GPS\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnUnknownNameNearATriggerThatTheSetHas",
     {{kPositioning, "Positioning:GPS:Communications:9", "CAN:Bus:Power:4"},
      {kPositioning, "\"CAN:Bus:Power:4\"/>\n              <Trigger id=\"CAN:Bus:Power:4\"",
       "\"CAN:Bus:Power:4\"/>\n              <Trigger id=\"CAN:Bos:Power:4\""}},
     kUnknownBusInAnId},
    {"AnErrorWithoutTitleBesideTwoTriggersThatCannotBothMeanTheOther",
     {{kPositioning, "Positioning:GPS:Communications:9", "CAN:Bus:Power:4"},
      {kPositioning, "\"CAN:Bus:Power:4\"/>\n              <Trigger id=\"CAN:Bus:Power:4\"",
       "\"CAN:Bus:Power:4\"/>\n              <Trigger id=\"CAN:Bos:Power:4\""},
      {kPositioning, "severity=\"Low\"", "severity=\"High\" visible=\"yes\""}},
     kUnknownBusInAnId},
    {"ACircleOnlyByAnUnknownName",
     {SetOfBus("Positioning:GSP:No Data:2")},
     "can.xml:11:30: error: unknown sub-module \"GSP\" in an id; did you mean \"GPS\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AThresholdThatIsMetButForAnUnknownName",
     {{kPositioning, "\"triggersNeeded\" value=\"1\"", "\"triggersNeeded\" value=\"2\""},
      {kPositioning, "CAN:Bus:Power:4", "Positioning:GSP:No Data:2"}},
     "positioning.xml:20:24: error: unknown sub-module \"GSP\" in an id; did you mean \"GPS\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"TwoAutomaticSetsWithATriggerInCommonButForAnUnknownName",
     {SatellitesWithoutBus(), SecondSetOfBus(), {kPositioning, "CAN:Bus:Power:4", "CAN:Bos:Power:4"}},
     "positioning.xml:27:24: error: unknown sub-module \"Bos\" in an id; did you mean \"Bus\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorThatIsClearedByOneThatAnUnknownNameRaises",
     {SecondSetOfBus(), SetOfBus("Positioning:GSP:Communications:9")},
     "can.xml:11:30: error: unknown sub-module \"GSP\" in an id; did you mean \"GPS\"? [rule 305: "
     "subModuleId != esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorThatIsClearedByOneThatAMisspelledTriggerRaises",
     {SecondSetOfBus(), SetOfBus("Positioning:GPS:Communications:8")},
     "can.xml:11:30: warning: no error \"Positioning:GPS:Communications:8\" is defined; did you mean "
     "\"Positioning:GPS:Communications:9\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AnErrorThatIsClearedByOneThatAMisspelledOptionRaises",
     {SecondSetOfBus(),
      SetOfBus("Positioning:GPS:Communications:9"),
      {kCan, "name=\"autoTrigger\"", "name=\"autoTriger\""}},
     "can.xml:10:28: warning: unknown option \"autoTriger\"; did you mean \"autoTrigger\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFailureModeAsANameBesideATriggerThatItIsReadAs",
     {{kPositioning, "CAN:Bus:Power:4", "CAN:Bus:Power:0"},
      {kPositioning, "Positioning:GPS:Communications:9", "CAN:Bus:Power:VoltageBelowNormalOrShortedLow"},
      {kCan, "    </Problem>\n",
       "      <Error identifier=\"0\" severity=\"Low\">\n"
       "        <Text type=\"title\" text=\"Power Too High\"/>\n"
       "        <Text type=\"problem\" text=\"The bus has too much power.\"/>\n"
       "        <Text type=\"solution\" text=\"Wait.\"/>\n"
       "        <Text type=\"shortProblem\" text=\"Power\"/>\n"
       "      </Error>\n"
       "    </Problem>\n"}},
     "positioning.xml:19:24: warning: the failure mode in an id is a number, but here it is "
     "\"VoltageBelowNormalOrShortedLow\", which is read as 0; did you mean \"4\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"APartialPatternWithAnUnknownNameNearAnErrorThatItHas",
     {{kPatterns,
       "    <pattern fixedCode=\"P-2\" allowPartialMatch=\"yes\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n",
       "    <pattern fixedCode=\"P-2\" allowPartialMatch=\"yes\">\n"
       "      <error id=\"Positioning:GPS:No Data:2\"/>\n"
       "      <error id=\"Positioning:GSP:No Data:2\"/>\n"}},
     "ErrorPatterns.xml:9:14: warning: unknown sub-module \"GSP\" in an id; did you mean \"GPS\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"AFileOfTwoModulesThatNobodyKnows",
     {{kList, "\"Positioning\" file=\"positioning.xml\"", "\"Qwertyuiop\" file=\"can.xml\""},
      {kList, "\"CAN\"", "\"Zxcvbnmzxcv\""},
      {kPatterns, kWhole, "<ErrorPatterns><Patterns/></ErrorPatterns>\n"}},
     "FaultkeeperConfig.xml:3:13: error: unknown module \"Qwertyuiop\" [rule 47: moduleId != emiUnknown]\n"
     "FaultkeeperConfig.xml:4:13: error: unknown module \"Zxcvbnmzxcv\" [rule 47: moduleId != emiUnknown]\n"
     "2 errors, 0 warnings in 3 files\n"},
    {"AFileOfAModuleAndOfOneWhoseNameComesNearIt",
     {{kList, "  </ErrorList>", "    <Module identifier=\"CAM\" file=\"can.xml\"/>\n  </ErrorList>"}},
     "FaultkeeperConfig.xml:5:13: error: unknown module \"CAM\"; did you mean \"CAN\"? [rule 47: moduleId != "
     "emiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AnErrorBehindTheOneThatItsNameComesNear",
     {{kCan, "</Module>\n", SubModuleLikeBus("Bos") + "</Module>\n"}},
     kUnknownSubModuleInCan},
    {"AnErrorInFrontOfTheOneThatItsNameComesNear",
     {{kCan, "\"Bus\"", "\"Bos\""}, {kCan, "</Module>\n", SubModuleLikeBus("Bus") + "</Module>\n"}},
     "can.xml:2:14: error: unknown sub-module \"Bos\"; did you mean \"Bus\"? [rule 97: subModuleId != "
     "esmiUnknown]\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ATriggerOfAnErrorThatOneBesideTheNearestMayBe",
     {{kCan, "</Module>\n", SubModuleLikeBus("Bos") + "</Module>\n"},
      {kPositioning, "CAN:Bus:Power:4", "CAN:CAN:Power:4"}},
     kUnknownSubModuleInCan},
};

INSTANTIATE_TEST_SUITE_P(Guess, CheckTest, testing::ValuesIn(kGuessCases), NameOf);

} // namespace
