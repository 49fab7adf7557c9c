#include "Messages/BScanner.h"

#include <limits>

namespace
{

constexpr std::uint64_t kGreatest = std::numeric_limits<std::int64_t>::max();
constexpr std::size_t kShortestValue = 2; // bytes, such as "le"
constexpr const char* kTooLong = "message longer than 65536 bytes";
static_assert(BDecoderC::kMaximumMessageBytes == 65536 && BDecoderC::kMaximumDepth == 8, "see the reasons");

bool IsDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

unsigned Digit(char byte)
{
    return static_cast<unsigned>(byte - '0');
}

} // namespace

bool BScanner::Take(char byte)
{
    if (m_size == BDecoderC::kMaximumMessageBytes)
        return Wrong(kTooLong);
    if (!Follow(byte))
        return false;
    ++m_size;
    return true;
}

bool BScanner::Follow(char byte)
{
    switch (m_state)
    {
    case EState::message:
        return TakeMessage(byte);
    case EState::keyOrEnd:
        return TakeKeyOrEnd(byte);
    case EState::value:
        return TakeValue(byte);
    case EState::valueOrEnd:
        return TakeValueOrEnd(byte);
    case EState::integer:
    case EState::integerAfterMinus:
        return TakeInteger(byte);
    case EState::integerAfterZero:
    case EState::integerDigits:
        return TakeIntegerDigit(byte);
    case EState::length:
        return TakeLength(byte);
    case EState::text:
        return TakeTextByte();
    default: // done
        return Wrong("byte after the end of the message");
    }
}

bool BScanner::TakeMessage(char byte)
{
    return byte == 'd' ? Open(true) : Wrong("a message is a dictionary and begins with \"d\"");
}

bool BScanner::TakeKeyOrEnd(char byte)
{
    if (byte == 'e')
        return CloseLevel();
    m_inKey = true;
    return IsDigit(byte) ? BeginLength(byte) : Wrong("a key or the end of the dictionary expected");
}

bool BScanner::TakeValue(char byte)
{
    m_inKey = false;
    if (byte == 'i')
        m_state = EState::integer;
    else if (byte == 'l' || byte == 'd')
        return Open(byte == 'd');
    else
        return IsDigit(byte) ? BeginLength(byte) : Wrong("a value expected");
    return true;
}

bool BScanner::TakeValueOrEnd(char byte)
{
    return byte == 'e' ? CloseLevel() : TakeValue(byte);
}

bool BScanner::TakeInteger(char byte)
{
    const bool afterMinus = m_state == EState::integerAfterMinus;
    if (byte == '-' && !afterMinus)
    {
        m_state = EState::integerAfterMinus;
        return true;
    }
    if (!IsDigit(byte) || (afterMinus && byte == '0'))
        return Wrong(afterMinus ? "a digit from 1 to 9 expected" : "a digit or \"-\" expected");
    m_negative = afterMinus;
    m_magnitude = Digit(byte);
    m_state = byte == '0' ? EState::integerAfterZero : EState::integerDigits;
    return true;
}

bool BScanner::TakeIntegerDigit(char byte)
{
    if (byte == 'e')
    {
        ElementEnded();
        return true;
    }
    if (!IsDigit(byte) || m_state == EState::integerAfterZero)
        return Wrong(IsDigit(byte) ? "number with a leading zero"
                                   : "a digit or the end of the number expected");
    const std::uint64_t limit = m_negative ? kGreatest + 1 : kGreatest;
    if (m_magnitude > (limit - Digit(byte)) / 10)
        return Wrong("number does not fit 64 bits");
    m_magnitude = m_magnitude * 10 + Digit(byte);
    return true;
}

bool BScanner::BeginLength(char digit)
{
    m_state = EState::length;
    m_length = Digit(digit);
    return CheckLength();
}

bool BScanner::TakeLength(char byte)
{
    if (byte == ':')
    {
        m_state = EState::text;
        if (m_length == 0)
            ElementEnded();
        return true;
    }
    if (!IsDigit(byte) || m_length == 0)
        return Wrong(IsDigit(byte) ? "length with a leading zero" : "a digit or \":\" expected");
    m_length = m_length * 10 + Digit(byte); // what it was has been checked, so this is far from overflowing
    return CheckLength();
}

/// A text that leaves no room for what must follow it is refused by its length, before any of it has come:
/// the ends of all levels and, after a key, a value.
bool BScanner::CheckLength()
{
    const std::size_t soFarAndColon = m_size + 2;
    const std::size_t toFollow = static_cast<std::size_t>(m_depth) + (m_inKey ? kShortestValue : 0);
    if (soFarAndColon + m_length + toFollow <= BDecoderC::kMaximumMessageBytes)
        return true;
    return Wrong(kTooLong);
}

bool BScanner::TakeTextByte()
{
    if (--m_length == 0)
        ElementEnded();
    return true;
}

bool BScanner::Open(bool dictionary)
{
    if (m_depth == BDecoderC::kMaximumDepth)
        return Wrong("message deeper than 8 levels");
    m_isDictionary[static_cast<std::size_t>(m_depth)] = dictionary;
    ++m_depth;
    m_state = dictionary ? EState::keyOrEnd : EState::valueOrEnd;
    return true;
}

bool BScanner::CloseLevel()
{
    --m_depth;
    m_inKey = false;
    ElementEnded();
    return true;
}

void BScanner::ElementEnded()
{
    if (m_depth == 0)
        m_state = EState::done;
    else if (!m_isDictionary[static_cast<std::size_t>(m_depth - 1)])
        m_state = EState::valueOrEnd;
    else
        m_state = m_inKey ? EState::value : EState::keyOrEnd;
}

bool BScanner::Wrong(const char* reason)
{
    m_reason = reason;
    return false;
}
