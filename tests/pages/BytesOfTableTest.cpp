#include "pages/Page.h"
#include "support/FreshDirectory.h"
#include "unit/Common/dumps/TableDump.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace Support;

namespace
{

constexpr int kRecords = 4; // in the dumps

std::string Dump(const std::string& name)
{
    return TableDump::BytesOf(ReadFile(std::string(TABLE_DUMPS_DIRECTORY) + "/" + name));
}

std::string Bytes(const std::string& table, const TableDump::SField& field)
{
    std::string text;
    for (std::size_t i = 0; i < field.bytes; ++i)
    {
        char byte[8];
        std::snprintf(byte, sizeof byte, "%s%02x", i == 0 ? "" : " ",
                      static_cast<unsigned>(static_cast<unsigned char>(table.at(field.offset + i))));
        text += byte;
    }
    return text;
}

/// The table of the dumps, which the library's own tests hold against what an owner writes, in both orders.
std::string Annotated()
{
    const std::string little = Dump("little-endian.txt");
    const std::string big = Dump("big-endian.txt");
    std::string text;
    for (const TableDump::SField& field : TableDump::Fields(kRecords))
    {
        char line[128];
        std::snprintf(line, sizeof line, "%4zu %2zu  %-21s %-24s %s\n", field.offset, field.bytes,
                      field.name.c_str(), Bytes(little, field).c_str(), Bytes(big, field).c_str());
        text += line;
    }
    return text;
}

} // namespace

TEST(BytesOfTableTest, ThePageShowsTheTableThatOwnersOfBothByteOrdersWrite)
{
    const std::vector<std::string> blocks = PageBlocks(BYTES_PAGE, "table");
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_EQ(blocks.front(), Annotated());
}
