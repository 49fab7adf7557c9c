#include <MPI/BEncoderC.h>

#include <MPI/BElementC.h>

#include <algorithm>

void BEncoderC::Element(const BElementC& element)
{
    element.Encode(*this);
}

void BEncoderC::Integer(std::int64_t value)
{
    m_bytes += 'i';
    m_bytes += std::to_string(value);
    m_bytes += 'e';
}

void BEncoderC::Text(const std::string& text)
{
    m_bytes += std::to_string(text.size());
    m_bytes += ':';
    m_bytes += text;
}

void BEncoderC::Begin(char kind)
{
    m_bytes += kind;
    ++m_depth;
    m_deepest = std::max(m_deepest, m_depth);
}

void BEncoderC::End()
{
    m_bytes += 'e';
    --m_depth;
}

void BEncoderC::Clear()
{
    m_bytes.clear();
    m_depth = 0;
    m_deepest = 0;
}
