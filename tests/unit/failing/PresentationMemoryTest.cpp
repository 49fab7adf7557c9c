#include "support/failing/FailingMemory.h"
#include "unit/presentation/DisplayFixture.h"

#include "unit/Common/view/NumberedErrors.h"

#include <Faultkeeper/ErrorPresentation.h>

#include <optional>

namespace
{

using namespace Faultkeeper;
using FailingMemory::CAttempt;
using FailingMemory::FailEach;
using NumberedErrors::Id;

typedef std::vector<std::pair<int, int>> Codes;

/// A hierarchy of three levels with all kinds of links, half of it active, and a pattern that it matches.
class PresentationMemoryTest : public DisplayFixture
{
protected:
    PresentationMemoryTest()
    {
        Load({Node(0, {Set({1, 2}, "verbose"), Set({3}, "shallow", "trigger")}), Node(1, {Set({4, 5})}),
              Node(2, {Set({5}, "childOnly")}), Node(3), Node(4), Node(5)});
        Activate({0, 1, 2, 3, 5});
        WritePatterns("<pattern fixedCode='A code that is no short one' allowPartialMatch='yes'><error id='" +
                      NumberedErrors::Name(3) + "'/><error id='" + NumberedErrors::Name(5) + "'/></pattern>");
    }

    std::vector<SErrorTree> Built(bool useTextKeys) { return Trees({0, 1, 3}, useTextKeys); }
};

std::string AllPrinted(const std::vector<SErrorTree>& trees)
{
    std::string text;
    for (const SErrorTree& tree : trees)
        text += Printed(tree);
    return text;
}

TEST_F(PresentationMemoryTest, LoadingPatternsThrowsOrIsWhole)
{
    const std::string path = m_directory.Prefix();
    const Codes codes = {Id(3), Id(5)};
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::optional<CErrorOverlay> overlay;
            if (attempt.Run([&] { overlay.emplace(path); }))
            {
                EXPECT_EQ(overlay->FindFriendlyCode(codes), "A code that is no short one");
            }
        });
    EXPECT_GT(failed, 50) << "the test has to interrupt the parser, too";
}

TEST_F(PresentationMemoryTest, ASearchThroughPatternsThatThrewCanBeRepeated)
{
    const CErrorOverlay overlay(m_directory.Prefix());
    const Codes codes = {Id(3), Id(5), Id(1)};
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::string code;
            if (!attempt.Run([&] { code = overlay.FindFriendlyCode(codes); }))
                code = overlay.FindFriendlyCode(codes);
            EXPECT_EQ(code, "A code that is no short one");
        });
    EXPECT_GT(failed, 0);
}

TEST_F(PresentationMemoryTest, TreesThatCouldNotBeBuiltAreBuiltInTheSameListLater)
{
    const CErrorOverlay overlay(m_directory.Prefix());
    const std::list<const CError*> errors = {Error(0), Error(1), Error(3)};
    for (const bool useTextKeys : {false, true})
    {
        const std::string expected = AllPrinted(Built(useTextKeys));
        const int failed = FailEach(
            [&](CAttempt& attempt)
            {
                std::vector<SErrorTree> trees(1);
                const auto build = [&]
                { CErrorPresentation::GetErrorTree(m_reader, overlay, errors, trees, useTextKeys); };
                if (!attempt.Run(build))
                    build();
                EXPECT_EQ(AllPrinted(trees), expected);
            });
        EXPECT_GT(failed, 20);
    }
}

