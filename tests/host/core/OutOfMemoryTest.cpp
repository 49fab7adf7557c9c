// A program of its own, because it takes the place of the global operator new.
#include <Core/IO/XMLDocument.h>
#include <MPI/BDecoderC.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

#include "support/FreshDirectory.h"

namespace
{

int allocationsBeforeFailure = -1; // negative: none fails

void* Allocate(std::size_t size)
{
    if (allocationsBeforeFailure >= 0 && allocationsBeforeFailure-- == 0)
        throw std::bad_alloc();
    void* const memory = std::malloc(size > 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

/// Runs an action in which one allocation fails, that after so many others.
/// @return false if it threw because of that
template <typename Action> bool RunsWith(int allocations, Action action)
{
    allocationsBeforeFailure = allocations;
    bool enough = true;
    try
    {
        action();
    }
    catch (const std::bad_alloc&)
    {
        enough = false;
    }
    allocationsBeforeFailure = -1;
    return enough;
}

} // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace
{

constexpr int kMoreThanEnough = 100000;

TEST(HostOutOfMemory, ParseThrowsAndLeavesADocumentWithoutElements)
{
    const Support::CFreshDirectory directory;
    const std::string path = directory.File("document.xml");
    Support::WriteFile(path,
                       "<a attributeWithALongName='and a value that is long too'>text that is not so short"
                       "<b/><c><d e='f'/></c></a>");
    int allocations = 0;
    for (bool enough = false; !enough; ++allocations)
    {
        ASSERT_LT(allocations, kMoreThanEnough);
        Core::IO::XMLDocument document(true);
        enough = RunsWith(allocations, [&] { document.Parse(path); });
        EXPECT_EQ(document.RootNode().Children().empty(), !enough) << allocations;
    }
    EXPECT_GT(allocations, 10) << "the test has to interrupt the parser, too";
}

TEST(HostOutOfMemory, APositionThatCouldNotBeWorkedOutIsToldLater)
{
    const Support::CFreshDirectory directory;
    const std::string path = directory.File("document.xml");
    Support::WriteFile(
        path, "<a>\n\n <b anAttributeWithALongName='1'\n    anotherAttributeWithALongName='2'/></a>");
    int allocations = 0;
    for (bool enough = false; !enough; ++allocations)
    {
        ASSERT_LT(allocations, kMoreThanEnough);
        Core::IO::XMLDocument document(false);
        ASSERT_TRUE(document.Parse(path));
        const Core::IO::XMLNode& node = document.RootNode().Children().front().Children().front();
        int line = 0;
        int column = 0;
        const auto tell = [&]
        { return node.Line() == 3 && node.AttributePosition("anotherAttributeWithALongName", line, column); };
        enough = RunsWith(allocations, tell);
        EXPECT_TRUE(tell()) << allocations;
        EXPECT_EQ(line, 4) << allocations;
        EXPECT_EQ(column, 5) << allocations;
    }
}

TEST(HostOutOfMemory, DecodingThrowsAndGivesNoMessage)
{
    const std::string bytes = "d4:argsli1e33:a text that is too long for cheapd1:al1:beee4:name1:xe";
    int allocations = 0;
    for (bool enough = false; !enough; ++allocations)
    {
        ASSERT_LT(allocations, kMoreThanEnough);
        BDecoderC decoder;
        enough = RunsWith(allocations, [&] { decoder.Feed(bytes.data(), bytes.size()); });
        EXPECT_EQ(decoder.TakeMessage() != nullptr, enough) << allocations;
    }
    EXPECT_GT(allocations, 5) << "the test has to interrupt the decoder, too";
}

} // namespace
