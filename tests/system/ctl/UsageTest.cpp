#include "CtlFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
class Usage : public CtlTest
{
};

const char* const kCommands[] = {"raise",     "clear",  "status",  "list",    "history", "watch", "active",
                                 "hierarchy", "decode", "symbols", "strings", "tree",    "table"};
} // namespace

TEST_F(Usage, VersionIsTold)
{
    const SFinished finished = Bare({"--version"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "faultkeeperctl 1.0.0\n");
}

TEST_F(Usage, HelpNamesEveryCommand)
{
    const SFinished finished = Bare({"--help"});
    EXPECT_EQ(finished.status, 0);
    for (const char* const command : kCommands)
        EXPECT_NE(finished.output.find("\n  " + std::string(command) + " "), std::string::npos) << command;
}

TEST_F(Usage, EveryCommandHasHelpWithAnExample)
{
    for (const char* const command : kCommands)
    {
        const SFinished finished = Bare({command, "--help"});
        EXPECT_EQ(finished.status, 0) << command;
        EXPECT_NE(finished.output.find("\nExample: faultkeeperctl "), std::string::npos) << command;
    }
}

TEST_F(Usage, AMistakeOnTheCommandLineIsStatusTwo)
{
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {}, {"list", "x"}, {"--unknown", "list"}, {"decode"}, {"raise"}, {"--config"}})
    {
        const SFinished finished = Bare(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.output, "");
        EXPECT_NE(finished.errors, "");
    }
}

TEST_F(Usage, AnUnknownCommandIsToldWithTheNearestOne)
{
    const SFinished finished = Bare({"hierachy"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.errors,
              "faultkeeperctl: no command is called \"hierachy\", the nearest is \"hierarchy\"\n");
}

TEST_F(Usage, AConfigurationThatIsNotThereIsToldWithItsFile)
{
    for (const char* const command : {"list", "history", "watch", "active", "hierarchy", "tree"})
    {
        const SFinished finished =
            Bare({"--config", m_directory.Path(), "--run-dir", m_directory.Path(), command});
        EXPECT_EQ(finished.status, 1) << command;
        EXPECT_EQ(finished.output, "") << command;
        EXPECT_EQ(finished.errors.find(m_directory.File("FaultkeeperConfig.xml:1:1: error: ")), 0U)
            << finished.errors;
    }
}

TEST_F(Usage, AModuleFileThatIsBrokenIsToldWithLineAndColumn)
{
    WriteFile(Configuration() + "/module0.xml", "<Module>\n<SubModule></Module>\n");
    const SFinished finished = Ctl({"tree"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors.find(Configuration() + "/module0.xml:2:"), 0U) << finished.errors;
}

TEST_F(Usage, ABrokenRuleOfTheConfigurationIsAnAnswerAndNoCrash)
{
    WriteFile(Configuration() + "/module0.xml", "<Module>\n<Fault/>\n</Module>\n");
    const SFinished finished = Ctl({"tree"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_NE(finished.errors.find("Assertion `subModuleNode.Name() == \"SubModule\"' failed"),
              std::string::npos);
    EXPECT_NE(finished.errors.find("faultkeeperctl: the configuration breaks this rule and cannot be used\n"),
              std::string::npos);
}

TEST_F(Usage, ABrokenPipeEndsTheProgramQuietly)
{
    const std::string line =
        std::string(FAULTKEEPER_TEST_CTL) + " --config " + Configuration() + " strings - | true";
    CProgram shell({"/bin/sh", "-c", line});
    EXPECT_EQ(shell.Wait(), 0);
    EXPECT_EQ(shell.Errors(), "");
}

TEST_F(Usage, OutputThatCannotBeWrittenIsTold)
{
    const std::string line = std::string(FAULTKEEPER_TEST_CTL) + " symbols > /dev/full";
    CProgram shell({"/bin/sh", "-c", line});
    EXPECT_EQ(shell.Wait(), 1);
    EXPECT_EQ(shell.Errors(), "faultkeeperctl: cannot write to standard output: No space left on device\n");
}
