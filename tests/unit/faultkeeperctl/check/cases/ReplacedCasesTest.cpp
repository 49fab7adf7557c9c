#include "CheckCase.h"

namespace
{

using namespace CheckCases;

SEdit CanListedTwice()
{
    return {kList, "  </ErrorList>",
            "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n"
            "  </ErrorList>"};
}

const char* const kOnlyListedTwice =
    "FaultkeeperConfig.xml:5:5: warning: this \"Module\" is listed before, in line 4: all of its errors are "
    "defined twice\n"
    "0 errors, 1 warning in 4 files\n";

// Errors that nobody sees, because a later definition takes their place.
const SCheckCase kReplacedCases[] = {
    {"AnErrorWithoutTitleThatIsDefinedAgain",
     {BusWithoutTitle(),
      BusVisible(),
      SatellitesWithTheirOwnTitle(),
      {kList, "  </ErrorList>",
       "    <Module identifier=\"CAN\" file=\"more.xml\"/>\n"
       "  </ErrorList>"},
      {"more.xml", "", kCanText}},
     "more.xml:4:7: warning: \"CAN:Bus:Power:4\" is defined before, in can.xml:4:7: triggers and reports "
     "find this one only\n"
     "0 errors, 1 warning in 5 files\n"},
    {"AnErrorThatNeedsNoTitleInAModuleThatIsListedTwice",
     {BusWithoutTitle(), BusVisible(), SatellitesWithTheirOwnTitle(), CanListedTwice()},
     kOnlyListedTwice},
    {"ASetThatIsShownInAModuleThatIsListedTwice",
     {CanListedTwice(),
      {kCan, "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n",
       "        <Text type=\"shortProblem\" text=\"Bus power\"/>\n"
       "        <TriggerSets><TriggerSet><Triggers>\n"
       "          <Trigger id=\"Positioning:GPS:Communications:9\"/>\n"
       "        </Triggers></TriggerSet></TriggerSets>\n"}},
     kOnlyListedTwice},
    {"ASetWithTitlesOfTriggersInAnErrorThatIsDefinedAgain",
     {BusWithoutTitle(),
      PatternOfSatellitesOnly(),
      {kList, "  </ErrorList>",
       "    <Module identifier=\"Positioning\" file=\"more.xml\"/>\n"
       "  </ErrorList>"},
      {"more.xml", "",
       "<Module><SubModule identifier=\"GPS\"><Problem identifier=\"No Data\">\n"
       "<Error identifier=\"2\" severity=\"High\" visible=\"yes\">\n"
       "<Text type=\"title\" text=\"No Satellites\"/>\n"
       "<Text type=\"problem\" text=\"The receiver sends no data.\"/>\n"
       "<Text type=\"solution\" text=\"Check the cable of the receiver.\"/>\n"
       "<Text type=\"shortProblem\" text=\"No satellites\"/>\n"
       "</Error></Problem></SubModule></Module>\n"}},
     "more.xml:2:1: warning: \"Positioning:GPS:No Data:2\" is defined before, in positioning.xml:4:7: "
     "triggers and reports find this one only\n"
     "0 errors, 1 warning in 5 files\n"},
};

INSTANTIATE_TEST_SUITE_P(Replaced, CheckTest, testing::ValuesIn(kReplacedCases), NameOf);

} // namespace
