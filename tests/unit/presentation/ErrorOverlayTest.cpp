#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorOverlay.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>

using namespace Faultkeeper;

namespace
{

typedef std::vector<std::pair<int, int>> TIds;

const std::pair<int, int> kNoData(0x42800 + 27, 2);     // Positioning:Ublox:No Data:2
const std::pair<int, int> kPower(0x42800 + 38, 3);      // Positioning:Ublox:Power:3
const std::pair<int, int> kNoNetwork(0x90D00 + 28, 11); // Cell Radio:GSM:No Network:11

const char* const kNoDataId = "<error id='Positioning:Ublox:No Data:2'/>";
const char* const kPowerId = "<error id='Positioning:Ublox:Power:3'/>";
const char* const kNoNetworkId = "<error id='Cell Radio:GSM:No Network:11'/>";

std::string Pattern(const std::string& attributes, const std::string& children)
{
    return "<pattern " + attributes + ">" + children + "</pattern>";
}

std::string Exact(const std::string& code, const std::string& children)
{
    return Pattern("fixedCode='" + code + "'", children);
}

std::string Partial(const std::string& code, const std::string& children)
{
    return Pattern("fixedCode='" + code + "' allowPartialMatch='yes'", children);
}

class ErrorOverlayTest : public testing::Test
{
protected:
    /// Code that an overlay of these patterns finds.
    std::string Found(const std::string& patterns, const TIds& ids) const
    {
        return FoundInFile("<Overlay><Patterns>" + patterns + "</Patterns></Overlay>", ids);
    }

    std::string FoundInFile(const std::string& text, const TIds& ids) const
    {
        Support::WriteFile(m_directory.File("ErrorPatterns.xml"), text);
        return CErrorOverlay(m_directory.Prefix()).FindFriendlyCode(ids);
    }

