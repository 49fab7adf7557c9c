#include "faultkeeperd/Options.h"

#include "support/CapturedOutput.h"

#include <Faultkeeper/Version.h>

#include <gtest/gtest.h>

#include <vector>

using namespace Support;
using Faultkeeper::Apps::COptions;

namespace
{
COptions Read(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "faultkeeperd");
    return COptions(static_cast<int>(arguments.size()), arguments.data());
}

int StatusOf(const std::vector<const char*>& arguments)
{
    return Read(arguments).ExitStatus();
}
} // namespace

TEST(Options, ListensWhereReportersConnectUnlessTold)
{
    const COptions options = Read({"--config", "/etc/console"});
    EXPECT_TRUE(options.Run());
    EXPECT_EQ(options.Port(), 5300);
    EXPECT_EQ(options.RunDirectory(), "");
}

TEST(Options, EndsTheConfigurationDirectoryWithASlash)
{
    EXPECT_EQ(Read({"--config", "/etc/console"}).ConfigurationPrefix(), "/etc/console/");
    EXPECT_EQ(Read({"--config", "/etc/console/"}).ConfigurationPrefix(), "/etc/console/");
}

TEST(Options, TakesAllOfThem)
{
    const COptions options = Read({"--config=c", "--run-dir", "r", "--port", "0"});
    EXPECT_TRUE(options.Run());
    EXPECT_EQ(options.RunDirectory(), "r");
    EXPECT_EQ(options.Port(), 0);
}

TEST(Options, KeepTheStateInTheRunDirectoryUnlessTold)
{
    const COptions options = Read({"--config", "c"});
    EXPECT_EQ(options.State(), "");
    EXPECT_EQ(options.JournalLimit(), 100000u);
    EXPECT_FALSE(options.Sync());
    EXPECT_EQ(options.Connections(), 256u);
}

TEST(Options, SayWhereAndHowToKeepTheState)
{
    const COptions options =
        Read({"--config", "c", "--state", "none", "--journal-limit", "7", "--sync", "--connections", "1000"});
    EXPECT_TRUE(options.Run());
    EXPECT_EQ(options.State(), "none");
    EXPECT_EQ(options.JournalLimit(), 7u);
    EXPECT_TRUE(options.Sync());
    EXPECT_EQ(options.Connections(), 1000u);
}

TEST(Options, RefusesAWrongCommandLineWithStatus2)
{
    const std::vector<std::vector<const char*>> wrong = {{},
                                                         {"--config"},
                                                         {"--config", "c", "--run-dir"},
                                                         {"--config", "c", "--port", "65536"},
                                                         {"--config", "c", "--port", "-1"},
                                                         {"--config", "c", "--port", "http"},
                                                         {"--config", "c", "--journal-limit", "-1"},
                                                         {"--config", "c", "--connections", "0"},
                                                         {"--config", "c", "--state"},
                                                         {"--config", "c", "extra"},
                                                         {"--config", "c", "--verbose"}};
    for (const std::vector<const char*>& arguments : wrong)
        EXPECT_NE(WarnedBy([&] { EXPECT_EQ(StatusOf(arguments), 2); }), "") << arguments.size();
}

TEST(Options, SaysWhatIsMissing)
{
    EXPECT_NE(WarnedBy([] { StatusOf({}); }).find("--config is required"), std::string::npos);
}

TEST(Options, PrintsItsVersion)
{
    EXPECT_EQ(PrintedBy([] { EXPECT_EQ(StatusOf({"--version"}), 0); }),
              "faultkeeperd " FAULTKEEPER_VERSION "\n");
}

TEST(Options, SaysInItsHelpThatThePortIsForTests)
{
    const std::string help = PrintedBy([] { EXPECT_EQ(StatusOf({"--help"}), 0); });
    EXPECT_NE(help.find("for tests only"), std::string::npos);
}

TEST(Options, SaysInItsHelpHowABrokenRuleEndsTheProgram)
{
    const std::string help = PrintedBy([] { EXPECT_EQ(StatusOf({"--help"}), 0); });
    EXPECT_NE(help.find("134 (SIGABRT) the configuration breaks a rule"), std::string::npos);
}
