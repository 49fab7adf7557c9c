#include <Core/IO/XMLDocument.h>
#include <Core/IO/XMLNode.h>

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "support/FreshDirectory.h"

namespace
{

using Core::IO::XMLDocument;
using Core::IO::XMLNode;

class HostXMLDocument : public testing::Test
{
protected:
    std::string File(const std::string& text) const
    {
        Support::WriteFile(m_directory.File("document.xml"), text);
        return m_directory.File("document.xml");
    }

    /// Parses the text and gives the reason for which it was refused; "parsed" if it was not.
    std::string ErrorOf(const std::string& text) const
    {
        XMLDocument document(false);
        if (document.Parse(File(text)))
            return "parsed";
        EXPECT_TRUE(document.RootNode().Children().empty());
        return document.Error();
    }

    const Support::CFreshDirectory m_directory;
};

void Print(const XMLNode& node, const std::string& indent, std::string& printed)
{
    printed += indent + node.Name();
    for (const auto& attribute : node.Attributes())
        printed += " " + attribute.first + "=[" + attribute.second + "]";
    printed += node.Text().empty() ? "\n" : " {" + node.Text() + "}\n";
    for (const XMLNode& child : node.Children())
        Print(child, indent + "  ", printed);
}

std::string Printed(const XMLDocument& document)
{
    std::string printed;
    for (const XMLNode& child : document.RootNode().Children())
        Print(child, "", printed);
    return printed;
}

TEST_F(HostXMLDocument, TheTopElementIsTheOnlyChildOfTheRootNode)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<Faultkeeper><ErrorList/></Faultkeeper>")));
    EXPECT_EQ(document.RootNode().Name(), "");
    ASSERT_EQ(document.RootNode().Children().size(), 1u);
    const XMLNode* const top = document.RootNode().Child("Faultkeeper");
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->Name(), "Faultkeeper");
    EXPECT_NE(top->Child("ErrorList"), nullptr);
}

TEST_F(HostXMLDocument, ChildrenAreInDocumentOrder)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<a><c/><b><d/></b><c x='1'/></a>")));
    EXPECT_EQ(Printed(document), "a\n  c\n  b\n    d\n  c x=[1]\n");
}

TEST_F(HostXMLDocument, ChildIsTheFirstOfThatNameOrNull)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<a><b n='1'/><c/><b n='2'/></a>")));
    const XMLNode& top = document.RootNode().Children().front();
    ASSERT_EQ(top.Child("b"), &top.Children()[0]);
    EXPECT_EQ(top.Child("none"), nullptr);
    EXPECT_EQ(top.Child("B"), nullptr);
    EXPECT_EQ(top.Child(""), nullptr);
}

TEST_F(HostXMLDocument, AttributesHaveReferencesReplacedAndLineEndsAsBlanks)
{
    XMLDocument document(false);
    ASSERT_TRUE(
        document.Parse(File("<a b='&lt;&amp;&quot;&#65;&#xe9;' c=\"1\n2\t3\r\n4&#10;5\" d='' e=\"'\"/>")));
    EXPECT_EQ(Printed(document), "a b=[<&\"A\xC3\xA9] c=[1 2 3 4\n5] d=[] e=[']\n");
}

TEST_F(HostXMLDocument, TextIsKeptIfAskedFor)
{
    XMLDocument document(true);
    ASSERT_TRUE(document.Parse(File("<a>one<b>in<!-- no -->side</b><![CDATA[<two>]]>&amp;</a>")));
    EXPECT_EQ(Printed(document), "a {one<two>&}\n  b {inside}\n");
}

TEST_F(HostXMLDocument, TextIsNotKeptOtherwise)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<a>one<b>inside</b>two</a>")));
    EXPECT_EQ(Printed(document), "a\n  b\n");
}

TEST_F(HostXMLDocument, CommentsAndInstructionsAreNoElements)
{
    XMLDocument document(false);
    ASSERT_TRUE(
        document.Parse(File("<?xml version='1.0'?><!-- c --><a><?do it?><!-- c --><b/></a><!-- end -->\n")));
    EXPECT_EQ(Printed(document), "a\n  b\n");
}

