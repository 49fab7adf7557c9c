#include "support/wire/WireModel.h"

#include <algorithm>
#include <map>
#include <optional>

namespace Support
{

namespace
{

constexpr std::size_t kMostBytes = 65536; // of a message
constexpr std::size_t kMostLevels = 8;    // of lists and dictionaries, the message itself included
constexpr std::size_t kShortestValue = 2; // bytes

/// Ends the reading: there is a byte that cannot be right.
struct SWrongByte
{
    std::size_t offset;
};

/// Ends the reading: the stream does, within a message.
struct SStreamEnds
{
};

bool IsDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// Compares digits with those of the outermost numbers of 64 bits.
bool Fits64Bits(const std::string& digits, bool negative)
{
    const std::string most = negative ? "9223372036854775808" : "9223372036854775807";
    return digits.size() < most.size() || (digits.size() == most.size() && digits <= most);
}

class Reader
{
public:
    explicit Reader(const std::string& bytes) : m_bytes(bytes) {}

    bool AtEnd() const { return m_next == m_bytes.size(); }
    std::size_t Offset() const { return m_next; }

    /// A key for the second time is wrong once the message is whole: another fault in it comes first.
    SWireElement Message()
    {
        m_begin = m_next;
        m_repeatedKey.reset();
        Require(Peek() == 'd');
        SWireElement message = Value(0);
        if (m_repeatedKey)
            throw SWrongByte{*m_repeatedKey};
        return message;
    }

private:
    void Require(bool right) const
    {
        if (!right)
            throw SWrongByte{m_next};
    }

    char Peek() const
    {
        if (AtEnd())
            throw SStreamEnds();
        Require(m_next - m_begin < kMostBytes);
        return m_bytes[m_next];
    }

    char Take()
    {
        const char byte = Peek();
        ++m_next;
        return byte;
    }

    /// @param levels  that are open
    SWireElement Value(std::size_t levels)
    {
        const char first = Peek();
        if (first == 'i')
            return {ewkNumber, Number(), {}, {}};
        if (first != 'l' && first != 'd')
            return {ewkText, Text(levels), {}, {}};
        Require(levels < kMostLevels);
        return first == 'l' ? List(levels + 1) : Dictionary(levels + 1);
    }

    SWireElement List(std::size_t levels)
    {
        SWireElement list = {ewkList, "", {}, {}};
        Take();
        while (Peek() != 'e')
            list.elements.push_back(Value(levels));
        Take();
        return list;
    }

    SWireElement Dictionary(std::size_t levels)
    {
        SWireElement dictionary = {ewkDictionary, "", {}, {}};
        Take();
        while (Peek() != 'e')
        {
            const std::size_t offset = m_next;
            const std::string key = Text(levels + kShortestValue);
            if (dictionary.Find(key) != nullptr && !m_repeatedKey)
                m_repeatedKey = offset;
            dictionary.elements.push_back(Value(levels));
            dictionary.keys.push_back(key);
        }
        Take();
        return dictionary;
    }

    /// @return sign and digits
    std::string Number()
    {
        Take();
        const bool negative = Peek() == '-';
        if (negative)
            Take();
        Require(!negative || Peek() != '0');
        std::string digits;
        while (digits.empty() || Peek() != 'e')
        {
            Require(IsDigit(Peek()) && digits != "0");
            digits += Peek();
            Require(Fits64Bits(digits, negative));
            Take();
        }
        Take();
        return (negative ? "-" : "") + digits;
    }

    /// @param following  bytes that have to follow the text at least
    std::string Text(std::size_t following)
    {
        std::string digits;
        while (digits.empty() || Peek() != ':')
        {
            Require(IsDigit(Peek()) && digits != "0");
            digits += Peek();
            const std::size_t withColon = m_next - m_begin + 2;
            Require(withColon + std::stoul(digits) + following <= kMostBytes);
            Take();
        }
        Take();
        std::string text;
        for (std::size_t left = std::stoul(digits); left > 0; --left)
            text += Take();
        return text;
    }

    const std::string& m_bytes; // borrowed
    std::size_t m_next = 0;
    std::size_t m_begin = 0;                  // of the message
    std::optional<std::size_t> m_repeatedKey; // offset of the first one in it
};

std::string Quoted(const std::string& text)
{
    const char* const digits = "0123456789abcdef";
    std::string result = "\"";
    for (const char byte : text)
    {
        const auto value = static_cast<unsigned char>(byte);
        if (value >= ' ' && value <= '~' && byte != '"' && byte != '\\')
            result += byte;
        else
            result += std::string("\\x") + digits[value / 16] + digits[value % 16];
    }
    return result + "\"";
}

void Write(const SWireElement& element, std::vector<std::string>& pieces)
{
    if (element.kind == ewkNumber)
        return pieces.push_back("i" + element.value + "e");
    if (element.kind == ewkText)
        return pieces.push_back(std::to_string(element.value.size()) + ":" + element.value);
    pieces.emplace_back(element.kind == ewkList ? "l" : "d");
    for (std::size_t index = 0; index < element.elements.size(); ++index)
    {
        if (element.kind == ewkDictionary)
            Write({ewkText, element.keys[index], {}, {}}, pieces);
        Write(element.elements[index], pieces);
    }
    pieces.emplace_back("e");
}

} // namespace

const SWireElement* SWireElement::Find(const std::string& key) const
{
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? nullptr : &elements[static_cast<std::size_t>(found - keys.begin())];
}

SWireStream ReadWire(const std::string& bytes)
{
    SWireStream stream;
    Reader reader(bytes);
    try
    {
        while (!reader.AtEnd())
        {
            const std::size_t offset = reader.Offset();
            stream.messages.push_back({offset, reader.Message()});
        }
        stream.endOffset = bytes.size();
    }
    catch (const SWrongByte& wrong)
    {
        stream.end = eweWrong;
        stream.endOffset = wrong.offset;
    }
    catch (const SStreamEnds&)
    {
        stream.end = eweCutOff;
        stream.endOffset = bytes.size();
    }
    return stream;
}

std::vector<std::string> WrittenWire(const SWireElement& element)
{
    std::vector<std::string> pieces;
    Write(element, pieces);
    return pieces;
}

std::string Shown(const SWireElement& element)
{
    if (element.kind == ewkNumber)
        return element.value;
    if (element.kind == ewkText)
        return Quoted(element.value);
    std::string result;
    if (element.kind == ewkList)
    {
        for (const SWireElement& each : element.elements)
            result += (result.empty() ? "" : ", ") + Shown(each);
        return "[" + result + "]";
    }
    std::map<std::string, std::string> sorted;
    for (std::size_t index = 0; index < element.elements.size(); ++index)
        sorted[element.keys[index]] = Shown(element.elements[index]);
    for (const auto& entry : sorted)
        result += (result.empty() ? "" : ", ") + Quoted(entry.first) + ": " + entry.second;
    return "{" + result + "}";
}

std::string Shown(const SWireStream& stream)
{
    std::string result;
    for (const SWireMessage& message : stream.messages)
        result += std::to_string(message.offset) + " " + Shown(message.content) + "\n";
    const char* const end = stream.end == eweWrong    ? "wrong at "
                            : stream.end == eweCutOff ? "cut off at "
                                                      : "whole at ";
    return result + end + std::to_string(stream.endOffset) + "\n";
}

} // namespace Support
