#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

// Filled before main by one generated file for each public header, which includes that header first.
std::set<std::string>& HeadersCompiledAlone()
{
    static std::set<std::string> headers;
    return headers;
}

namespace
{

TEST(PublicHeadersTest, EveryOneOfThemCompilesAlone)
{
    std::set<std::string> headers;
    for (const auto& entry : std::filesystem::directory_iterator(PUBLIC_HEADERS_DIRECTORY))
        headers.insert(entry.path().filename().string());
    EXPECT_EQ(headers, HeadersCompiledAlone());
    EXPECT_EQ(headers.count("ErrorDatabase.h"), 1u);
}

} // namespace
