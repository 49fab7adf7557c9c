#include <MPI/BAtomC.h>
#include <MPI/BDictionaryC.h>
#include <MPI/BElementC.h>
#include <MPI/BEncoderC.h>
#include <MPI/BListC.h>

#include <utility>

BElementC::~BElementC() = default;

BAtomC::BAtomC(std::int64_t value, BElementC* parent) : BElementC(parent), m_isInteger(true), m_integer(value)
{
}

BAtomC::BAtomC(const std::string& text, BElementC* parent)
    : BElementC(parent), m_isInteger(false), m_integer(0), m_text(text)
{
}

BAtomC::~BAtomC() = default;

void BAtomC::Encode(BEncoderC& encoder) const
{
    if (m_isInteger)
        encoder.Integer(m_integer);
    else
        encoder.Text(m_text);
}

BListC::BListC(BElementC* parent) : BElementC(parent)
{
    m_elements.reserve(kReservedElements);
}

BListC::~BListC() = default;

void BListC::Encode(BEncoderC& encoder) const
{
    encoder.BeginList();
    for (const auto& element : m_elements)
        encoder.Element(*element);
    encoder.End();
}

void BListC::Append(std::unique_ptr<BElementC> element)
{
    element->Parent(this);
    m_elements.push_back(std::move(element));
}

const BElementC* BListC::At(std::size_t position) const
{
    return position < m_elements.size() ? m_elements[position].get() : nullptr;
}

BDictionaryC::BDictionaryC(BElementC* parent) : BElementC(parent) {}

BDictionaryC::~BDictionaryC() = default;

void BDictionaryC::Encode(BEncoderC& encoder) const
{
    encoder.BeginDictionary();
    for (const auto& entry : m_elements)
    {
        encoder.Text(entry.first);
        encoder.Element(*entry.second);
    }
    encoder.End();
}

void BDictionaryC::Insert(const std::string& key, std::unique_ptr<BElementC> element)
{
    element->Parent(this);
    m_elements[key] = std::move(element);
}

const BElementC* BDictionaryC::Find(const std::string& key) const
{
    const auto found = m_elements.find(key);
    return found == m_elements.end() ? nullptr : found->second.get();
}

BElementC* BDictionaryC::Find(const std::string& key)
{
    const auto found = m_elements.find(key);
    return found == m_elements.end() ? nullptr : found->second.get();
}
