// What goes through foreign text byte by byte, tried without the parser and the decoder that stand before it.
#include "Core/XMLTagScanner.h"
#include "Messages/BScanner.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Attributes = std::vector<std::pair<std::string, std::size_t>>;

/// Names and where they begin.
Attributes AttributesOf(const std::string& text)
{
    Core::IO::XMLTagScanner scanner(text, 0);
    Attributes attributes;
    std::string name;
    std::size_t byte = 0;
    while (scanner.NextAttribute(name, byte))
        attributes.emplace_back(name, byte);
    return attributes;
}

TEST(ReferenceTagScanner, FindsWhatThereIsOfATagThatIsCutOffAnywhere)
{
    const std::string tag = "<a one='1' two=\"2\" three = '>' />";
    const Attributes whole = {{"one", 3}, {"two", 11}, {"three", 19}};
    EXPECT_EQ(AttributesOf(tag), whole);
    for (std::size_t size = 0; size < tag.size(); ++size)
    {
        Attributes begun;
        for (const auto& attribute : whole)
        {
            if (attribute.second < size)
                begun.emplace_back(attribute.first.substr(0, size - attribute.second), attribute.second);
        }
        EXPECT_EQ(AttributesOf(tag.substr(0, size)), begun) << tag.substr(0, size);
    }
}

TEST(ReferenceTagScanner, TakesAZeroByteForOneLikeAnyOther)
{
    const std::string zero(1, '\0');
    EXPECT_EQ(AttributesOf("<a " + zero + "='1' b='2'/>"), (Attributes{{zero, 3}, {"b", 9}}));
}

TEST(ReferenceMessageScanner, TakesNothingBehindTheEndOfAMessage)
{
    BScanner scanner;
    EXPECT_FALSE(scanner.Inside());
    for (const char byte : std::string("d1:ai1ee"))
    {
        EXPECT_FALSE(scanner.Done());
        EXPECT_TRUE(scanner.Take(byte));
    }
    EXPECT_TRUE(scanner.Done());
    EXPECT_FALSE(scanner.Inside());
    EXPECT_FALSE(scanner.Take('d'));
    EXPECT_STREQ(scanner.Reason(), "byte after the end of the message");
}

} // namespace
