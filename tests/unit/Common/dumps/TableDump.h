#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A segment's bytes as text and as numbers, whichever machine wrote them.
namespace TableDump
{

enum EByteOrder
{
    eboLittle = 0,
    eboBig
};

/// Where a number stands in the segment.
struct SField
{
    std::string name;
    std::size_t offset;
    std::size_t bytes;
};

/// This machine's order.
EByteOrder OwnOrder();

/// Every field of the header and of the first records: together they cover each byte up to the last of these
/// records.
std::vector<SField> Fields(int records);

/// The number in a field, read byte by byte.
std::uint64_t Read(const std::string& bytes, const SField& field, EByteOrder order);

/// "name value" on a line for each field, in hexadecimal.
std::string FieldsText(const std::string& bytes, int records, EByteOrder order);

/// The bytes of header and records in hexadecimal, one of them a line.
std::string BytesText(const std::string& bytes, int records);

/// The bytes that such a text shows.
/// @throws std::runtime_error if it shows none
std::string BytesOf(const std::string& text);

} // namespace TableDump
