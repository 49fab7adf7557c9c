#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

using namespace Support;

namespace
{

/// What stands between backquotes from a heading on, to the next one of its kind.
std::set<std::string> Quoted(const std::string& heading = "")
{
    const std::string page = ReadFile(std::string(PROJECT_DIRECTORY) + "/SECURITY.md");
    const std::size_t begin = heading.empty() ? 0 : page.find("\n## " + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    const std::size_t end = heading.empty() ? page.size() : page.find("\n## ", begin + 1);
    std::set<std::string> quoted;
    std::istringstream pieces(page.substr(begin, end - begin));
    std::string text;
    for (bool inside = false; std::getline(pieces, text, '`'); inside = !inside)
    {
        if (inside)
            quoted.insert(text);
    }
    return quoted;
}

/// "Suite.Name" of every test in the tree, however its line is broken.
std::set<std::string> Tests()
{
    const std::regex test(R"(\nTEST(_F|_P)?\((\w+),\s*(\w+)\))");
    std::set<std::string> tests;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(std::string(PROJECT_DIRECTORY) + "/tests"))
    {
        if (entry.path().extension() != ".cpp")
            continue;
        const std::string text = ReadFile(entry.path());
        for (std::sregex_iterator found(text.begin(), text.end(), test), none; found != none; ++found)
            tests.insert((*found)[2].str() + "." + (*found)[3].str());
    }
    return tests;
}

} // namespace

TEST(SecurityPageTest, EveryTestThatIsCalledAProofIsThere)
{
    const std::regex name(R"([A-Z]\w+\.[A-Z]\w+)");
    const std::set<std::string> tests = Tests();
    int named = 0;
    for (const std::string& text : Quoted())
    {
        if (!std::regex_match(text, name))
            continue;
        ++named;
        EXPECT_EQ(tests.count(text), 1U) << text;
    }
    EXPECT_GE(named, 30);
}

TEST(SecurityPageTest, EveryFileOfTheProjectThatIsNamedIsThere)
{
    const std::regex path(R"((apps|config|fuzz|host|src|tests)/[\w./-]*)");
    int named = 0;
    for (const std::string& text : Quoted())
    {
        if (!std::regex_match(text, path))
            continue;
        ++named;
        EXPECT_TRUE(std::filesystem::exists(std::string(PROJECT_DIRECTORY) + "/" + text)) << text;
    }
    EXPECT_GE(named, 10);
}

TEST(SecurityPageTest, TheUnitFileSetsWhatThePageSays)
{
    const std::string unit =
        "\n" + ReadFile(std::string(PROJECT_DIRECTORY) + "/config/systemd/faultkeeperd.service.in");
    const std::regex setting(R"([A-Z]\w+=.+)");
    int named = 0;
    for (const std::string& text : Quoted("What the unit file sets"))
    {
        if (!std::regex_match(text, setting))
            continue;
        ++named;
        EXPECT_NE(unit.find("\n" + text + "\n"), std::string::npos) << text;
    }
    EXPECT_GE(named, 10);
}
