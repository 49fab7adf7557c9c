#include "CtlFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
class Translation : public CtlTest
{
protected:
    /// Writes what translators get, with some words replaced.
    void WriteTranslation(const std::vector<std::pair<std::string, std::string>>& words)
    {
        ASSERT_EQ(Ctl({"strings", "--with-originals", m_path}).status, 0);
        std::string text = ReadFile(m_path);
        for (const auto& word : words)
        {
            const std::size_t start = text.find(word.first);
            ASSERT_NE(start, std::string::npos) << word.first;
            text.replace(start, word.first.size(), word.second);
        }
        WriteFile(m_path, text);
    }

    const std::string m_path = m_directory.File("german.txt");
};
} // namespace

TEST_F(Translation, WhatTranslatorsGetHasEachTextTwice)
{
    const SFinished finished = Ctl({"strings", "--with-originals", "-"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output.find("[Positioning:GPS:Communications:9.problem]\n"
                                   "problem of Positioning:GPS:Communications:9\n"
                                   "[Positioning:GPS:Communications:9.problem.original]\n"
                                   "problem of Positioning:GPS:Communications:9\n"
                                   "[Positioning:GPS:Communications:9.solution]\n"),
              0U);
}

TEST_F(Translation, ACheckOfAWholeOneFindsNothing)
{
    WriteTranslation({{"problem of", "Problem von"}});
    const SFinished finished = Ctl({"strings", "--check", m_path});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.output, "20 texts\n");
    EXPECT_EQ(finished.errors, "");
    ASSERT_EQ(Ctl({"strings", m_path}).status, 0);
    EXPECT_EQ(Ctl({"strings", "--check", m_path}).output,
              "20 texts, 20 without what they were translated from\n");
}

TEST_F(Translation, ACheckNamesWhatIsMissingLeftOverAndChanged)
{
    WriteTranslation(
        {{"[" + kSound + ".vtTitle]\n", "[Audio:None:Cannot Open:12.vtTitle]\n"},
         {"[" + kSound + ".problem.original]\nHöhe", "[" + kSound + ".problem.original]\nTiefe"}});
    const SFinished finished = Ctl({"strings", "--check", m_path});
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.output, m_path + ":1:1: error: missing: Audio:None:Cannot Open:11.vtTitle\n" +
                                   "    text:  short of Audio:None:Cannot Open:11\n" + m_path +
                                   ":65:1: error: changed: Audio:None:Cannot Open:11.problem\n" +
                                   "    was:   Tiefe des Tons: <unbekannt> & \"stumm\"\n" +
                                   "    is:    Höhe des Tons: <unbekannt> & \"stumm\"\n" + m_path +
                                   ":77:1: error: left over: Audio:None:Cannot Open:12.vtTitle\n" +
                                   "20 texts, 1 missing, 1 left over, 1 changed\n");
    const SFinished document = Ctl({"--json", "strings", "--check", m_path});
    EXPECT_EQ(document.status, 1);
    EXPECT_EQ(Json::parse(document.output)["leftOver"][0]["line"], 77);
}

TEST_F(Translation, ACheckReadsStandardInputForADash)
{
    ASSERT_EQ(Ctl({"strings", m_path}).status, 0);
    const std::string command = std::string(FAULTKEEPER_TEST_CTL) + " --config " + Configuration();
    const auto check = [&](const std::string& input)
    {
        CProgram shell({"/bin/sh", "-c", input + " | " + command + " strings --check -"});
        shell.Wait();
        return shell.Output();
    };
    EXPECT_EQ(check("cat " + m_path), "20 texts, 20 without what they were translated from\n");
    EXPECT_EQ(check("(echo deutsch; cat " + m_path + ")"),
              "standard input:1:1: error: text in front of the first key\n"
              "20 texts, 1 left over, 20 without what they were translated from\n");
}