    Support::CFreshDirectory m_directory;
};

TEST_F(ErrorOverlayTest, ExactIdsGiveTheCode)
{
    EXPECT_EQ(Found(Exact("A1", kNoDataId), {kNoData}), "A1");
    EXPECT_EQ(Found(Exact("A1", kNoDataId), {kPower}), "");
    EXPECT_EQ(Found(Exact("A1", kNoDataId), {}), "");
}

TEST_F(ErrorOverlayTest, IdsMatchInAnyOrderOnBothSides)
{
    for (const std::string& ids :
         {std::string(kNoDataId) + kPowerId + kNoNetworkId, std::string(kNoNetworkId) + kPowerId + kNoDataId})
    {
        EXPECT_EQ(Found(Exact("A1", ids), {kPower, kNoNetwork, kNoData}), "A1");
        EXPECT_EQ(Found(Exact("A1", ids), {kNoData, kPower, kNoNetwork}), "A1");
        EXPECT_EQ(Found(Exact("A1", ids), {kNoNetwork, kPower, kNoData}), "A1");
    }
}

TEST_F(ErrorOverlayTest, TheFailureModeIsPartOfTheId)
{
    EXPECT_EQ(Found(Exact("A1", kNoDataId), {{kNoData.first, 3}}), "");
}

TEST_F(ErrorOverlayTest, ASupersetDoesNotMatchAnExactPattern)
{
    EXPECT_EQ(Found(Exact("A1", kNoDataId), {kNoData, kPower}), "");
}

TEST_F(ErrorOverlayTest, ASubsetDoesNotMatchAnExactPattern)
{
    EXPECT_EQ(Found(Exact("A1", std::string(kNoDataId) + kPowerId), {kNoData}), "");
}

TEST_F(ErrorOverlayTest, ASupersetMatchesAPartialPattern)
{
    EXPECT_EQ(Found(Partial("A1", kNoDataId), {kPower, kNoData, kNoNetwork}), "A1");
    EXPECT_EQ(Found(Partial("A1", std::string(kNoNetworkId) + kNoDataId), {kPower, kNoData, kNoNetwork}),
              "A1");
}

TEST_F(ErrorOverlayTest, ASubsetDoesNotMatchAPartialPattern)
{
    EXPECT_EQ(Found(Partial("A1", std::string(kNoDataId) + kPowerId), {kNoData}), "");
}

TEST_F(ErrorOverlayTest, AnEmptyPartialPatternMatchesEverythingAndHidesWhatFollows)
{
    const std::string patterns = Partial("ANY", "") + Exact("A1", kNoDataId);
    EXPECT_EQ(Found(patterns, {kNoData}), "ANY");
    EXPECT_EQ(Found(patterns, {kPower, kNoNetwork}), "ANY");
    EXPECT_EQ(Found(patterns, {}), "ANY");
}

TEST_F(ErrorOverlayTest, AnEmptyExactPatternMatchesNoErrorsOnly)
{
    EXPECT_EQ(Found(Exact("NONE", ""), {}), "NONE");
    EXPECT_EQ(Found(Exact("NONE", ""), {kNoData}), "");
}

TEST_F(ErrorOverlayTest, TheFirstPatternInTheFileWins)
{
    EXPECT_EQ(Found(Partial("P", kNoDataId) + Exact("E", kNoDataId), {kNoData}), "P")
        << "an exact match is no better than a partial one before it";
    EXPECT_EQ(Found(Partial("SMALL", kNoDataId) + Partial("LARGE", std::string(kNoDataId) + kPowerId),
                    {kNoData, kPower}),
              "SMALL")
        << "nor a larger pattern than a smaller one";
    EXPECT_EQ(Found(Exact("FIRST", kNoDataId) + Exact("SECOND", kNoDataId), {kNoData}), "FIRST");
}

TEST_F(ErrorOverlayTest, APatternThatDoesNotMatchIsPassedOver)
{
    EXPECT_EQ(Found(Exact("E", kNoDataId) + Partial("P", kPowerId) + Partial("Q", kNoDataId),
                    {kNoData, kNoNetwork}),
              "Q");
}

TEST_F(ErrorOverlayTest, ExactMatchesCountDuplicates)
{
    const std::string twice = std::string(kNoDataId) + kNoDataId + kPowerId;
    EXPECT_EQ(Found(Exact("A1", twice), {kNoData, kPower, kNoData}), "A1");
    EXPECT_EQ(Found(Exact("A1", twice), {kNoData, kPower}), "");
    EXPECT_EQ(Found(Exact("A1", twice), {kNoData, kPower, kPower}), "");
    EXPECT_EQ(Found(Exact("A1", std::string(kNoDataId) + kPowerId), {kNoData, kNoData, kPower}), "");
}

TEST_F(ErrorOverlayTest, PartialMatchesIgnoreDuplicates)
{
    const std::string twice = std::string(kNoDataId) + kNoDataId;
    EXPECT_EQ(Found(Partial("A1", twice), {kNoData}), "A1");
    EXPECT_EQ(Found(Partial("A1", kNoDataId), {kNoData, kNoData}), "A1");
}

TEST_F(ErrorOverlayTest, AnythingButYesMeansExact)
{
    for (const char* const value : {"no", "Yes", "YES", "true", "1", "", " yes", "yes "})
    {
        const std::string attributes = std::string("fixedCode='A1' allowPartialMatch='") + value + "'";
        EXPECT_EQ(Found(Pattern(attributes, kNoDataId), {kNoData, kPower}), "") << value;
        EXPECT_EQ(Found(Pattern(attributes, kNoDataId), {kNoData}), "A1") << value;
    }
}

TEST_F(ErrorOverlayTest, APatternWithoutACodeIsNotLoaded)
{
    EXPECT_EQ(Found(Pattern("", kNoDataId) + Pattern("fixedCode=''", kNoDataId) + Exact("A1", kNoDataId),
                    {kNoData}),
              "A1");
    EXPECT_EQ(Found(Pattern("allowPartialMatch='yes'", "") + Exact("A1", kNoDataId), {kPower}), "");
}

TEST_F(ErrorOverlayTest, TheCodeIsAnyText)
{
    EXPECT_EQ(Found(Exact(" GPS &amp; 7 ", kNoDataId), {kNoData}), " GPS & 7 ");
}

TEST_F(ErrorOverlayTest, ChildrenOfAPatternMayHaveAnyName)
{
    EXPECT_EQ(
        Found(Exact("A1", "<error id='Positioning:Ublox:No Data:2'/><pattern id='Positioning:Ublox:Power:3'/>"
                          "<x id='Cell Radio:GSM:No Network:11'/>"),
              {kNoData, kPower, kNoNetwork}),
        "A1");
}

TEST_F(ErrorOverlayTest, OtherElementsBesideThePatternsAreSkipped)
{
    const std::string ids = kNoDataId;
    EXPECT_EQ(Found("<Pattern fixedCode='UPPER'>" + ids + "</Pattern><patterns fixedCode='MANY'>" + ids +
                        "</patterns><group><pattern fixedCode='DEEP'>" + ids + "</pattern></group>" +
                        Exact("A1", ids),
                    {kNoData}),
              "A1");
}

TEST_F(ErrorOverlayTest, AnIdWithoutFourFieldsIsSkipped)
{
    const std::string malformed =
        "<error/><error id=''/><error id='Positioning'/><error id='Positioning:Ublox:No Data'/>"
        "<error id='Positioning:Ublox:No Data:2:3'/><error name='Positioning:Ublox:Power:3'/>";
    EXPECT_EQ(Found(Exact("A1", malformed + kNoDataId), {kNoData}), "A1");
    EXPECT_EQ(Found(Exact("A1", malformed), {}), "A1");
}

TEST_F(ErrorOverlayTest, EmptyFieldsCountAsFields)
{
    EXPECT_EQ(Found(Exact("A1", "<error id=':::'/>"), {{-1, 0}}), "A1");
    EXPECT_EQ(Found(Exact("A1", "<error id='Positioning:Ublox:No Data:'/>"), {{kNoData.first, 0}}), "A1");
    EXPECT_EQ(Found(Exact("A1", "<error id='Positioning::No Data:2'/>"), {{-1, 2}}), "A1");
}

TEST_F(ErrorOverlayTest, AnUnknownNameMakesTheWholeCodeMinusOne)
{
    for (const char* const id :
         {"Nowhere:Ublox:No Data:2", "Positioning:Nothing:No Data:2", "Positioning:Ublox:No:2",
          "positioning:Ublox:No Data:2", "Positioning: Ublox:No Data:2"})
        EXPECT_EQ(Found(Exact("A1", std::string("<error id='") + id + "'/>"), {{-1, 2}}), "A1") << id;
}

TEST_F(ErrorOverlayTest, TheFailureModeIsTheNumberThatTheFieldStartsWith)
{
    const std::pair<const char*, int> modes[] = {{"2", 2},
                                                 {"02", 2},
                                                 {"2abc", 2},
                                                 {" 2", 2},
                                                 {"x", 0},
                                                 {"", 0},
                                                 {"NoSuchMode", 0},
                                                 {"DataErraticAndIntermittentlyIncorrect", 0},
                                                 {"-3", -3},
                                                 {"99", 99},
                                                 {"2147483647", 2147483647},
                                                 {"2147483648", 2147483647},
                                                 {"99999999999999999999", 2147483647},
                                                 {"-99999999999999999999", std::numeric_limits<int>::min()}};
    for (const auto& mode : modes)
        EXPECT_EQ(
            Found(Exact("A1", std::string("<error id='Positioning:Ublox:No Data:") + mode.first + "'/>"),
                  {{kNoData.first, mode.second}}),
            "A1")
            << mode.first;
}

TEST_F(ErrorOverlayTest, IdsAreOrderedByCodeThenByFailureMode)
{
    EXPECT_EQ(Found(Exact("A1", "<e id='Positioning:Ublox:No Data:3'/><e id='GPS:GPS:Power:9'/>"
                                "<e id='Positioning:Ublox:No Data:-1'/><e id='Nowhere:GPS:Power:1'/>"),
                    {{kNoData.first, 3}, {-1, 1}, {kNoData.first, -1}, {0x10C00 + 38, 9}}),
              "A1");
}

TEST_F(ErrorOverlayTest, TheTopElementMayHaveAnyName)
{
    const std::string patterns = "<Patterns>" + Exact("A1", kNoDataId) + "</Patterns>";
    EXPECT_EQ(FoundInFile("<Faultkeeper>" + patterns + "</Faultkeeper>", {kNoData}), "A1");
    EXPECT_EQ(FoundInFile("<x><other/>" + patterns + "<other/></x>", {kNoData}), "A1");
    EXPECT_EQ(FoundInFile("<Patterns>" + patterns + "</Patterns>", {kNoData}), "A1");
}

TEST_F(ErrorOverlayTest, WithoutPatternsBelowTheTopElementNothingIsFound)
{
    EXPECT_EQ(FoundInFile("<Patterns>" + Exact("A1", kNoDataId) + "</Patterns>", {kNoData}), "");
    EXPECT_EQ(FoundInFile("<x><y><Patterns>" + Exact("A1", kNoDataId) + "</Patterns></y></x>", {kNoData}),
              "");
    EXPECT_EQ(FoundInFile("<x><patterns>" + Exact("A1", kNoDataId) + "</patterns></x>", {kNoData}), "");
    EXPECT_EQ(FoundInFile("<x/>", {}), "");
    EXPECT_EQ(FoundInFile("<x><Patterns/></x>", {}), "");
}

TEST_F(ErrorOverlayTest, AFileThatIsNotWellFormedGivesNothing)
{
    const std::string text = "<x><Patterns>" + Exact("A1", kNoDataId) + "</Patterns>";
    EXPECT_EQ(FoundInFile(text, {kNoData}), "");
    EXPECT_EQ(FoundInFile(text + "</y>", {kNoData}), "");
    EXPECT_EQ(FoundInFile("", {kNoData}), "");
}

TEST_F(ErrorOverlayTest, AMissingFileGivesNothing)
{
    EXPECT_EQ(CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}), "");
    EXPECT_EQ(CErrorOverlay("/no such directory/").FindFriendlyCode({kNoData}), "");
}

