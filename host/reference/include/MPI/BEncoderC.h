#ifndef MPI_BENCODERC_H
#define MPI_BENCODERC_H

#include <Core/Export.h>

#include <cstdint>
#include <string>
#include <string_view>

class BElementC;

/// Writes elements as the bytes that go over the wire: i5e, 4:text, l...e, d...e.
///
/// An element has one encoding only: numbers have no leading zeros, dictionaries are in key order.
class CORE_EXPORT BEncoderC
{
public:
    /// Appends a whole element.
    void Element(const BElementC& element);

    /// The single steps, for messages put together without elements. Whoever uses them ends every list and
    /// dictionary begun, and writes dictionaries as key, value, key, value with the keys in ascending order.
    void Integer(std::int64_t value);
    /// A text of any bytes.
    void Text(std::string_view text);
    /// Begins a list; what follows up to its End lies in it.
    void BeginList() { Begin('l'); }
    /// Begins a dictionary; what follows up to its End lies in it.
    void BeginDictionary() { Begin('d'); }
    /// Ends the list or dictionary begun last.
    void End();

    /// What has been written so far.
    const std::string& Bytes() const { return m_bytes; }

    /// How many levels of lists and dictionaries the deepest element lies in.
    int Depth() const { return m_deepest; }

    /// Forgets all that was written.
    void Clear();

private:
    void Begin(char kind);

    std::string m_bytes;
    int m_depth = 0;
    int m_deepest = 0;
};

#endif
