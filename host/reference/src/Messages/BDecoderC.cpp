#include <MPI/BDecoderC.h>

#include "Messages/BMessageBuilder.h"
#include "Messages/BScanner.h"

#include <utility>

BDecoderC::BDecoderC() : m_scanner(std::make_unique<BScanner>()) {}

BDecoderC::~BDecoderC() = default;

std::size_t BDecoderC::Feed(const char* bytes, std::size_t size)
{
    std::size_t taken = 0;
    while (taken < size && m_message == nullptr && !Failed())
    {
        if (!m_scanner->Take(bytes[taken]))
        {
            Fail(m_streamOffset, m_scanner->Reason());
            break;
        }
        m_bytes += bytes[taken];
        ++taken;
        ++m_streamOffset;
        if (m_scanner->Done())
            CompleteMessage();
    }
    return taken;
}

std::unique_ptr<BDictionaryC> BDecoderC::TakeMessage()
{
    if (m_message != nullptr)
        m_takenOffset = m_messageOffset;
    return std::move(m_message);
}

bool BDecoderC::Incomplete() const
{
    return !Failed() && m_scanner->Inside();
}

void BDecoderC::Reset()
{
    *m_scanner = BScanner();
    m_bytes.clear();
    m_message.reset();
    m_streamOffset = 0;
    m_messageOffset = 0;
    m_takenOffset = 0;
    m_faultOffset = 0;
    m_faultReason.clear();
}

void BDecoderC::Fail(std::uint64_t offset, const std::string& reason)
{
    m_faultOffset = offset;
    m_faultReason = reason;
    m_bytes.clear();
}

void BDecoderC::CompleteMessage()
{
    m_messageOffset = m_streamOffset - m_bytes.size();
    BMessageBuilder builder(m_bytes);
    m_message = builder.Build();
    if (m_message == nullptr)
        return Fail(m_messageOffset + builder.RepeatedKey(), "key for the second time in a dictionary");
    m_bytes.clear();
    *m_scanner = BScanner();
}
