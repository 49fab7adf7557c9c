#include <Core/IO/XMLDocument.h>
#include <Core/IO/XMLNode.h>

#include <gtest/gtest.h>
#include <string>

#include "support/FreshDirectory.h"

namespace
{

using Core::IO::XMLDocument;
using Core::IO::XMLNode;

class HostXMLPositions : public testing::Test
{
protected:
    /// All positions in a text: "name line:column attribute line:column ...", an element a line.
    std::string PositionsIn(const std::string& text)
    {
        Support::WriteFile(m_directory.File("document.xml"), text);
        XMLDocument document(false);
        EXPECT_TRUE(document.Parse(m_directory.File("document.xml"))) << document.Error();
        std::string printed;
        for (const XMLNode& child : document.RootNode().Children())
            Print(child, printed);
        return printed;
    }

    const Support::CFreshDirectory m_directory;

private:
    static std::string Text(int line, int column)
    {
        return std::to_string(line) + ":" + std::to_string(column);
    }

    static void Print(const XMLNode& node, std::string& printed)
    {
        printed += node.Name() + " " + Text(node.Line(), node.Column());
        for (const auto& attribute : node.Attributes())
        {
            int line = 0;
            int column = 0;
            EXPECT_TRUE(node.AttributePosition(attribute.first, line, column)) << attribute.first;
            printed += " " + attribute.first + " " + Text(line, column);
        }
        printed += "\n";
        for (const XMLNode& child : node.Children())
            Print(child, printed);
    }
};

TEST_F(HostXMLPositions, CountFromOne)
{
    EXPECT_EQ(PositionsIn("<a b='1' c='2'/>"), "a 1:1 b 1:4 c 1:10\n");
}

TEST_F(HostXMLPositions, OfElementsAreThoseOfTheirStart)
{
    EXPECT_EQ(PositionsIn("<?xml version='1.0'?>\n<a>\n  <b/><c>text</c>\n</a>"), "a 2:1\nb 3:3\nc 3:7\n");
}

TEST_F(HostXMLPositions, HoldAcrossTagsOfManyLines)
{
    EXPECT_EQ(PositionsIn("<a\n  b='1'\n\n    c\n=\n'2\n3' d='4'\n>\n<e f=\"\"/></a>"),
              "a 1:1 b 2:3 c 4:5 d 7:4\ne 9:1 f 9:4\n");
}

TEST_F(HostXMLPositions, CountCRLFAndCRAsOneLineEnd)
{
    EXPECT_EQ(PositionsIn("<a\r\n b='1'>\r\n<c d='2\r\n3' e='4'/>\r\n</a>"),
              "a 1:1 b 2:2\nc 3:1 d 3:4 e 4:4\n");
    EXPECT_EQ(PositionsIn("<a\r b='1'>\r\r<c/></a>"), "a 1:1 b 2:2\nc 4:1\n");
}

TEST_F(HostXMLPositions, CountATabAsOneColumn)
{
    EXPECT_EQ(PositionsIn("\t\t<a\tb='1'\t\tc='2'/>"), "a 1:3 b 1:6 c 1:13\n");
}

TEST_F(HostXMLPositions, CountCharactersNotBytes)
{
    EXPECT_EQ(PositionsIn("<!-- \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 --><a \xC3\xA9='\xE2\x82\xAC' b='1'/>"),
              "a 1:13 b 1:22 \xC3\xA9 1:16\n");
}

TEST_F(HostXMLPositions, DoNotCountAByteOrderMark)
{
    EXPECT_EQ(PositionsIn("\xEF\xBB\xBF<a b='1'/>"), "a 1:1 b 1:4\n");
}

TEST_F(HostXMLPositions, CountEveryByteInISO88591)
{
    // The bytes after the first would continue a character in UTF-8.
    EXPECT_EQ(PositionsIn("<?xml version='1.0' encoding='ISO-8859-1'?>\n<a b='\xE9\x80\x80' c='1'/>"),
              "a 2:1 b 2:4 c 2:12\n");
}

TEST_F(HostXMLPositions, HoldInUTF16)
{
    std::string bytes;
    for (const char16_t unit : std::u16string(u"\ufeff<!-- \u00e9\U0001F600 -->\n<a b='\u20ac'\n c='1'/>"))
    {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    EXPECT_EQ(PositionsIn(bytes), "a 2:1 b 2:4 c 3:2\n");
}

TEST_F(HostXMLPositions, AreNotMisledByWhatStandsInValues)
{
    EXPECT_EQ(PositionsIn("<a b=\"x='1' c='/>\" c='\" d=\"' d = '>'/>"), "a 1:1 b 1:4 c 1:20 d 1:30\n");
}

TEST_F(HostXMLPositions, AreNotMisledByCommentsAndCharacterData)
{
    EXPECT_EQ(PositionsIn("<a><!-- <b c='1'> --><![CDATA[<b c='2'>]]><?b <b c='3'?><b c='4'/></a>"),
              "a 1:1\nb 1:57 c 1:60\n");
}

TEST_F(HostXMLPositions, HoldForElementsAfterMoreThanAMegabyte)
{
    const std::string comment = "<!--" + std::string(3000000, 'x') + "-->\n";
    EXPECT_EQ(PositionsIn("<a>\n" + comment + comment + " <b c='1'/></a>"), "a 1:1\nb 4:2 c 4:5\n");
}

TEST_F(HostXMLPositions, AreTheSameInWhateverOrderTheyAreAskedFor)
{
    std::string text = "<a>";
    for (int child = 0; child < 2000; ++child)
        text += "<\xC3\xA9/>";
    Support::WriteFile(m_directory.File("document.xml"), text + "</a>");
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(m_directory.File("document.xml")));
    const auto& children = document.RootNode().Children().front().Children();
    int column = 4;
    for (auto child = children.begin(); child != children.end(); ++child, column += 4)
        ASSERT_EQ(child->Column(), column);
    for (auto child = children.rbegin(); child != children.rend(); ++child)
        ASSERT_EQ(child->Column(), column -= 4);
}

TEST_F(HostXMLPositions, OfTheNodeAboveTheTopElementAreZero)
{
    const XMLDocument document(false);
    EXPECT_EQ(document.RootNode().Line(), 0);
    EXPECT_EQ(document.RootNode().Column(), 0);
}

TEST_F(HostXMLPositions, OfAMissingAttributeAreFalseAndLeaveTheArgumentsAlone)
{
    const XMLNode node;
    int line = 17;
    int column = 4;
    EXPECT_FALSE(node.AttributePosition("none", line, column));
    EXPECT_EQ(line, 17);
    EXPECT_EQ(column, 4);
}

TEST_F(HostXMLPositions, OfAttributesAreFoundByTheirNamesInUTF8)
{
    EXPECT_EQ(PositionsIn("<?xml version='1.0' encoding='ISO-8859-1'?>\n<a h\xF6he='1' gr\xF6\xDF"
                          "e='2'/>"),
              "a 2:1 gr\xC3\xB6\xC3\x9F"
              "e 2:13 h\xC3\xB6he 2:4\n");
}

TEST_F(HostXMLPositions, OfAttributesThatAreNotThereAreNotFound)
{
    Support::WriteFile(m_directory.File("document.xml"), "<a b='1'><c/></a>");
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(m_directory.File("document.xml")));
    const XMLNode& top = document.RootNode().Children().front();
    int line = 4711;
    int column = 4712;
    EXPECT_FALSE(top.AttributePosition("c", line, column));
    EXPECT_FALSE(top.Children().front().AttributePosition("b", line, column));
    EXPECT_FALSE(document.RootNode().AttributePosition("b", line, column));
    EXPECT_EQ(line, 4711);
    EXPECT_EQ(column, 4712);
}

} // namespace