TEST_F(ErrorOverlayTest, TheDirectoryIsPutInFrontOfTheFileNameAsItStands)
{
    Support::WriteFile(m_directory.File("oldErrorPatterns.xml"),
                       "<x><Patterns>" + Exact("OLD", kNoDataId) + "</Patterns></x>");
    EXPECT_EQ(CErrorOverlay(m_directory.File("old")).FindFriendlyCode({kNoData}), "OLD");
    EXPECT_EQ(Found(Exact("A1", kNoDataId), {kNoData}), "A1");
    EXPECT_EQ(CErrorOverlay(m_directory.Path()).FindFriendlyCode({kNoData}), "");
}

TEST_F(ErrorOverlayTest, TheGivenIdsStayAsTheyAre)
{
    Support::WriteFile(m_directory.File("ErrorPatterns.xml"),
                       "<x><Patterns>" + Partial("A1", kNoDataId) + "</Patterns></x>");
    const CErrorOverlay overlay(m_directory.Prefix());
    const TIds ids = {kNoNetwork, kNoData, kPower};
    EXPECT_EQ(overlay.FindFriendlyCode(ids), "A1");
    EXPECT_EQ(ids, (TIds{kNoNetwork, kNoData, kPower}));
    overlay.GetCodes();
    EXPECT_EQ(overlay.FindFriendlyCode(ids), "A1");
}

} // namespace
