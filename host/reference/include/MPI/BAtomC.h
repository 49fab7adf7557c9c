#ifndef MPI_BATOMC_H
#define MPI_BATOMC_H

#include <MPI/BElementC.h>

#include <cstdint>
#include <string>

/// One value in a message: a whole number or a text of any bytes.
class CORE_EXPORT BAtomC : public BElementC
{
public:
    /// A number.
    /// @param parent  borrowed, may be null; the atom is not put into it
    explicit BAtomC(std::int64_t value, BElementC* parent = nullptr);

    /// A text; bytes of any value are allowed, zero included.
    /// @param parent  borrowed, may be null; the atom is not put into it
    explicit BAtomC(const std::string& text, BElementC* parent = nullptr);

    ~BAtomC() override;

    void Encode(BEncoderC& encoder) const override;
    const BAtomC* AsAtom() const override { return this; }

    /// A number, and not a text?
    bool IsInteger() const { return m_isInteger; }

    /// The number; 0 if this is a text.
    std::int64_t Integer() const { return m_integer; }

    /// The text; empty if this is a number.
    const std::string& Text() const { return m_text; }

private:
    bool m_isInteger;
    std::int64_t m_integer;
    std::string m_text;
};

#endif