TEST_F(Translation, OfSeveralDefinitionsTheLastOneIsWrittenAndChecked)
{
    const std::string text = "problem of Positioning:GPS:Communications:9";
    std::string module = ReadFile(Configuration() + "/module0.xml");
    ASSERT_NE(module.find(text), std::string::npos);
    WriteFile(Configuration() + "/again.xml", module.replace(module.find(text), text.size(), "Silence"));
    std::string list = ReadFile(Configuration() + "/FaultkeeperConfig.xml");
    list.insert(list.find("</ErrorList>"), "<Module identifier=\"Positioning\" file=\"again.xml\"/>");
    WriteFile(Configuration() + "/FaultkeeperConfig.xml", list);
    const SFinished written = Ctl({"strings", "--with-originals", m_path});
    EXPECT_EQ(written.status, 0);
    EXPECT_EQ(written.output, "wrote the texts of 5 errors to " + m_path + "\n");
    const std::string texts = ReadFile(m_path);
    EXPECT_NE(texts.find("[Positioning:GPS:Communications:9.problem]\nSilence\n"), std::string::npos);
    EXPECT_EQ(texts.find(text), std::string::npos);
    const SFinished checked = Ctl({"strings", "--check", m_path});
    EXPECT_EQ(checked.status, 0);
    EXPECT_EQ(checked.output, "20 texts\n");
}

TEST_F(Translation, AFileThatCannotBeReadIsTold)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"strings", "--check"}, {"list", "--strings"}})
    {
        std::vector<std::string> command = arguments;
        command.push_back(m_path);
        const SFinished finished = Ctl(command);
        EXPECT_EQ(finished.status, 1);
        EXPECT_EQ(finished.errors, "faultkeeperctl: cannot read " + m_path + ": No such file or directory\n");
        command.back() = m_directory.Path();
        EXPECT_EQ(Ctl(command).errors,
                  "faultkeeperctl: cannot read " + m_directory.Path() + ": Is a directory\n");
    }
}

TEST_F(Translation, WritingAndCheckingAtOnceIsRefused)
{
    EXPECT_EQ(Ctl({"strings", "--check", "--with-originals", m_path}).status, 2);
    EXPECT_EQ(Ctl({"list", "--strings", ""}).status, 2);
}

TEST_F(Translation, TheListShowsTheTreesInIt)
{
    WriteTranslation({{"title of Positioning:GPS:Communications:9", "Empfänger schweigt"},
                      {"solution of Positioning:GPS:Communications:9", "Kabel prüfen"}});
    StartOwner();
    Raise(kLink);
    const SFinished finished = Ctl({"list", "--strings", m_path});
    EXPECT_EQ(finished.status, 0);
    EXPECT_EQ(finished.errors, "");
    EXPECT_NE(finished.output.find("[1] Empfänger schweigt  "), std::string::npos) << finished.output;
    EXPECT_NE(finished.output.find("    Solution   Kabel prüfen\n"), std::string::npos);
    EXPECT_NE(finished.output.find("    Short      short of Positioning:GPS:Communications:9\n"),
              std::string::npos);
    const Json tree = Document({"list", "--strings", m_path})["trees"][0];
    EXPECT_EQ(tree["title"], "Empfänger schweigt");
    EXPECT_EQ(tree["solutions"], Json({"Kabel prüfen"}));
}

TEST_F(Translation, TheListShowsTheOriginalOfATextThatIsMissingAndTellsSo)
{
    WriteFile(m_path, "[Positioning:GPS:Communications:9.problem]\nStille\n");
    StartOwner();
    Raise(kLink);
    const SFinished finished = Ctl({"list", "--strings", m_path});
    EXPECT_EQ(finished.status, 0);
    EXPECT_NE(finished.output.find("    Problem    Stille\n"), std::string::npos);
    EXPECT_NE(finished.output.find("[1] title of Positioning:GPS:Communications:9 "), std::string::npos);
    EXPECT_EQ(
        finished.errors.find("faultkeeperctl: " + m_path +
                             " has no text for Positioning:GPS:Communications:9.shortTitle; the original "
                             "is shown\n"),
        0U)
        << finished.errors;
}
