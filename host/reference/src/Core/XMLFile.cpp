#include "Core/XMLFile.h"

#include <Core/IO/XMLDocument.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Core
{
namespace IO
{

namespace
{

constexpr std::size_t kReadBytes = 65536;

class OpenFile
{
public:
    // Without O_NONBLOCK, opening a FIFO that nobody writes to would never end.
    explicit OpenFile(const std::string& path)
        : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
    }
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool Opened() const { return m_descriptor >= 0; }
    bool Examine(struct stat& status) const { return fstat(m_descriptor, &status) == 0; }
    ssize_t Read(char* buffer, std::size_t size) const
    {
        ssize_t count = 0;
        do
            count = read(m_descriptor, buffer, size);
        while (count < 0 && errno == EINTR);
        return count;
    }

private:
    const int m_descriptor;
};

std::string ReadAll(const OpenFile& file, std::string& text)
{
    char buffer[kReadBytes];
    ssize_t count = 0;
    while ((count = file.Read(buffer, sizeof(buffer))) > 0)
    {
        text.append(buffer, static_cast<std::size_t>(count));
        if (text.size() > XMLDocument::kMaximumBytes)
            return std::strerror(EFBIG); // it has grown since it was examined
    }
    return count < 0 ? std::strerror(errno) : std::string();
}

std::string ReadRegularFile(const std::string& path, std::string& text)
{
    const OpenFile file(path);
    struct stat status = {};
    if (!file.Opened() || !file.Examine(status))
        return std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return std::strerror(EISDIR);
    if (!S_ISREG(status.st_mode))
        return "Not a regular file";
    if (status.st_size > static_cast<off_t>(XMLDocument::kMaximumBytes))
        return std::strerror(EFBIG);
    return ReadAll(file, text);
}

void AppendUTF8(std::string& text, std::uint32_t character)
{
    const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80)
        return append(character);
    if (character < 0x800)
        append(0xC0 | character >> 6);
    else if (character < 0x10000)
        append(0xE0 | character >> 12);
    else
    {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
    }
    if (character >= 0x800)
        append(0x80 | (character >> 6 & 0x3F));
    append(0x80 | (character & 0x3F));
}

bool StartsWith(const std::string& text, const char* beginning)
{
    return text.compare(0, std::strlen(beginning), beginning) == 0;
}

/// UTF-16 text, unit by unit. A byte order mark is not part of the text.
class UTF16Text
{
public:
    explicit UTF16Text(const std::string& bytes)
        : m_bytes(bytes), m_marked(StartsWith(bytes, "\xFE\xFF") || StartsWith(bytes, "\xFF\xFE")),
          m_bigEndian(StartsWith(bytes, "\xFE\xFF") || bytes.find('\0') == 0), m_next(m_marked ? 2 : 0)
    {
    }

    /// Is it that at all? By its mark, or by half of its first character, which is "<" or a blank.
    bool Recognised() const { return m_marked || m_bytes.find('\0') < 2; }

    const char* Name() const { return m_bigEndian ? "UTF-16BE" : "UTF-16LE"; }

    bool HasUnit() const { return m_next + 1 < m_bytes.size(); }
    bool HasOddByte() const { return m_next + 1 == m_bytes.size(); }

    /// A pair of surrogates is one character; one without its partner is given as it is and is nowhere valid.
    std::uint32_t TakeCharacter()
    {
        const std::uint32_t unit = TakeUnit();
        if ((unit & 0xFC00) != 0xD800 || !HasUnit() || (Unit(m_next) & 0xFC00) != 0xDC00)
            return unit;
        return 0x10000 + ((unit & 0x3FF) << 10) + (TakeUnit() & 0x3FF);
    }

private:
    std::uint32_t TakeUnit()
    {
        const std::uint32_t unit = Unit(m_next);
        m_next += 2;
        return unit;
    }

    std::uint32_t Unit(std::size_t position) const
    {
        const auto first = static_cast<unsigned char>(m_bytes[position]);
        const auto second = static_cast<unsigned char>(m_bytes[position + 1]);
        return m_bigEndian ? first * 256u + second : second * 256u + first;
    }

    const std::string& m_bytes;
    const bool m_marked;
    const bool m_bigEndian;
    std::size_t m_next;
};

std::string Recoded(UTF16Text source)
{
    std::string text;
    while (source.HasUnit())
        AppendUTF8(text, source.TakeCharacter());
    if (source.HasOddByte())
        text += '\xFF'; // no byte of UTF-8
    return text;
}

} // namespace

std::string ReadXMLFile(const std::string& path, std::string& text, std::string& recoded)
{
    text.clear();
    std::string reason = ReadRegularFile(path, text);
    const UTF16Text source(text);
    recoded = source.Recognised() ? source.Name() : "";
    if (source.Recognised())
        text = Recoded(source);
    return reason;
}

} // namespace IO
} // namespace Core
