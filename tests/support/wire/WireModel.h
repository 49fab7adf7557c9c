#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Support
{

enum EWireKind
{
    ewkNumber,
    ewkText,
    ewkList,
    ewkDictionary
};

/// A piece of a message, with its parts in the order in which their bytes come.
struct SWireElement
{
    EWireKind kind = ewkNumber;
    std::string value;                  ///< a number's sign and digits, or a text
    std::vector<std::string> keys;      ///< of a dictionary, one for each of the elements
    std::vector<SWireElement> elements; ///< of a list or dictionary

    /// The dictionary's element of that key; null if there is none, or if this is no dictionary.
    const SWireElement* Find(const std::string& key) const;
};

struct SWireMessage
{
    std::size_t offset; ///< of its first byte in the stream
    SWireElement content;
};

enum EWireEnd
{
    eweWhole,  ///< behind a message, or nothing came
    eweCutOff, ///< within a message
    eweWrong   ///< at a byte that cannot be right
};

/// What a stream comes to.
struct SWireStream
{
    std::vector<SWireMessage> messages;
    EWireEnd end = eweWhole;
    std::size_t endOffset = 0; ///< of the wrong byte; else the stream's size
};

/// Reads a stream that is there as a whole, as the format is written down: slowly, with recursion, and with
/// nothing of the host's.
SWireStream ReadWire(const std::string& bytes);

/// What a writer that writes as plainly sends for an element: a piece for each number, text, beginning and
/// end. The keys come in the element's order.
std::vector<std::string> WrittenWire(const SWireElement& element);

/// A line in which no two elements are alike, unless they differ in the order of keys only.
std::string Shown(const SWireElement& element);

/// A line for each message and for the end.
std::string Shown(const SWireStream& stream);

} // namespace Support
