#include <Faultkeeper/Identifiers.h>

#include "unit/Common/fixtures/IdentifierTables.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using namespace Faultkeeper;

using Identifier = std::pair<int, int>;

EModuleIdentifier Module(int value)
{
    return static_cast<EModuleIdentifier>(value);
}

ESubModuleIdentifier SubModule(int value)
{
    return static_cast<ESubModuleIdentifier>(value);
}

EProblemIdentifier Problem(int value)
{
    return static_cast<EProblemIdentifier>(value);
}

// ---- The numbers

TEST(IdentifiersTest, EveryModuleHasItsNumberAndName)
{
    for (const auto& expected : Expected::kModules)
    {
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(static_cast<int>(expected.enumerator), expected.value);
        EXPECT_EQ(TranslateModuleId(expected.enumerator), expected.name);
        EXPECT_EQ(TranslateModuleId(std::string(expected.name)), expected.enumerator);
    }
}

TEST(IdentifiersTest, EverySubModuleHasItsNumberAndName)
{
    for (const auto& expected : Expected::kSubModules)
    {
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(static_cast<int>(expected.enumerator), expected.value);
        EXPECT_EQ(TranslateSubModuleId(expected.enumerator), expected.name);
        EXPECT_EQ(TranslateSubModuleId(std::string(expected.name)), expected.enumerator);
    }
}

TEST(IdentifiersTest, EveryProblemHasItsNumberAndName)
{
    for (const auto& expected : Expected::kProblems)
    {
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(static_cast<int>(expected.enumerator), expected.value);
        EXPECT_EQ(TranslateProblemId(expected.enumerator), expected.name);
        EXPECT_EQ(TranslateProblemId(std::string(expected.name)), expected.enumerator);
    }
}

TEST(IdentifiersTest, EveryFailureModeHasItsNumberAndName)
{
    for (const auto& expected : Expected::kFailureModes)
    {
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(static_cast<int>(expected.enumerator), expected.value);
        EXPECT_EQ(TranslateProblemType(expected.enumerator), expected.name);
        EXPECT_EQ(TranslateProblemType(std::string(expected.name)), expected.enumerator);
    }
}

TEST(IdentifiersTest, EverySeverityHasItsNumberAndName)
{
    for (const auto& expected : Expected::kSeverities)
    {
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(static_cast<int>(expected.enumerator), expected.value);
        EXPECT_EQ(TranslateSeverity(expected.enumerator), expected.name);
        EXPECT_EQ(TranslateSeverity(std::string(expected.name)), expected.enumerator);
    }
}

TEST(IdentifiersTest, UnknownCoordinatesAreMinusOneAndTheUnknownFailureModeIsTwentyOne)
{
    EXPECT_EQ(static_cast<int>(emiUnknown), -1);
    EXPECT_EQ(static_cast<int>(esmiUnknown), -1);
    EXPECT_EQ(static_cast<int>(epiUnknown), -1);
    EXPECT_EQ(static_cast<int>(eesUnknown), -1);
    EXPECT_EQ(static_cast<int>(eptUnknown), 21);
}

TEST(IdentifiersTest, EveryCoordinateIsAPlainInt)
{
    EXPECT_TRUE((std::is_same<std::underlying_type<EModuleIdentifier>::type, int>::value));
    EXPECT_TRUE((std::is_same<std::underlying_type<ESubModuleIdentifier>::type, int>::value));
    EXPECT_TRUE((std::is_same<std::underlying_type<EProblemIdentifier>::type, int>::value));
    EXPECT_TRUE((std::is_same<std::underlying_type<EProblemType>::type, int>::value));
    EXPECT_TRUE((std::is_same<std::underlying_type<EErrorSeverity>::type, int>::value));
}

TEST(IdentifiersTest, APositioningGpsNoDataCodeIsItsThreeFieldsTogether)
{
    EXPECT_EQ(int{emiPositioning} | int{esmiGPS} | int{epiNoData}, 0x40C1B);
}

// ---- Modules

TEST(IdentifiersTest, AWholeProblemCodeGivesItsModulesName)
{
    EXPECT_EQ(TranslateModuleId(Module(0x40C1B)), "Positioning");
    EXPECT_EQ(TranslateModuleId(Module(0x4FFFF)), "Positioning");
    EXPECT_EQ(TranslateModuleId(Module(0xCFFFF)), "NTrip");
}

