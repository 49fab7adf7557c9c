#ifndef MPI_BLISTC_H
#define MPI_BLISTC_H

#include <MPI/BElementC.h>

#include <cstddef>
#include <memory>
#include <vector>

/// A list of elements in a message, such as the arguments of a notification.
///
/// Ownership: the list owns its elements and deletes them with itself.
class CORE_EXPORT BListC : public BElementC
{
public:
    /// Room for this many elements is there from the start: argument lists are short and made often.
    static constexpr std::size_t kReservedElements = 16;

    /// An empty list.
    /// @param parent  borrowed, may be null; the list is not put into it
    explicit BListC(BElementC* parent = nullptr);
    ~BListC() override;

    void Encode(BEncoderC& encoder) const override;
    const BListC* AsList() const override { return this; }
    BListC* AsList() override { return this; }

    /// Puts an element at the end and becomes its parent.
    /// @param element  not null
    void Append(std::unique_ptr<BElementC> element);

    /// How many elements there are.
    std::size_t Size() const { return m_elements.size(); }

    /// The element at a position counted from 0; null past the end.
    const BElementC* At(std::size_t position) const;

    /// All elements in the order appended.
    const std::vector<std::unique_ptr<BElementC>>& Elements() const { return m_elements; }

private:
    std::vector<std::unique_ptr<BElementC>> m_elements;
};

#endif