TEST_F(PresentationMemoryTest, ATreeBelowAnErrorIsBuiltOrThrowsAndIsBuiltLater)
{
    const CError* const error = Error(0);
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            const auto build = [error](SErrorTree& tree, std::vector<std::string>& activity, Codes& codes)
            { CErrorPresentation::BuildErrorTree(error, tree, activity, false, false, codes); };
            SErrorTree interrupted;
            std::vector<std::string> activity;
            Codes codes;
            const bool ended = attempt.Run([&] { build(interrupted, activity, codes); });
            EXPECT_EQ(ended, !attempt.Met());

            SErrorTree tree;
            activity.clear();
            codes.clear();
            build(tree, activity, codes);
            EXPECT_EQ(Joined(activity), "111\n01\n\n1\n\n\n");
            EXPECT_EQ(Numbers(codes), "1 5 2 5 3");
        });
    EXPECT_GT(failed, 5);
}

TEST_F(PresentationMemoryTest, ATreeIsRebuiltFromItsKeyOrThrowsAndIsRebuiltLater)
{
    const std::string key = Built(false).at(0).stateKey;
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            SErrorTree interrupted;
            std::vector<std::string> lines;
            Codes codes;
            const bool ended = attempt.Run(
                [&] {
                    CErrorPresentation::RegenerateErrorTree(key, *m_database, m_reader, interrupted, lines,
                                                            codes, false);
                });
            EXPECT_EQ(ended, !attempt.Met());
            EXPECT_EQ(m_directory.SemaphoreValue(), 1);

            SErrorTree tree;
            lines.clear();
            codes.clear();
            CErrorPresentation::RegenerateErrorTree(key, *m_database, m_reader, tree, lines, codes, false);
            EXPECT_EQ(Numbers(codes), "0 1 2 3 5 5");
            EXPECT_EQ(lines.size(), 5u) << "the last bit's error shows nothing below itself";
        });
    EXPECT_GT(failed, 20);
}

TEST_F(PresentationMemoryTest, AHistoryIsFormattedOrThrows)
{
    std::vector<SErrorEntry> entries;
    m_owner.RetrieveAllErrors(entries);
    for (SErrorEntry& entry : entries)
        entry.counter2 = 1;
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::vector<SErrorTree> trees;
            if (attempt.Run([&] { CErrorPresentation::FormatErrorList(entries, trees); }))
            {
                EXPECT_EQ(trees.size(), 6u);
            }
        });
    EXPECT_GT(failed, 20);
}

TEST_F(PresentationMemoryTest, TextsAreDumpedOrWhatIsThereOfTheFileIsItsBeginning)
{
    const std::string path = m_directory.File("texts");
    CErrorPresentation::DumpLocalisedText(m_database->GetErrorList(), path);
    const std::string whole = Support::ReadFile(path);
    int passedOver = 0;
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            Support::WriteFile(path, "");
            const bool ended =
                attempt.Run([&] { CErrorPresentation::DumpLocalisedText(m_database->GetErrorList(), path); });
            const std::string written = Support::ReadFile(path);
            EXPECT_EQ(written, whole.substr(0, written.size()));
            EXPECT_EQ(ended && !attempt.Met(), written == whole);
            if (ended && attempt.Met())
                ++passedOver;
        });
    EXPECT_GT(failed, 5);
    // The C library opens the file with its first allocation, with which each attempt begins twice: without
    // it the path cannot be opened, and is passed over.
    EXPECT_LE(passedOver, 2);
}

TEST_F(PresentationMemoryTest, ActiveErrorsArePrintedOrTheListingEnds)
{
    const std::list<const CError*> errors = {Error(0)};
    testing::internal::CaptureStdout();
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            const bool ended = attempt.Run([&] { CErrorPresentation::PrintErrorTree(errors); });
            EXPECT_EQ(ended, !attempt.Met());
        });
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_GT(failed, 5);
    EXPECT_EQ(printed.substr(printed.rfind("Active top level errors\n")),
              "Active top level errors\n+Positioning:GPS:No Data:0\n  +Positioning:GPS:No Data:1\n"
              "    +Positioning:GPS:No Data:5\n  +Positioning:GPS:No Data:2\n    +Positioning:GPS:No Data:5\n"
              "  +Positioning:GPS:No Data:3\n");
}

} // namespace
