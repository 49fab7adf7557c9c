#include "system/ctl/CtlFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
class Picture : public CtlTest
{
};

/// Runs Graphviz over what was drawn.
std::string Rendered(const std::string& graph, const std::string& path)
{
    WriteFile(path, graph);
    CProgram dot({FAULTKEEPER_TEST_DOT, "-Tsvg", path});
    EXPECT_EQ(dot.Wait(), 0);
    EXPECT_EQ(dot.Errors(), "");
    return dot.Output();
}

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}
} // namespace

TEST_F(Picture, ShowsTheHierarchyAndWhatIsActive)
{
    const SFinished plain = Ctl({"hierarchy", "--dot", "--all"});
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.errors, "");
    const std::string picture = Rendered(plain.output, m_directory.File("plain.dot"));
    EXPECT_EQ(Count(picture, "class=\"node\""), 7U);
    EXPECT_EQ(Count(picture, "class=\"edge\""), 5U);
    EXPECT_EQ(Count(picture, "#f6b26b"), 0U);
    EXPECT_EQ(Count(plain.output, " active"), 0U);
    StartOwner();
    Raise(kLink);
    Raise(kReceiver);
    Raise(kPosition);
    const std::string live = Ctl({"hierarchy", "--dot"}).output;
    EXPECT_EQ(Count(Rendered(live, m_directory.File("live.dot")), "#f6b26b"), 3U);
    EXPECT_EQ(Count(live, "\\n1 active\""), 2U);
    EXPECT_EQ(Ctl({"hierarchy", "--dot", "--json"}).status, 2);
}

TEST_F(Picture, TheExampleCanBeDrawn)
{
    const SFinished finished = Bare({"--config", FAULTKEEPER_TEST_EXAMPLE, "--run-dir", m_directory.Path(),
                                     "hierarchy", "--dot", "--all"});
    EXPECT_EQ(finished.status, 0);
    EXPECT_NE(Rendered(finished.output, m_directory.File("example.dot")).find("</svg>"), std::string::npos);
}
