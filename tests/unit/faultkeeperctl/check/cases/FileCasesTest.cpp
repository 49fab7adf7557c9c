#include "CheckCase.h"

namespace
{

using namespace CheckCases;

// Files that are missing, broken or empty.
const SCheckCase kFileCases[] = {
    {"TheListIsMissing",
     {Without(kList)},
     "FaultkeeperConfig.xml:1:1: error: No such file or directory\n"
     "1 error, 0 warnings in 2 files\n"},
    {"TheListIsNotWellFormed",
     {{kList, "</ErrorList>", "</ErrorLst>"}},
     "FaultkeeperConfig.xml:5:5: error: mismatched tag\n"
     "1 error, 0 warnings in 2 files\n"},
    {"TheListHasAnotherTopElement",
     {{kList, "<Faultkeeper>", "<FaultKeeper>"}, {kList, "</Faultkeeper>", "</FaultKeeper>"}},
     "FaultkeeperConfig.xml:1:1: error: the top element is not \"Faultkeeper\" but \"FaultKeeper\"\n"
     "1 error, 0 warnings in 2 files\n"},
    {"ThereIsNoErrorList",
     {{kList, "<ErrorList>", "<Modules>"}, {kList, "</ErrorList>", "</Modules>"}},
     "FaultkeeperConfig.xml:1:1: error: there is no \"ErrorList\" in \"Faultkeeper\"\n"
     "FaultkeeperConfig.xml:2:3: warning: \"Modules\" in \"Faultkeeper\" is not read\n"
     "1 error, 1 warning in 2 files\n"},
    {"TheErrorListIsMisspelled",
     {{kList, "<ErrorList>", "<Errorlist>"}, {kList, "</ErrorList>", "</Errorlist>"}},
     "FaultkeeperConfig.xml:2:3: error: unknown element \"Errorlist\"; did you mean \"ErrorList\"?\n"
     "1 error, 0 warnings in 2 files\n"},
    {"TheListIsEmpty",
     {{kList,
       "    <Module identifier=\"Positioning\" file=\"positioning.xml\"/>\n"
       "    <Module identifier=\"CAN\" file=\"can.xml\"/>\n",
       ""},
      Without(kPatterns)},
     "FaultkeeperConfig.xml:2:3: error: the \"ErrorList\" is empty: it lists no \"Module\"\n"
     "ErrorPatterns.xml:1:1: warning: No such file or directory: no tree gets a friendly code\n"
     "1 error, 1 warning in 2 files\n"},
    {"AModuleFileIsMissing",
     {Without(kCan)},
     "FaultkeeperConfig.xml:4:30: error: module file can.xml: No such file or directory\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileIsNotNamed",
     {{kList, " file=\"can.xml\"", ""}},
     "FaultkeeperConfig.xml:4:5: error: this \"Module\" names no file\n"
     "1 error, 0 warnings in 3 files\n"},
    {"AModuleFileHasAnotherName",
     {{kList, "\"can.xml\"", "\"Can.xml\""}},
     "FaultkeeperConfig.xml:4:30: error: module file Can.xml: No such file or directory\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileIsADirectory",
     {{kList, "\"can.xml\"", "\".\""}},
     "FaultkeeperConfig.xml:4:30: error: module file .: Is a directory\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileIsEmpty",
     {{kCan, kWhole, ""}},
     "can.xml:1:1: error: no element found\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileEndsTooEarly",
     {{kCan,
       "  </SubModule>\n"
       "</Module>\n",
       ""}},
     "can.xml:11:1: error: no element found\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileIsNotWellFormed",
     {{kCan, "severity=\"Medium\"", "severity=\"Medium"}},
     "can.xml:4:55: error: not well-formed (invalid token)\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileNamesAnAttributeTwice",
     {{kCan, "severity=\"Medium\"", "severity=\"Medium\" severity=\"Low\""}},
     "can.xml:4:47: error: duplicate attribute\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileHasADocumentType",
     {{kCan, "<Module>",
       "<!DOCTYPE Module>\n"
       "<Module>"}},
     "can.xml:1:1: error: document type declarations are refused\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileHasAnotherTopElement",
     {{kCan, "<Module>", "<Modul>"}, {kCan, "</Module>", "</Modul>"}},
     "can.xml:1:1: error: the top element is not \"Module\" but \"Modul\"\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AModuleFileDefinesNothing",
     {{kCan, kWhole,
       "<Module>\n"
       "  <SubModule identifier=\"Bus\"/>\n"
       "</Module>\n"},
      SatellitesWithoutBus()},
     "can.xml:1:1: error: the \"Module\" is empty: it defines no error\n"
     "1 error, 0 warnings in 4 files\n"},
    {"AllModuleFilesAreBroken",
     {{kCan, "</Module>", "</Modul>"}, {kPositioning, "</Module>", "<Module>"}},
     "positioning.xml:35:1: error: no element found\n"
     "can.xml:12:3: error: mismatched tag\n"
     "2 errors, 0 warnings in 4 files\n"},
    {"ThePatternsAreMissing",
     {Without(kPatterns)},
     "ErrorPatterns.xml:1:1: warning: No such file or directory: no tree gets a friendly code\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ThePatternsAreNotWellFormed",
     {{kPatterns, "</Patterns>", ""}},
     "ErrorPatterns.xml:11:3: error: mismatched tag\n"
     "1 error, 0 warnings in 4 files\n"},
    {"ThePatternsHaveNoPatterns",
     {{kPatterns,
       "Patterns>\n"
       "    <",
       "patterns>\n"
       "    <"},
      {kPatterns, "</Patterns>", "</patterns>"}},
     "ErrorPatterns.xml:2:3: warning: unknown element \"patterns\"; did you mean \"Patterns\"?\n"
     "0 errors, 1 warning in 4 files\n"},
    {"ThePatternsAreSomethingElse",
     {{kPatterns, kWhole, "<ErrorPatterns><Codes/></ErrorPatterns>\n"}},
     "ErrorPatterns.xml:1:1: warning: there is no \"Patterns\" here: no tree gets a friendly code\n"
     "ErrorPatterns.xml:1:16: warning: \"Codes\" in \"ErrorPatterns\" is not read\n"
     "0 errors, 2 warnings in 4 files\n"},
};

INSTANTIATE_TEST_SUITE_P(File, CheckTest, testing::ValuesIn(kFileCases), NameOf);

} // namespace