TEST_F(HostXMLDocument, ReadsUTF8WithAndWithoutByteOrderMark)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<a b='\xC3\xA9\xE2\x82\xAC'/>")));
    EXPECT_EQ(Printed(document), "a b=[\xC3\xA9\xE2\x82\xAC]\n");
    ASSERT_TRUE(document.Parse(File("\xEF\xBB\xBF<a b='\xC3\xA9'/>")));
    EXPECT_EQ(Printed(document), "a b=[\xC3\xA9]\n");
}

TEST_F(HostXMLDocument, ReadsISO88591AndUSASCII)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<?xml version='1.0' encoding='ISO-8859-1'?><a b='\xE9'/>")));
    EXPECT_EQ(Printed(document), "a b=[\xC3\xA9]\n");
    ASSERT_TRUE(document.Parse(File("<?xml version='1.0' encoding='US-ASCII'?><a b='e'/>")));
    EXPECT_EQ(Printed(document), "a b=[e]\n");
}

std::string UTF16(const std::u16string& text, bool bigEndian)
{
    std::string bytes;
    for (const char16_t unit : text)
    {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST_F(HostXMLDocument, ReadsUTF16InBothByteOrders)
{
    const std::u16string text = u"<?xml version='1.0' encoding='UTF-16'?><a b='\u00e9\u20ac\U0001F600'/>";
    for (const std::u16string& mark : {std::u16string(u"\ufeff"), std::u16string()})
    {
        for (const bool bigEndian : {false, true})
        {
            XMLDocument document(false);
            ASSERT_TRUE(document.Parse(File(UTF16(mark + text, bigEndian)))) << document.Error();
            EXPECT_EQ(Printed(document), "a b=[\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80]\n");
        }
    }
}

TEST_F(HostXMLDocument, UTF16WithoutAMarkMayBeginWithABlank)
{
    for (const bool bigEndian : {false, true})
    {
        XMLDocument document(false);
        ASSERT_TRUE(document.Parse(File(UTF16(u"\n <a b='\u00e9'/>", bigEndian)))) << document.Error();
        EXPECT_EQ(Printed(document), "a b=[\xC3\xA9]\n");
        const XMLNode& top = document.RootNode().Children().front();
        EXPECT_EQ(top.Line(), 2);
        EXPECT_EQ(top.Column(), 2);
    }
}

TEST_F(HostXMLDocument, UTF16ThatDeclaresAnotherEncodingIsRefused)
{
    const auto declared = [this](const std::u16string& encoding, bool bigEndian)
    { return ErrorOf(UTF16(u"\ufeff<?xml version='1.0' encoding='" + encoding + u"'?><a/>", bigEndian)); };
    const std::string wrong = "1:31: encoding specified in XML declaration is incorrect";
    for (const char16_t* const encoding : {u"ISO-8859-1", u"US-ASCII", u"utf-8"})
        EXPECT_EQ(declared(encoding, true), wrong);
    EXPECT_EQ(declared(u"UTF-16LE", true), wrong);
    EXPECT_EQ(declared(u"UTF-16BE", false), wrong);
    EXPECT_EQ(declared(u"klingon", false), "1:31: unknown encoding");
    EXPECT_EQ(declared(u"utf-16be", true), "parsed");
    EXPECT_EQ(declared(u"UTF-16LE", false), "parsed");
    EXPECT_EQ(declared(u"Utf-16", false), "parsed");
    EXPECT_EQ(ErrorOf(UTF16(u"<?xml\n version='1.0'\n\tencoding = \"UTF-8\" ?><a/>", false)),
              "3:14: encoding specified in XML declaration is incorrect");
}

TEST_F(HostXMLDocument, BytesThatDeclareUTF16AreRefused)
{
    EXPECT_EQ(ErrorOf("<?xml version='1.0' encoding='UTF-16'?><a/>"),
              "1:31: encoding specified in XML declaration is incorrect");
}

TEST_F(HostXMLDocument, UTF16WithinUTF16IsRefusedForWhatItHolds)
{
    const auto errorOf = [this](const std::u16string& text)
    {
        const std::string once = UTF16(text, true);
        return ErrorOf(UTF16(u"\ufeff" + std::u16string(once.begin(), once.end()), true));
    };
    EXPECT_NE(errorOf(u"<!DOCTYPE a><a/>").find("document type declarations are refused"), std::string::npos);
    EXPECT_NE(errorOf(u"<?xml version='1.0' encoding='UTF-8'?><a/>").find("encoding specified"),
              std::string::npos);
}

TEST_F(HostXMLDocument, BrokenUTF16IsRefused)
{
    const std::u16string loneSurrogate = {0xFEFF, u'<',   u'a', u' ', u'b', u'=',
                                          u'"',   0xD800, u'"', u'/', u'>'};
    EXPECT_EQ(ErrorOf(UTF16(loneSurrogate, true)), "1:7: not well-formed (invalid token)");
    EXPECT_NE(ErrorOf(UTF16(u"\ufeff<a/>", false) + "x"), "parsed");
    const std::u16string cutWithinPair = {0xFEFF, u'<', u'a', u'/', u'>', 0xD800};
    EXPECT_NE(ErrorOf(UTF16(cutWithinPair, true)), "parsed");
}

TEST_F(HostXMLDocument, AMissingFileIsRefused)
{
    XMLDocument document(false);
    EXPECT_FALSE(document.Parse(m_directory.File("none.xml")));
    EXPECT_EQ(document.Error(), "0:0: No such file or directory");
    EXPECT_TRUE(document.RootNode().Children().empty());
}

TEST_F(HostXMLDocument, ADirectoryIsRefused)
{
    XMLDocument document(false);
    EXPECT_FALSE(document.Parse(m_directory.Path()));
    EXPECT_EQ(document.Error(), "0:0: Is a directory");
}

TEST_F(HostXMLDocument, AFifoIsRefusedWithoutWaitingForAWriter)
{
    ASSERT_EQ(mkfifo(m_directory.File("fifo").c_str(), 0600), 0);
    XMLDocument document(false);
    EXPECT_FALSE(document.Parse(m_directory.File("fifo")));
    EXPECT_EQ(document.Error().substr(0, 5), "0:0: ");
}

TEST_F(HostXMLDocument, ADeviceIsRefused)
{
    XMLDocument document(false);
    EXPECT_FALSE(document.Parse("/dev/zero"));
    EXPECT_EQ(document.Error().substr(0, 5), "0:0: ");
}

TEST_F(HostXMLDocument, AFileOfMoreThan64MebibytesIsRefused)
{
    const std::string path = File("<a/>");
    ASSERT_EQ(truncate(path.c_str(), 67108865), 0); // takes no room on the disk
    XMLDocument document(false);
    EXPECT_FALSE(document.Parse(path));
    EXPECT_EQ(document.Error(), "0:0: File too large");
    ASSERT_EQ(truncate(path.c_str(), 67108864), 0);
    EXPECT_FALSE(document.Parse(path));
    EXPECT_EQ(document.Error().substr(0, 2), "1:") << "read, and found to be no XML";
}

TEST_F(HostXMLDocument, TextThatIsNotWellFormedIsRefusedWithItsPlace)
{
    EXPECT_EQ(ErrorOf("<a>\n  <b></c>\n</a>"), "2:8: mismatched tag");
    EXPECT_EQ(ErrorOf("<a x='1' x='2'/>"), "1:10: duplicate attribute");
    EXPECT_EQ(ErrorOf("<a/>\n<b/>"), "2:1: junk after document element");
    EXPECT_EQ(ErrorOf("\xEF\xBB\xBFtext"), "1:1: syntax error");
    EXPECT_EQ(ErrorOf("<a>&unknown;</a>"), "1:4: undefined entity");
    EXPECT_NE(ErrorOf("<a b='\xFF'/>"), "parsed");
}

TEST_F(HostXMLDocument, AnEmptyFileIsRefused)
{
    EXPECT_EQ(ErrorOf(""), "1:1: no element found");
}

TEST_F(HostXMLDocument, EveryTruncationIsRefused)
{
    const std::string whole = "<?xml version=\"1.0\"?>\r\n<a b='1'>\r\n<c d=\"2\"/>t&lt;</a>";
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE(ErrorOf(whole.substr(0, size)), "parsed") << size;
    EXPECT_EQ(ErrorOf(whole), "parsed");
}

TEST_F(HostXMLDocument, DocumentTypeDeclarationsAreRefused)
{
    const std::string reason = "document type declarations are refused";
    EXPECT_EQ(ErrorOf("<!DOCTYPE a><a/>"), "1:1: " + reason);
    EXPECT_EQ(ErrorOf("<?xml version='1.0'?>\n <!DOCTYPE a SYSTEM 'file:///etc/passwd'>\n<a/>"),
              "2:2: " + reason);
    EXPECT_EQ(ErrorOf("\n<!DOCTYPE a [<!ENTITY x 'yyyy'><!ENTITY z '&x;&x;'>]>\n<a b='&z;'>&z;</a>"),
              "2:1: " + reason);
}

TEST_F(HostXMLDocument, ADocumentTypeDeclarationIsFoundWhereItBegins)
{
    const std::string reason = "document type declarations are refused";
    EXPECT_EQ(ErrorOf("<!DOCTYPE a SYSTEM \"<!DOCTYPE\"><a/>"), "1:1: " + reason);
    EXPECT_EQ(ErrorOf("<!-- <!DOCTYPE -->\n<?p <!DOCTYPE ?> <!DOCTYPE a PUBLIC '-' \"<!DOCTYPE\" [<!-- "
                      "<!DOCTYPE -->]><a/>"),
              "2:18: " + reason);
    EXPECT_EQ(ErrorOf("\xEF\xBB\xBF<?xml version='1.0'?><!----><?p?><!DOCTYPE a>"), "1:34: " + reason);
}

std::string Nested(int depth)
{
    std::string text;
    for (int level = 0; level < depth; ++level)
        text += "<n>";
    for (int level = 0; level < depth; ++level)
        text += "</n>";
    return text;
}

TEST_F(HostXMLDocument, ElementsMayBeNested256Deep)
{
    EXPECT_EQ(ErrorOf(Nested(256)), "parsed");
    EXPECT_EQ(ErrorOf(Nested(257)), "1:769: elements nested too deep");
    EXPECT_EQ(ErrorOf(Nested(256).insert(768, "<b/>")), "1:769: elements nested too deep");
}

TEST_F(HostXMLDocument, NestingWithoutEndDoesNoHarm)
{
    EXPECT_EQ(ErrorOf(Nested(1000000)), "1:769: elements nested too deep");
}

TEST_F(HostXMLDocument, HasNoElementsBeforeTheFirstParse)
{
    const XMLDocument document(false);
    EXPECT_TRUE(document.RootNode().Children().empty());
    EXPECT_EQ(document.RootNode().Child("a"), nullptr);
    EXPECT_EQ(document.Error(), "");
}

TEST_F(HostXMLDocument, ParsingAgainReplacesWhatWasThere)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<first/>")));
    ASSERT_TRUE(document.Parse(File("<second/>")));
    EXPECT_EQ(Printed(document), "second\n");
}

TEST_F(HostXMLDocument, AFailedParseRemovesWhatWasThere)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<first/>")));
    ASSERT_FALSE(document.Parse(File("<second>")));
    EXPECT_EQ(Printed(document), "");
    EXPECT_NE(document.Error(), "");
}

TEST_F(HostXMLDocument, ErrorIsEmptyAfterASuccess)
{
    XMLDocument document(false);
    ASSERT_FALSE(document.Parse(File("<first>")));
    ASSERT_TRUE(document.Parse(File("<second/>")));
    EXPECT_EQ(document.Error(), "");
}

TEST_F(HostXMLDocument, ACopyHasItsOwnNodes)
{
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File("<a><b/></a>")));
    const XMLDocument copy = document;
    ASSERT_TRUE(document.Parse(File("<c/>")));
    EXPECT_EQ(Printed(copy), "a\n  b\n");
}

TEST_F(HostXMLDocument, ALargeFileIsReadWhole)
{
    std::string text = "<a>";
    for (int count = 0; count < 100000; ++count)
        text += "<b n=\"" + std::to_string(count) + "\" text=\"some words to fill the file\"/>\n";
    XMLDocument document(false);
    ASSERT_TRUE(document.Parse(File(text + "</a>")));
    const XMLNode& top = document.RootNode().Children().front();
    ASSERT_EQ(top.Children().size(), 100000u);
    EXPECT_EQ(top.Children().back().Attributes().at("n"), "99999");
    EXPECT_EQ(top.Children().back().Line(), 100000);
}

} // namespace
