#ifndef MPI_BDECODERC_H
#define MPI_BDECODERC_H

#include <Core/Export.h>
#include <MPI/BDictionaryC.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class BScanner;

/// Reads messages out of a stream of bytes that comes in pieces of any size and from anybody.
///
/// A message is one bencoded dictionary; the next follows without anything between. Numbers fit 64 bits with
/// sign, without leading zeros, plus sign or "-0"; lengths have no leading zeros either; keys come in any
/// order but not twice. Nothing is trusted: a length is checked before anything is kept for it, and a message
/// costs at most its own bytes until it is whole.
///
/// Failure: the first wrong byte ends it. The decoder then takes nothing more until Reset.
/// Cost: no recursion; every byte is looked at twice.
class CORE_EXPORT BDecoderC
{
public:
    static constexpr std::size_t kMaximumMessageBytes = 65536; ///< its outermost "d" and "e" included
    static constexpr int kMaximumDepth = 8; ///< levels of lists and dictionaries, the message being the first

    BDecoderC();
    ~BDecoderC();
    BDecoderC(const BDecoderC&) = delete;
    BDecoderC& operator=(const BDecoderC&) = delete;

    /// Takes bytes up to the end of a message, or all of them if it goes on.
    /// @return how many were taken; none while a message is waiting for TakeMessage or after a failure
    std::size_t Feed(const char* bytes, std::size_t size);

    /// Hands over the message that Feed has completed; null if it has not.
    std::unique_ptr<BDictionaryC> TakeMessage();

    /// Position of the first byte of the message taken last, counted from the first byte of the stream.
    std::uint64_t MessageOffset() const { return m_takenOffset; }

    /// How many bytes of the stream have been taken.
    std::uint64_t StreamOffset() const { return m_streamOffset; }

    /// True in the middle of a message.
    bool Incomplete() const;

    /// True once a byte was found wrong.
    bool Failed() const { return !m_faultReason.empty(); }

    /// Position of the wrong byte, counted from the first byte of the stream; of a key that came before, its
    /// first digit. 0 unless Failed.
    std::uint64_t FaultOffset() const { return m_faultOffset; }

    /// What is wrong with it, in words; empty unless Failed.
    const std::string& FaultReason() const { return m_faultReason; }

    /// Starts anew, for a new stream.
    void Reset();

private:
    void Fail(std::uint64_t offset, const std::string& reason);
    void CompleteMessage();

    std::unique_ptr<BScanner> m_scanner;
    std::string m_bytes; // of the message being received
    std::unique_ptr<BDictionaryC> m_message;
    std::uint64_t m_streamOffset = 0;
    std::uint64_t m_messageOffset = 0;
    std::uint64_t m_takenOffset = 0;
    std::uint64_t m_faultOffset = 0;
    std::string m_faultReason;
};

#endif
