#include "CtlFixture.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Support;

namespace
{
const char* const kMarkup =
    "./module2.xml:5:22: warning: the text \"problem\" has markup in it, which screens show "
    "as it stands: \"<unbekannt>\"\n";

// The fixture's configuration, checked where it is.
class CheckCommand : public CtlTest
{
protected:
    SFinished Check(const std::vector<std::string>& further = {}) const
    {
        const CWorkingDirectory inside(Configuration());
        std::vector<std::string> arguments = {"check", "."};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return Bare(arguments);
    }

    std::string File(const std::string& name) const { return Configuration() + "/" + name; }

    void Replace(const std::string& name, const std::string& from, const std::string& to) const
    {
        std::string text = ReadFile(File(name));
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos);
        WriteFile(File(name), text.replace(place, from.size(), to));
    }
};
} // namespace

TEST_F(CheckCommand, AGoodConfigurationIsStatusZero)
{
    const SFinished finished = Bare({"check", FAULTKEEPER_TEST_EXAMPLE});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "0 errors, 0 warnings in 14 files\n");
    EXPECT_EQ(finished.errors, "");
}

TEST_F(CheckCommand, WithoutADirectoryTheUsualConfigurationIsChecked)
{
    const SFinished finished = Bare({"--config", FAULTKEEPER_TEST_EXAMPLE, "check"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "0 errors, 0 warnings in 14 files\n");
}

TEST_F(CheckCommand, AWarningIsStatusOne)
{
    const SFinished finished = Check();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, std::string(kMarkup) + "0 errors, 1 warning in 5 files\n");
    EXPECT_EQ(finished.errors, "");
}

TEST_F(CheckCommand, AConfigurationThatEndsOtherCommandsIsToldOfAsAWhole)
{
    Replace("module0.xml", "SubModule identifier=\"GPS\"", "SubModule identifier=\"GSP\"");
    Replace("module2.xml", "severity=\"Low\"", "severity=\"Lo\"");
    Replace("FaultkeeperConfig.xml", "System", "Sistem");
    const SFinished finished = Check();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(
        finished.output,
        "./FaultkeeperConfig.xml:4:9: error: unknown module \"Sistem\"; did you mean \"System\"? [rule 47: "
        "moduleId != emiUnknown]\n"
        "./module0.xml:2:12: error: unknown sub-module \"GSP\"; did you mean \"GPS\"? [rule 97: subModuleId "
        "!= "
        "esmiUnknown]\n"
        "./module2.xml:4:38: error: unknown severity \"Lo\"; did you mean \"Low\"? [rule 143: errorSeverity "
        "!= "
        "eesUnknown]\n" +
            std::string(kMarkup) + "3 errors, 1 warning in 5 files\n");
    EXPECT_EQ(finished.errors, "");
}

TEST_F(CheckCommand, ADirectoryThatIsNotThereIsAFinding)
{
    const SFinished finished = Bare({"check", File("none")});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, File("none") +
                                   "/FaultkeeperConfig.xml:1:1: error: No such file or directory\n" +
                                   "1 error, 0 warnings in 1 file\n");
}

TEST_F(CheckCommand, AFileInPlaceOfADirectoryIsAFinding)
{
    const SFinished finished = Bare({"check", File("module0.xml")});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, File("module0.xml") + "/FaultkeeperConfig.xml:1:1: error: Not a directory\n" +
                                   "1 error, 0 warnings in 1 file\n");
}

TEST_F(CheckCommand, FilesThatCannotBeReadAreFindings)
{
    ASSERT_EQ(unlink(File("module0.xml").c_str()), 0);
    ASSERT_EQ(mkfifo(File("module0.xml").c_str(), 0600), 0); // nobody is going to write
    ASSERT_EQ(unlink(File("ErrorPatterns.xml").c_str()), 0);
    ASSERT_EQ(symlink("ErrorPatterns.xml", File("ErrorPatterns.xml").c_str()), 0);
    const SFinished finished = Check();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output,
              "./FaultkeeperConfig.xml:3:34: error: module file ./module0.xml: Not a regular file\n" +
                  std::string(kMarkup) +
                  "./ErrorPatterns.xml:1:1: error: Too many levels of symbolic links\n"
                  "2 errors, 1 warning in 5 files\n");
}

TEST_F(CheckCommand, AFileThatIsNotWellFormedIsAFindingInItsPlace)
{
    Replace("module2.xml", "</Problem>", "</Prob>");
    const SFinished finished = Check();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, "./module2.xml:9:3: error: mismatched tag\n1 error, 0 warnings in 5 files\n");
}

TEST_F(CheckCommand, FindingsAreADocumentToo)
{
    const SFinished finished = Check({"--json"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.errors, "");
    const Json document = Json::parse(finished.output);
    EXPECT_EQ(KeysOf(document), "errors warnings files findings");
    ASSERT_EQ(document["findings"].size(), 1U);
    EXPECT_EQ(KeysOf(document["findings"][0]), "file line column severity text suggestion rule");
    EXPECT_EQ(document["findings"][0]["severity"], "warning");
}

TEST_F(CheckCommand, TextsAreMeasuredOnRequest)
{
    const SFinished finished = Bare({"check", FAULTKEEPER_TEST_EXAMPLE, "--line-width", "125"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output,
              std::string(FAULTKEEPER_TEST_EXAMPLE) +
                  "/System.xml:18:39: warning: the text \"solution\" is 126 columns wide, a line has "
                  "125\n" +
                  FAULTKEEPER_TEST_EXAMPLE +
                  "/Positioning.xml:144:39: warning: the text \"solution\" is 130 columns wide, a "
                  "line has 125\n0 errors, 2 warnings in 14 files\n");
}

TEST_F(CheckCommand, MistakesOnTheCommandLineAreStatusTwo)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"check", ""},
                                               {"check", "one", "two"},
                                               {"check", ".", "--line-width"},
                                               {"check", ".", "--line-width", "-1"},
                                               {"check", ".", "--line-width", "wide"},
                                               {"check", ".", "--line-with", "9"}})
    {
        const SFinished finished = Bare(arguments);
        EXPECT_EQ(finished.status, 2);
        EXPECT_EQ(finished.output, "");
        EXPECT_NE(finished.errors, "");
    }
}

TEST_F(CheckCommand, FindingsThatCannotBeWrittenAreNotTakenForNone)
{
    const std::string command =
        std::string(FAULTKEEPER_TEST_CTL) + " check '" FAULTKEEPER_TEST_EXAMPLE "' > /dev/full";
    CProgram program({"/bin/sh", "-c", command});
    EXPECT_EQ(program.Wait(), 1);
    EXPECT_EQ(program.Errors(), "faultkeeperctl: cannot write to standard output: No space left on device\n");
}