TEST(IdentifiersTest, AModuleOutsideTheTableHasNoName)
{
    for (const int value : {0, 1, 0xFFFF, 0xD0000, 0x1000000, 0x1010000, INT_MAX, INT_MIN, -0x10000, -1})
        EXPECT_EQ(TranslateModuleId(Module(value)), "") << value;
}

TEST(IdentifiersTest, AModuleNameMustMatchLetterForLetter)
{
    for (const char* name : {"", "positioning", "POSITIONING", " Positioning", "Positioning ", "Position",
                             "Vantor 2", "Navigation and Control", "65536"})
        EXPECT_EQ(TranslateModuleId(std::string(name)), emiUnknown) << name;
    EXPECT_EQ(TranslateModuleId(std::string("GPS\0", 4)), emiUnknown);
}

// ---- Sub-modules

TEST(IdentifiersTest, TheLowBitsOfASubModuleAreIgnored)
{
    EXPECT_EQ(TranslateSubModuleId(SubModule(0x0C00)), "GPS");
    EXPECT_EQ(TranslateSubModuleId(SubModule(0x0CFF)), "GPS");
    EXPECT_EQ(TranslateSubModuleId(SubModule(0x36FF)), "Treatments");
}

TEST(IdentifiersTest, AWholeProblemCodeHasNoSubModuleName)
{
    EXPECT_EQ(TranslateSubModuleId(SubModule(0x40C00)), "");
    EXPECT_EQ(TranslateSubModuleId(SubModule(0x40C1B)), "");
}

TEST(IdentifiersTest, ASubModuleOutsideTheTableHasNoName)
{
    for (const int value : {0, 1, 0xFF, 0x3700, 0x10100, INT_MAX, INT_MIN, -0x100, -1})
        EXPECT_EQ(TranslateSubModuleId(SubModule(value)), "") << value;
}

TEST(IdentifiersTest, ASubModuleNameMustMatchLetterForLetter)
{
    for (const char* name : {"", "gps", "Gps", "GPS ", " GPS", "GP", "GPSS", "No Data", "Positioning", "12"})
        EXPECT_EQ(TranslateSubModuleId(std::string(name)), esmiUnknown) << name;
}

// ---- Problems

TEST(IdentifiersTest, AProblemOutsideTheTableHasNoName)
{
    for (const int value : {0, 96, 0x101, 0x40C1B, INT_MAX, INT_MIN, -1})
        EXPECT_EQ(TranslateProblemId(Problem(value)), "") << value;
}

TEST(IdentifiersTest, AnUnassignedProblemHasNoName)
{
    for (const int value : {59, 63, 64, 65, 66, 73})
        EXPECT_EQ(TranslateProblemId(Problem(value)), "") << value;
}

TEST(IdentifiersTest, AProblemNameMustMatchLetterForLetter)
{
    EXPECT_EQ(TranslateProblemId(std::string("No Data")), 27);
    for (const char* name :
         {"", "no data", "NO DATA", "No Data ", " No Data", "No", "No DataX", "Steering Was Overridden",
          "PIN Missing", "Unable to Resolve Host", "Unable To Set A", "27", "(null)"})
        EXPECT_EQ(TranslateProblemId(std::string(name)), epiUnknown) << name;
}

TEST(IdentifiersTest, TheSameTextMeansDifferentThingsAsSubModuleAndAsProblem)
{
    EXPECT_EQ(static_cast<int>(TranslateSubModuleId(std::string("Communications"))), 0x700);
    EXPECT_EQ(static_cast<int>(TranslateProblemId(std::string("Communications"))), 9);
    EXPECT_EQ(static_cast<int>(TranslateSubModuleId(std::string("Steering"))), 0x2600);
    EXPECT_EQ(static_cast<int>(TranslateProblemId(std::string("Steering"))), 46);
    EXPECT_EQ(static_cast<int>(TranslateSubModuleId(std::string("Waypoints"))), 0x2900);
    EXPECT_EQ(static_cast<int>(TranslateProblemId(std::string("Waypoints"))), 88);
}

// ---- Failure modes

struct SFailureModeText
{
    const char* text;
    int expected;
};

