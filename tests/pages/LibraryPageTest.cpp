#include "pages/ManPage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace Support;

TEST(LibraryPageTest, EveryPublicHeaderIsListedOnce)
{
    std::vector<std::string> listed;
    const CManPage page(std::string(MAN_PAGES_DIRECTORY) + "/libFaultkeeperAPI.3");
    for (const std::vector<std::string>& words : page.Items("DESCRIPTION", "In"))
        listed.push_back(words.front());
    std::vector<std::string> headers;
    for (const auto& entry : std::filesystem::directory_iterator(PUBLIC_HEADERS_DIRECTORY))
        headers.push_back("Faultkeeper/" + entry.path().filename().string());
    std::sort(listed.begin(), listed.end());
    std::sort(headers.begin(), headers.end());
    EXPECT_EQ(listed, headers);
}
