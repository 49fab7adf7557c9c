#ifndef MESSAGES_BSCANNER_H
#define MESSAGES_BSCANNER_H

#include <MPI/BDecoderC.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// Follows one message byte by byte and says at once which byte cannot be right. Keeps nothing but its place.
class BScanner
{
public:
    /// @return false if the byte is wrong; Reason says why, and no more may be given
    bool Take(char byte);

    /// Has the message ended?
    bool Done() const { return m_state == EState::done; }

    /// Has the message begun, but not ended?
    bool Inside() const { return m_size > 0 && !Done(); }

    const char* Reason() const { return m_reason; }

private:
    enum class EState
    {
        message,
        keyOrEnd,
        value,
        valueOrEnd,
        integer,
        integerAfterMinus,
        integerAfterZero,
        integerDigits,
        length,
        text,
        done
    };

    bool Follow(char byte);
    bool TakeMessage(char byte);
    bool TakeKeyOrEnd(char byte);
    bool TakeValue(char byte);
    bool TakeValueOrEnd(char byte);
    bool TakeInteger(char byte);
    bool TakeIntegerDigit(char byte);
    bool TakeLength(char byte);
    bool TakeTextByte();
    bool Open(bool dictionary);
    bool CloseLevel();
    bool BeginLength(char digit);
    bool CheckLength();
    void ElementEnded();
    bool Wrong(const char* reason);

    EState m_state = EState::message;
    std::size_t m_size = 0; // bytes taken
    int m_depth = 0;
    std::array<bool, BDecoderC::kMaximumDepth> m_isDictionary = {};
    bool m_inKey = false; // the text that is being taken is a key
    bool m_negative = false;
    std::uint64_t m_magnitude = 0; // of an integer
    std::size_t m_length = 0;      // of a text; then what is left of it
    const char* m_reason = "";
};

#endif
