#include "common/text/ErrorNames.h"

#include "support/ConfigurationBuilder.h"
#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>

using namespace Faultkeeper::Apps;

namespace
{
const ErrorId kUntouched(-7, -7);

ErrorId Parsed(const std::string& text)
{
    ErrorId id = kUntouched;
    std::string problem = "untouched";
    EXPECT_TRUE(ParseErrorId(text, id, problem)) << problem;
    EXPECT_EQ(problem, "untouched");
    return id;
}

std::string Refusal(const std::string& text)
{
    ErrorId id = kUntouched;
    std::string problem;
    EXPECT_FALSE(ParseErrorId(text, id, problem));
    EXPECT_EQ(id, kUntouched);
    return problem;
}
} // namespace

TEST(NameTables, HoldEveryNameWithItsValue)
{
    ASSERT_EQ(ModuleNames().size(), 12U);
    ASSERT_EQ(SubModuleNames().size(), 54U);
    ASSERT_EQ(ProblemNames().size(), 89U);
    ASSERT_EQ(FailureModeNames().size(), 21U);
    ASSERT_EQ(SeverityNames().size(), 4U);
    EXPECT_EQ(ModuleNames().back().name, "NTrip");
    EXPECT_EQ(ModuleNames().back().value, 0xC0000);
    EXPECT_EQ(SubModuleNames().back().name, "Treatments");
    EXPECT_EQ(SubModuleNames().back().value, 0x3600);
    EXPECT_EQ(ProblemNames().back().name, "ABCurve Definition");
    EXPECT_EQ(ProblemNames().back().value, 95);
    EXPECT_EQ(FailureModeNames().front().name, "DataValidButAboveOperatingRangeSevere");
    EXPECT_EQ(FailureModeNames().front().value, 0);
    EXPECT_EQ(SeverityNames().back().name, "Critical");
}

TEST(ErrorName, JoinsNamesAndFailureMode)
{
    EXPECT_EQ(ErrorName(0x40C1B, 2), "Positioning:GPS:No Data:2");
    EXPECT_EQ(ErrorName(0, 21), ":::21");
    EXPECT_EQ(ErrorNumber(0x40C1B, 2), "0x40C1B:2");
}

TEST(ParseErrorId, ReadsNames)
{
    EXPECT_EQ(Parsed("Positioning:GPS:No Data:2"), ErrorId(0x40C1B, 2));
    EXPECT_EQ(Parsed("NTrip:Treatments:ABCurve Definition:20"), ErrorId(0xC365F, 20));
}

TEST(ParseErrorId, ReadsANamedFailureMode)
{
    EXPECT_EQ(Parsed("Positioning:GPS:No Data:RootCauseUnknown"), ErrorId(0x40C1B, 11));
    EXPECT_EQ(Parsed("0x40C1B:RootCauseUnknown"), ErrorId(0x40C1B, 11));
}

TEST(ParseErrorId, ReadsNumbersHexadecimalOrDecimal)
{
    EXPECT_EQ(Parsed("0x40C1B:2"), ErrorId(0x40C1B, 2));
    EXPECT_EQ(Parsed("0X40c1b:2"), ErrorId(0x40C1B, 2));
    EXPECT_EQ(Parsed("265243:2"), ErrorId(0x40C1B, 2));
    EXPECT_EQ(Parsed("0265243:02"), ErrorId(0x40C1B, 2));
}

TEST(ParseErrorId, AcceptsTheFailureModeOfErrorsWhoseModeIsNotKnown)
{
    EXPECT_EQ(Parsed("0x40C1B:21"), ErrorId(0x40C1B, 21));
}

TEST(ParseErrorId, RefusesFailureModesOutOfRangeInsteadOfCuttingThem)
{
    EXPECT_EQ(Refusal("Positioning:GPS:No Data:22"), "\"22\" is no failure mode: they are numbered 0 to 21");
    EXPECT_EQ(Refusal("0x40C1B:65538"), "\"65538\" is no failure mode: they are numbered 0 to 21");
    EXPECT_EQ(Refusal("0x40C1B:4294967298"), "\"4294967298\" is no failure mode: they are numbered 0 to 21");
    EXPECT_EQ(Refusal("0x40C1B:2x"), "\"2x\" is no failure mode: they are numbered 0 to 21");
    EXPECT_NE(Refusal("0x40C1B:-1"), "");
    EXPECT_NE(Refusal("0x40C1B: 2"), "");
    EXPECT_NE(Refusal("0x40C1B:"), "");
}