const SFailureModeText kFailureModeTexts[] = {{"RootCauseUnknown", 11},
                                              {"11", 11},
                                              {"0", 0},
                                              {"7", 7},
                                              {"20", 20},
                                              {"21", 21},
                                              {"22", 21},
                                              {"-3", 21},
                                              {"-0", 0},
                                              {"+7", 7},
                                              {"x", 21},
                                              {"", 21},
                                              {" ", 21},
                                              {"5abc", 5},
                                              {"  5", 5},
                                              {"\t\n\v\f\r 5", 5},
                                              {"5 6", 5},
                                              {"007", 7},
                                              {"0x10", 0},
                                              {"1e1", 1},
                                              {"12.9", 12},
                                              {"- 3", 21},
                                              {"--3", 21},
                                              {"+-3", 21},
                                              {"a5", 21},
                                              {"2147483647", 21},
                                              {"2147483648", 21},
                                              {"-2147483648", 21},
                                              {"4294967297", 21},
                                              {"-4294967291", 21},
                                              {"18446744073709551621", 21},
                                              {"99999999999999999999", 21},
                                              {"-99999999999999999999", 21},
                                              {"rootCauseUnknown", 21},
                                              {"RootCauseUnknown ", 21},
                                              {" RootCauseUnknown", 21},
                                              {"RootCause", 21}};

TEST(IdentifiersTest, AFailureModeIsReadAsANameAndThenAsANumber)
{
    for (const SFailureModeText& row : kFailureModeTexts)
        EXPECT_EQ(static_cast<int>(TranslateProblemType(std::string(row.text))), row.expected) << row.text;
}

TEST(IdentifiersTest, AFailureModeOutsideTheTableHasNoName)
{
    EXPECT_EQ(TranslateProblemType(eptUnknown), "");
    EXPECT_EQ(TranslateProblemType(static_cast<EProblemType>(22)), "");
    EXPECT_EQ(TranslateProblemType(static_cast<EProblemType>(INT_MAX)), "");
}

TEST(IdentifiersTest, ANegativeFailureModeOrSeverityHasNoNameEither)
{
    EXPECT_EQ(TranslateProblemType(static_cast<EProblemType>(-1)), "");
    EXPECT_EQ(TranslateProblemType(static_cast<EProblemType>(INT_MIN)), "");
    EXPECT_EQ(TranslateSeverity(eesUnknown), "");
    EXPECT_EQ(TranslateSeverity(static_cast<EErrorSeverity>(INT_MIN)), "");
}

// ---- Severities

TEST(IdentifiersTest, ASeverityNameMustMatchLetterForLetter)
{
    for (const char* name : {"", "critical", "CRITICAL", "Critical ", " Low", "Hi", "3"})
        EXPECT_EQ(TranslateSeverity(std::string(name)), eesUnknown) << name;
}

TEST(IdentifiersTest, ASeverityOutsideTheTableHasNoName)
{
    EXPECT_EQ(TranslateSeverity(static_cast<EErrorSeverity>(4)), "");
    EXPECT_EQ(TranslateSeverity(static_cast<EErrorSeverity>(INT_MAX)), "");
}

// ---- Order

TEST(IdentifiersTest, IdentifiersAreOrderedByProblemCodeThenByProblemType)
{
    const SErrorIDComparer before{};
    EXPECT_TRUE(before(Identifier(1, 20), Identifier(2, 0)));
    EXPECT_FALSE(before(Identifier(2, 0), Identifier(1, 20)));
    EXPECT_TRUE(before(Identifier(1, 2), Identifier(1, 3)));
    EXPECT_FALSE(before(Identifier(1, 3), Identifier(1, 2)));
    EXPECT_FALSE(before(Identifier(1, 2), Identifier(1, 2)));
}

TEST(IdentifiersTest, IdentifiersAreOrderedAsSignedNumbers)
{
    const SErrorIDComparer before{};
    EXPECT_TRUE(before(Identifier(-1, 0), Identifier(0, 0)));
    EXPECT_TRUE(before(Identifier(INT_MIN, 0), Identifier(INT_MAX, 0)));
    EXPECT_TRUE(before(Identifier(0, -1), Identifier(0, 0)));
    EXPECT_FALSE(before(Identifier(0, 0), Identifier(0, -1)));
}

TEST(IdentifiersTest, TheOrderServesAMapOfIdentifiers)
{
    std::map<Identifier, int, SErrorIDComparer> map;
    for (const Identifier& id : {Identifier(3, 1), Identifier(1, 9), Identifier(3, 0), Identifier(1, 9)})
        map[id]++;
    std::vector<Identifier> order;
    for (const auto& entry : map)
        order.push_back(entry.first);
    EXPECT_EQ(order, (std::vector<Identifier>{{1, 9}, {3, 0}, {3, 1}}));
}

} // namespace
