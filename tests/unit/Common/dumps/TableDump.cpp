#include "unit/Common/dumps/TableDump.h"

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace TableDump
{

namespace
{
constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kRecordBytes = 36;

std::size_t Begin(int record)
{
    return kHeaderBytes + kRecordBytes * static_cast<std::size_t>(record);
}

void AddTime(std::vector<SField>& fields, const std::string& name, std::size_t offset)
{
    fields.push_back({name + " type", offset, 4});
    fields.push_back({name, offset + 4, 8});
}

void AddRecord(std::vector<SField>& fields, int record)
{
    const std::string name = "record " + std::to_string(record) + " ";
    const std::size_t begin = Begin(record);
    fields.push_back({name + "code", begin, 4});
    fields.push_back({name + "type", begin + 4, 2});
    fields.push_back({name + "flags", begin + 6, 2});
    fields.push_back({name + "counter 1", begin + 8, 2});
    fields.push_back({name + "counter 2", begin + 10, 2});
    AddTime(fields, name + "raised", begin + 12);
    AddTime(fields, name + "cleared", begin + 24);
}

std::string Hexadecimal(unsigned long long number, std::size_t digits)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*llx", static_cast<int>(digits), number);
    return text;
}

std::string Line(const std::string& bytes, std::size_t begin, std::size_t end)
{
    std::string line;
    for (std::size_t i = begin; i < end; ++i)
        line += (i == begin ? "" : " ") + Hexadecimal(static_cast<unsigned char>(bytes.at(i)), 2);
    return line + "\n";
}
} // namespace

EByteOrder OwnOrder()
{
    const std::uint16_t one = 1;
    return *reinterpret_cast<const unsigned char*>(&one) == 1 ? eboLittle : eboBig;
}

std::vector<SField> Fields(int records)
{
    std::vector<SField> fields = {{"ready", 0, 4}, {"count", 4, 4}, {"changes", 8, 4}, {"last raise", 12, 8}};
    AddTime(fields, "last clear", 20);
    for (int record = 0; record < records; ++record)
        AddRecord(fields, record);
    return fields;
}

std::uint64_t Read(const std::string& bytes, const SField& field, EByteOrder order)
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < field.bytes; ++i)
    {
        const std::size_t place = order == eboBig ? i : field.bytes - 1 - i;
        number = number << 8 | static_cast<unsigned char>(bytes.at(field.offset + place));
    }
    return number;
}

std::string FieldsText(const std::string& bytes, int records, EByteOrder order)
{
    std::string text;
    for (const SField& field : Fields(records))
        text += field.name + " " + Hexadecimal(Read(bytes, field, order), 2 * field.bytes) + "\n";
    return text;
}

std::string BytesText(const std::string& bytes, int records)
{
    std::string text = Line(bytes, 0, kHeaderBytes);
    for (int record = 0; record < records; ++record)
        text += Line(bytes, Begin(record), Begin(record + 1));
    return text;
}

std::string BytesOf(const std::string& text)
{
    std::istringstream stream(text);
    stream >> std::hex;
    std::string bytes;
    for (unsigned byte = 0; stream >> byte;)
        bytes += static_cast<char>(byte);
    if (bytes.empty())
        throw std::runtime_error("no bytes in the dump");
    return bytes;
}

} // namespace TableDump
