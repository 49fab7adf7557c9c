#include "harness/XmlMutation.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t room);

namespace Fuzz
{

namespace
{
constexpr std::size_t kMostValueBytes = 64;

/// Part of a text: from `begin` to before `end`.
struct SSpan
{
    std::size_t begin;
    std::size_t end;
};

/// Whole elements, with all that they hold, and the values of attributes without their quotes.
struct SParts
{
    std::vector<SSpan> elements;
    std::vector<SSpan> values;
};

/// Good enough for inputs: whatever is taken for an element wrongly makes just another input.
class CPartFinder
{
public:
    explicit CPartFinder(const std::string& text) : m_text(text) {}

    SParts Find()
    {
        for (std::size_t begin = m_text.find('<'); begin != std::string::npos;
             begin = m_text.find('<', m_next))
            TakeTag(begin);
        return m_parts;
    }

private:
    void TakeTag(std::size_t begin)
    {
        const char kind = begin + 1 < m_text.size() ? m_text[begin + 1] : '>';
        const bool isElement = kind != '?' && kind != '!';
        m_next = begin + 1;
        SkipTag(isElement);
        if (!isElement)
            return;
        if (kind == '/')
            Close();
        else if (m_next > begin + 1 && m_text[m_next - 2] == '/')
            m_parts.elements.push_back({begin, m_next});
        else
            m_open.push_back(begin);
    }

    void SkipTag(bool isElement)
    {
        while (m_next < m_text.size() && m_text[m_next] != '>')
        {
            if (isElement && m_text[m_next] == '"')
                TakeValue();
            else
                ++m_next;
        }
        m_next = std::min(m_next + 1, m_text.size());
    }

    void TakeValue()
    {
        const std::size_t begin = m_next + 1;
        const std::size_t end = std::min(m_text.find('"', begin), m_text.size());
        m_parts.values.push_back({begin, end});
        m_next = std::min(end + 1, m_text.size());
    }

    void Close()
    {
        if (m_open.empty())
            return;
        m_parts.elements.push_back({m_open.back(), m_next});
        m_open.pop_back();
    }

    const std::string& m_text;
    std::size_t m_next = 0;
    std::vector<std::size_t> m_open; // where elements begin whose end has not come
    SParts m_parts;
};

std::string Taken(const std::string& text, const SSpan& span)
{
    return text.substr(span.begin, span.end - span.begin);
}

void Replace(std::string& text, const SSpan& span, const std::string& by)
{
    text.replace(span.begin, span.end - span.begin, by);
}

/// Bytes of a value changed as libFuzzer does it, without those that would end the value.
std::string MutatedValue(const std::string& value)
{
    std::uint8_t bytes[kMostValueBytes] = {};
    const std::size_t size = std::min(value.size(), kMostValueBytes);
    std::copy_n(value.begin(), size, bytes);
    const std::size_t newSize = LLVMFuzzerMutate(bytes, size, kMostValueBytes);
    std::string mutated(bytes, bytes + newSize);
    const auto endsValue = [](char c) { return c == '"' || c == '<' || c == '\0'; };
    mutated.erase(std::remove_if(mutated.begin(), mutated.end(), endsValue), mutated.end());
    return mutated;
}

template <typename Random>
void MutateElements(std::string& text, const std::vector<SSpan>& elements, Random& random)
{
    const SSpan& one = elements[random() % elements.size()];
    const SSpan& other = elements[random() % elements.size()];
    switch (random() % 4)
    {
    case 0:
        return Replace(text, one, std::string());
    case 1:
        return Replace(text, one, Taken(text, other));
    case 2:
        return Replace(text, {one.begin, one.begin}, Taken(text, other));
    default:
        return Replace(text, {one.end, one.end}, Taken(text, other));
    }
}

template <typename Random>
void MutateValues(std::string& text, const std::vector<SSpan>& values, Random& random)
{
    const SSpan& one = values[random() % values.size()];
    const SSpan& other = values[random() % values.size()];
    Replace(text, one, random() % 2 == 0 ? Taken(text, other) : MutatedValue(Taken(text, one)));
}
} // namespace

std::size_t MutateXml(std::uint8_t* bytes, std::size_t size, std::size_t room, unsigned seed)
{
    std::minstd_rand random(seed);
    std::string text(bytes, bytes + size);
    const SParts parts = CPartFinder(text).Find();
    const unsigned long choice = random() % 8;
    if (choice < 3 && !parts.elements.empty())
        MutateElements(text, parts.elements, random);
    else if (choice < 7 && !parts.values.empty())
        MutateValues(text, parts.values, random);
    else
        return LLVMFuzzerMutate(bytes, size, room);
    if (text.empty() || text.size() > room)
        return LLVMFuzzerMutate(bytes, size, room);
    std::copy(text.begin(), text.end(), bytes);
    return text.size();
}

} // namespace Fuzz
