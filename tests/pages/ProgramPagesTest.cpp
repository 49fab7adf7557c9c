#include "pages/ManPage.h"
#include "pages/ProgramHelp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

using namespace Support;

namespace
{

const std::set<std::string> kAlways = {"-h", "--help"}; // behind every command, and told once

CManPage Page(const std::string& name)
{
    return CManPage(std::string(MAN_PAGES_DIRECTORY) + "/" + name);
}

typedef std::map<std::string, std::set<std::string>> Names;

/// One line for each: "raise: --timeout= ID".
std::string Text(const Names& all)
{
    std::string text;
    for (const auto& names : all)
    {
        text += names.first + ":";
        for (const std::string& name : names.second)
            text += " " + name;
        text += "\n";
    }
    return text;
}

// ".It Fl h , Fl -help" has two names.
std::set<std::string> OptionsOf(const CManPage& page)
{
    std::set<std::string> options;
    for (std::vector<std::string> words : page.Items("DESCRIPTION", "Fl"))
    {
        words.insert(words.begin(), "Fl");
        for (const std::string& name : Synopsis(words))
            options.insert(name);
    }
    return options;
}

Names CommandsOf(const CManPage& page)
{
    Names commands;
    for (const std::vector<std::string>& words : page.Items("COMMANDS", "Ic"))
    {
        const std::vector<std::string> names = Synopsis(words);
        commands[words.front()].insert(names.begin(), names.end());
    }
    return commands;
}

Names CommandsOfHelp()
{
    Names commands;
    for (const std::string& command : HelpOf({FAULTKEEPER_TEST_CTL, "--help"}).commands)
    {
        const SProgramHelp help = HelpOf({FAULTKEEPER_TEST_CTL, command, "--help"});
        std::set<std::string>& names = commands[command];
        std::set_difference(help.options.begin(), help.options.end(), kAlways.begin(), kAlways.end(),
                            std::inserter(names, names.end()));
        names.insert(help.arguments.begin(), help.arguments.end());
    }
    return commands;
}

std::string WithoutMark(const std::string& option)
{
    return option.substr(0, option.find('='));
}

std::set<std::string> SynopsisOptions(const CManPage& page)
{
    std::set<std::string> options;
    for (const SMacroLine& line : page.Lines())
    {
        if (line.section != "SYNOPSIS")
            continue;
        std::vector<std::string> words = line.words;
        words.insert(words.begin(), line.macro);
        for (const std::string& name : Synopsis(words))
        {
            if (name.front() == '-')
                options.insert(name);
        }
    }
    return options;
}

} // namespace

TEST(ProgramPagesTest, TheCommandLinesPageHasThePrintedCommandsEachWithItsOptionsAndArguments)
{
    const Names printed = CommandsOfHelp();
    EXPECT_GE(printed.size(), 15U);
    EXPECT_EQ(Text(CommandsOf(Page("faultkeeperctl.1"))), Text(printed));
}

TEST(ProgramPagesTest, TheCommandLinesPageHasThePrintedOptions)
{
    const SProgramHelp help = HelpOf({FAULTKEEPER_TEST_CTL, "--help"});
    EXPECT_EQ(Text({{"options", OptionsOf(Page("faultkeeperctl.1"))}}), Text({{"options", help.options}}));
}

TEST(ProgramPagesTest, TheCommandLinesPageMentionsNoOptionThatThereIsNot)
{
    std::set<std::string> known;
    Names printed = CommandsOfHelp();
    printed["options"] = HelpOf({FAULTKEEPER_TEST_CTL, "--help"}).options;
    for (const auto& names : printed)
        std::transform(names.second.begin(), names.second.end(), std::inserter(known, known.end()),
                       WithoutMark);
    for (const std::string& option : Page("faultkeeperctl.1").Options())
        EXPECT_EQ(known.count(option), 1U) << option;
}

TEST(ProgramPagesTest, TheOwnersPageHasThePrintedOptions)
{
    const SProgramHelp help = HelpOf({FAULTKEEPER_TEST_OWNER, "--help"});
    const CManPage page = Page("faultkeeperd.8");
    EXPECT_GE(help.options.size(), 8U);
    EXPECT_EQ(Text({{"options", OptionsOf(page)}}), Text({{"options", help.options}}));
}

TEST(ProgramPagesTest, TheOwnersSynopsisHasThePrintedOptions)
{
    std::set<std::string> printed = HelpOf({FAULTKEEPER_TEST_OWNER, "--help"}).options;
    printed.erase("-h"); // the long form will do
    EXPECT_EQ(Text({{"synopsis", SynopsisOptions(Page("faultkeeperd.8"))}}), Text({{"synopsis", printed}}));
}
