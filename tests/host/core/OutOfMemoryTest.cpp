// A program of its own, because it takes the place of the functions that allocate.
#include <Core/IO/XMLDocument.h>
#include <MPI/BDecoderC.h>
#include <MPI/BDictionaryC.h>

#include <gtest/gtest.h>
#include <string>

#include "support/FreshDirectory.h"
#include "support/failing/FailingMemory.h"

namespace
{

using FailingMemory::CAttempt;
using FailingMemory::FailEach;

TEST(HostOutOfMemory, ParseThrowsAndLeavesADocumentWithoutElements)
{
    const Support::CFreshDirectory directory;
    const std::string path = directory.File("document.xml");
    Support::WriteFile(path,
                       "<a attributeWithALongName='and a value that is long too'>text that is not so short"
                       "<b/><c><d e='f'/></c></a>");
    const auto parse = [&](CAttempt& attempt)
    {
        Core::IO::XMLDocument document(true);
        bool parsed = false;
        const bool ended = attempt.Run([&] { parsed = document.Parse(path); });
        EXPECT_EQ(ended && parsed, !attempt.Met());
        EXPECT_EQ(document.RootNode().Children().empty(), !parsed);
    };
    EXPECT_GT(FailEach(parse), 10) << "the test has to interrupt the parser, too";
}

TEST(HostOutOfMemory, APositionThatCouldNotBeWorkedOutIsToldLater)
{
    const Support::CFreshDirectory directory;
    const std::string path = directory.File("document.xml");
    Support::WriteFile(
        path, "<a>\n\n <b anAttributeWithALongName='1'\n    anotherAttributeWithALongName='2'/></a>");
    const auto tell = [&](CAttempt& attempt)
    {
        Core::IO::XMLDocument document(false);
        ASSERT_TRUE(document.Parse(path));
        const Core::IO::XMLNode& node = document.RootNode().Children().front().Children().front();
        const std::string attribute = "anotherAttributeWithALongName";
        int line = 0;
        int column = 0;
        const bool ended = attempt.Run([&] { node.AttributePosition(attribute, line, column); });
        EXPECT_EQ(ended, !attempt.Met());
        EXPECT_EQ(node.Line(), 3);
        EXPECT_TRUE(node.AttributePosition(attribute, line, column));
        EXPECT_EQ(line, 4);
        EXPECT_EQ(column, 5);
    };
    EXPECT_GT(FailEach(tell), 0);
}

TEST(HostOutOfMemory, DecodingThrowsAndGivesNoMessage)
{
    const std::string bytes = "d4:argsli1e33:a text that is too long for cheapd1:al1:beee4:name1:xe";
    const auto decode = [&](CAttempt& attempt)
    {
        BDecoderC decoder;
        const bool ended = attempt.Run([&] { decoder.Feed(bytes.data(), bytes.size()); });
        EXPECT_EQ(ended, !attempt.Met());
        EXPECT_EQ(decoder.TakeMessage() != nullptr, ended);
    };
    EXPECT_GT(FailEach(decode), 5) << "the test has to interrupt the decoder, too";
}

} // namespace