TEST(ParseErrorId, RefusesCodesThatNoErrorCanHave)
{
    const std::string noName = " is the problem code of no error: one of its parts has no name";
    EXPECT_EQ(Refusal("0xD0C1B:2"), "0xD0C1B" + noName);     // no thirteenth module
    EXPECT_EQ(Refusal("0x4371B:2"), "0x4371B" + noName);     // no 55th sub-module
    EXPECT_EQ(Refusal("0x40C3B:2"), "0x40C3B" + noName);     // problem 59 is not assigned
    EXPECT_EQ(Refusal("0x1040C1B:2"), "0x1040C1B" + noName); // a bit above the module
    EXPECT_EQ(Refusal("0:2"), "0" + noName);
}

TEST(ParseErrorId, RefusesCodesThatAreNoNumbersOrTooLarge)
{
    EXPECT_EQ(Refusal("0x100040C1B:2"),
              "\"0x100040C1B\" is no problem code, such as 0x40C1B"); // low 32 bits fit
    EXPECT_EQ(Refusal("40C1B:2"), "\"40C1B\" is no problem code, such as 0x40C1B");
    EXPECT_EQ(Refusal("0x:2"), "\"0x\" is no problem code, such as 0x40C1B");
    EXPECT_EQ(Refusal("-265243:2"), "\"-265243\" is no problem code, such as 0x40C1B");
    EXPECT_EQ(Refusal(" 265243:2"), "\" 265243\" is no problem code, such as 0x40C1B");
}

TEST(ParseErrorId, NamesTheNearestRightNameOfEachFieldAndOfTheWhole)
{
    EXPECT_EQ(Refusal("Positionin:gps:No Dta:2"),
              "no module is called \"Positionin\", the nearest is \"Positioning\"; "
              "no sub-module is called \"gps\", the nearest is \"GPS\"; "
              "no problem is called \"No Dta\", the nearest is \"No Data\"; "
              "did you mean \"Positioning:GPS:No Data:2\"?");
}

TEST(ParseErrorId, NamesTheNearestFailureMode)
{
    EXPECT_EQ(Refusal("Positioning:GPS:No Data:RootCauseUnkown"),
              "no failure mode is called \"RootCauseUnkown\", the nearest is \"RootCauseUnknown\"; "
              "did you mean \"Positioning:GPS:No Data:RootCauseUnknown\"?");
}

TEST(ParseErrorId, SaysNothingOfTheNearestIfNothingIsNear)
{
    EXPECT_EQ(Refusal("Q:GPS:No Data:2"), "no module is called \"Q\"");
}

TEST(ParseErrorId, TellsTheFormsToATextWithoutFourFields)
{
    for (const char* const text : {"", "GPS", "Positioning:GPS:2", "Positioning:GPS:No Data:2:3"})
        EXPECT_EQ(Refusal(text), "\"" + std::string(text) +
                                     "\" is no error: type Module:Sub-module:Problem:Failure mode, such as "
                                     "\"Positioning:GPS:No Data:2\", or CODE:TYPE, such as 0x40C1B:2");
}

TEST(NearestConfigured, IsAnErrorOfTheConfigurationForNamesAndNumbers)
{
    const Support::CFreshDirectory directory;
    Support::CConfigurationBuilder()
        .Leaf("Positioning:GPS:No Data:2")
        .Leaf("Positioning:Ublox:No Data:2")
        .WriteTo(directory.Prefix());
    const Faultkeeper::CErrorDatabase database(directory.Prefix());
    EXPECT_EQ(NearestConfigured("Positioning:Ublx:No Data:2", database), "Positioning:Ublox:No Data:2");
    EXPECT_EQ(NearestConfigured("0x40C1B:3", database), "Positioning:GPS:No Data:2");
    EXPECT_EQ(NearestConfigured("something else altogether", database), "");
}
