#include "pages/Page.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Support
{

std::vector<std::string> PageBlocks(const std::string& path, const std::string& kind)
{
    std::istringstream page(ReadFile(path));
    std::vector<std::string> blocks;
    bool inside = false;
    bool wanted = false;
    for (std::string line; std::getline(page, line);)
    {
        const bool fence = line.compare(0, 3, "```") == 0;
        wanted = fence ? !inside && line == "```" + kind : wanted;
        inside = fence ? !inside : inside;
        if (fence && wanted)
            blocks.emplace_back();
        else if (wanted)
            blocks.back() += line + "\n";
    }
    EXPECT_FALSE(blocks.empty()) << path << " has no block of the kind " << kind;
    return blocks;
}

} // namespace Support
