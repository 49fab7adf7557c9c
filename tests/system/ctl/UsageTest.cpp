#include "CtlFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

using namespace Support;

namespace
{
class Usage : public CtlTest
{
};

const std::vector<std::string> kCommands = {"raise", "clear",   "status",  "list",     "history",
                                            "watch", "active",  "why",     "journal",  "at",
                                            "key",   "decode",  "check",   "tree",     "hierarchy",
                                            "table", "symbols", "strings", "simulate", "statistics"};

// The first words of the lines below "Subcommands:", but for those that a description goes on in.
std::vector<std::string> CommandsInHelp(const std::string& help)
{
    std::vector<std::string> commands;
    std::istringstream lines(help.substr(help.find("\nSubcommands:\n") + 1));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.empty())
    {
        if (line.size() > 2 && line[2] != ' ')
            commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    return commands;
}
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
    EXPECT_THAT(CommandsInHelp(finished.output), testing::UnorderedElementsAreArray(kCommands));
}

TEST_F(Usage, EveryCommandHasHelpWithAnExample)
{
    for (const std::string& command : kCommands)
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

TEST_F(Usage, AnUnknownOptionIsToldWithTheNearestOne)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--jsn", "list"}, {"list", "--jsn"}, {"--jsn"}})
    {
        const SFinished finished = Bare(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.errors,
                  "faultkeeperctl: no option is called \"--jsn\", the nearest is \"--json\"\n");
    }
    EXPECT_EQ(Bare({"hierarchy", "--al"}).errors,
              "faultkeeperctl: no option is called \"--al\", the nearest is \"--all\"\n");
    EXPECT_EQ(Bare({"--confg=x", "list"}).errors,
              "faultkeeperctl: no option is called \"--confg\", the nearest is \"--config\"\n");
}

TEST_F(Usage, EveryMistakeIsToldInTheProgramsName)
{
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {}, {"list", "x"}, {"decode"}, {"raise"}, {"table"}, {"--config"}, {"--json=x", "list"}})
        EXPECT_EQ(Bare(arguments).errors.find("faultkeeperctl: "), 0U) << Bare(arguments).errors;
}

TEST_F(Usage, HelpIsACommandToo)
{
    const SFinished finished = Bare({"help"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, Bare({"--help"}).output);
    EXPECT_EQ(Bare({"help", "decode"}).output, Bare({"decode", "--help"}).output);
}

TEST_F(Usage, HelpIsACommandBehindOptionsToo)
{
    const std::string help = Bare({"decode", "--help"}).output;
    EXPECT_EQ(Bare({"--json", "help"}).output, Bare({"--help"}).output);
    EXPECT_EQ(Bare({"--config", ".", "help", "decode"}).output, help);
    EXPECT_EQ(Bare({"--run-dir=.", "--json", "help", "decode"}).output, help);
    EXPECT_EQ(Bare({"help", "decode", "0140"}).output, help);
    EXPECT_EQ(Bare({"--config", "help", "decode", "--help"}).output, help);
}

TEST_F(Usage, WhatIsWrongBesideHelpIsTold)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"help", "hierarchy", "--dto"},
                                               {"hierarchy", "--dto", "--help"},
                                               {"--dto", "help", "hierarchy"}})
    {
        const SFinished finished = Bare(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.output, "");
        EXPECT_EQ(finished.errors,
                  "faultkeeperctl: no option is called \"--dto\", the nearest is \"--dot\"\n");
    }
    const SFinished finished = Bare({"help", "list", "extra"});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.output, "");
    EXPECT_EQ(finished.errors,
              "faultkeeperctl: The following argument was not expected: extra; see --help\n");
    EXPECT_EQ(Bare({"list", "extra"}).errors, finished.errors);
    EXPECT_EQ(Bare({"help", "--config"}).errors, Bare({"--config"}).errors);
}

TEST_F(Usage, HelpAboutACommandThatThereIsNotNamesTheNearestOne)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"help", "heirarchy"}, {"heirarchy", "--help"}})
    {
        const SFinished finished = Bare(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.output, "");
        EXPECT_EQ(finished.errors,
                  "faultkeeperctl: no command is called \"heirarchy\", the nearest is \"hierarchy\"\n");
    }
}

TEST_F(Usage, ADirectoryWithoutANameIsRefused)
{
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"--config", "", "tree"}, {"--config=", "tree"}, {"tree", "--config", ""}})
    {
        const SFinished finished = Bare(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.errors, "faultkeeperctl: --config names no directory\n");
    }
    EXPECT_EQ(Bare({"--run-dir", "", "status"}).errors, "faultkeeperctl: --run-dir names no directory\n");
}

TEST_F(Usage, ControlCharactersThatWereTypedDoNotReachTheTerminal)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"\x1b[2Jlist"},
                                               {"help", "\x1b[2Jlist"},
                                               {"help", "list", "\x1b[2Jx"},
                                               {"list", "\x1b[2Jx"},
                                               {"raise", "\x1b[2J:GPS:No Data:2"},
                                               {"decode", "\x1b"}})
    {
        const SFinished finished = Ctl(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.errors.find('\x1b'), std::string::npos);
        EXPECT_NE(finished.errors.find("\\x1B"), std::string::npos) << finished.errors;
    }
}

TEST_F(Usage, AFailureIsADocumentTooIfOneIsAskedFor)
{
    const SFinished noOwner = Ctl({"--json", "list"});
    EXPECT_EQ(noOwner.status, 3);
    EXPECT_EQ(Json::parse(noOwner.output),
              Json({{"error", "no owner: there is no table in " + m_directory.Path()}, {"status", 3}}));
    EXPECT_NE(noOwner.errors, "");
    EXPECT_EQ(Json::parse(Ctl({"list", "--jsn", "--json"}).output)["status"], 2);
    WriteFile(Configuration() + "/module0.xml", "<Module>\n<Fault/>\n</Module>\n");
    EXPECT_EQ(Json::parse(Ctl({"tree", "--json"}).output)["status"], 1);
}

TEST_F(Usage, ASlipInAnIdentifierIsToldAlsoIfTheConfigurationCannotBeUsed)
{
    const std::string slip = "faultkeeperctl: no problem is called \"No Dta\"";
    const auto expectSlip = [&](const std::string& configuration)
    {
        const SFinished finished = Bare({"--config", configuration, "raise", "Positioning:GPS:No Dta:2"});
        EXPECT_EQ(finished.status, 2);
        EXPECT_NE(finished.errors.find(slip), std::string::npos) << finished.errors;
    };
    expectSlip(m_directory.File("none"));
    WriteFile(Configuration() + "/module0.xml", "<Module>\n<SubModule></Module>\n");
    expectSlip(Configuration());
    WriteFile(Configuration() + "/module0.xml", "<Module>\n<Fault/>\n</Module>\n");
    expectSlip(Configuration());
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

TEST_F(Usage, ControlCharactersInAConfigurationDoNotReachTheTerminal)
{
    WriteFile(Configuration() + "/FaultkeeperConfig.xml",
              "<Faultkeeper><ErrorList><Module identifier=\"CAN\" file=\"\xC2\x9B"
              "2J.xml\"/></ErrorList></Faultkeeper>");
    const SFinished finished = Ctl({"tree"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors.find("\xC2\x9B"), std::string::npos) << finished.errors;
    EXPECT_NE(finished.errors.find("\\x"), std::string::npos) << finished.errors;
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
