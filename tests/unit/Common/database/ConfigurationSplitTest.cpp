#include <Core/Utilities/SplitString.h>

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorOverlay.h>

#include "support/FreshDirectory.h"
#include "unit/Common/fixtures/ConfigurationText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

// Stands in for the host's function in this whole program: a host that cannot split.
bool Core::Utilities::SplitString(const std::string& text, const std::string& separator,
                                  std::vector<std::string>&, int limit)
{
    std::fprintf(stderr, "asked to split '%s' at '%s', limit %d\n", text.c_str(), separator.c_str(), limit);
    return false;
}

namespace
{

using namespace ConfigurationText;

TEST(ConfigurationSplitDeathTest, AnIdThatTheHostCannotSplitStopsTheLoad)
{
    const Support::CFreshDirectory directory;
    WriteList(directory.Prefix(), kEntry);
    WriteModule(
        directory.Prefix(),
        WholeError("No Data", TriggerSets(TriggerSet(Triggers(Trigger("Positioning:GPS:No Data:1"))))));
    EXPECT_EXIT(
        Faultkeeper::CErrorDatabase(directory.Prefix()), testing::KilledBySignal(SIGABRT),
        testing::AllOf(
            testing::HasSubstr("asked to split 'Positioning:GPS:No Data:1' at ':', limit 0\n"),
            testing::HasSubstr(
                ": src/Common/ErrorDatabase:295: "
                "void Faultkeeper::CErrorDatabase::LoadTriggerSetTriggers(Faultkeeper::CError&, "
                "Faultkeeper::CTriggerSet&, const Core::IO::XMLNode&): "
                "Assertion `Core::Utilities::SplitString(identifier, \":\", subStrings)' failed.\n")));
}

TEST(ConfigurationSplitTest, AnIdOfAPatternThatTheHostCannotSplitIsPassedOver)
{
    const Support::CFreshDirectory directory;
    Support::WriteFile(
        directory.File("ErrorPatterns.xml"),
        "<a><Patterns><pattern fixedCode='12'><error id='Positioning:GPS:No Data:1'/></pattern>"
        "</Patterns></a>");
    testing::internal::CaptureStderr();
    const Faultkeeper::CErrorOverlay overlay(directory.Prefix());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "asked to split 'Positioning:GPS:No Data:1' at ':', limit 0\n");
    EXPECT_EQ(overlay.FindFriendlyCode({}), "12") << "a pattern without ids is that of no error";
}

TEST(ConfigurationSplitTest, WithoutTriggersNothingIsSplit)
{
    const Support::CFreshDirectory directory;
    WriteList(directory.Prefix(), kEntry);
    WriteModule(directory.Prefix(), WholeError("No Data"));
    EXPECT_TRUE(Faultkeeper::CErrorDatabase(directory.Prefix()).Loaded());
}

} // namespace
