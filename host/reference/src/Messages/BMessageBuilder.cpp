#include "Messages/BMessageBuilder.h"

#include <MPI/BAtomC.h>

#include <charconv>
#include <cstdint>
#include <utility>

std::unique_ptr<BDictionaryC> BMessageBuilder::Build()
{
    auto message = std::make_unique<BDictionaryC>();
    m_levels.push_back({nullptr, message.get()});
    while (!m_levels.empty())
    {
        if (!BuildElement())
            return nullptr;
    }
    return message;
}

bool BMessageBuilder::BuildElement()
{
    const char kind = m_bytes[m_next];
    if (kind == 'e')
    {
        m_levels.pop_back();
        ++m_next;
    }
    else if (AtKey())
        return TakeKey();
    else if (kind == 'i')
        TakeInteger();
    else if (kind == 'l')
        Open(std::make_unique<BListC>());
    else if (kind == 'd')
        Open(std::make_unique<BDictionaryC>());
    else
        Put(std::make_unique<BAtomC>(TakeText()));
    return true;
}

bool BMessageBuilder::AtKey() const
{
    return m_levels.back().dictionary != nullptr && !m_hasKey;
}

bool BMessageBuilder::TakeKey()
{
    m_keyPosition = m_next;
    m_key = TakeText();
    m_hasKey = true;
    return m_levels.back().dictionary->Find(m_key) == nullptr;
}

void BMessageBuilder::TakeInteger()
{
    const std::size_t end = m_bytes.find('e', m_next);
    std::int64_t value = 0;
    std::from_chars(m_bytes.data() + m_next + 1, m_bytes.data() + end, value);
    m_next = end + 1;
    Put(std::make_unique<BAtomC>(value));
}

std::string BMessageBuilder::TakeText()
{
    const std::size_t colon = m_bytes.find(':', m_next);
    std::size_t length = 0;
    std::from_chars(m_bytes.data() + m_next, m_bytes.data() + colon, length);
    m_next = colon + 1 + length;
    return m_bytes.substr(colon + 1, length);
}

void BMessageBuilder::Open(std::unique_ptr<BElementC> element)
{
    ++m_next;
    BElementC* const opened = Put(std::move(element));
    m_levels.push_back({opened->AsList(), opened->AsDictionary()});
}

BElementC* BMessageBuilder::Put(std::unique_ptr<BElementC> element)
{
    BElementC* const put = element.get();
    const SLevel& level = m_levels.back();
    if (level.list != nullptr)
        level.list->Append(std::move(element));
    else
        level.dictionary->Insert(m_key, std::move(element));
    m_hasKey = false;
    return put;
}
