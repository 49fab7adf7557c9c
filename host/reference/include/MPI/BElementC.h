#ifndef MPI_BELEMENTC_H
#define MPI_BELEMENTC_H

#include <Core/Export.h>

class BAtomC;
class BDictionaryC;
class BEncoderC;
class BListC;

/// A piece of a message: an atom (number or text), a list or a dictionary.
///
/// Ownership: lists and dictionaries own what is put into them. The parent is borrowed and only remembered.
class CORE_EXPORT BElementC
{
public:
    /// @param parent  borrowed; the list or dictionary this is going to be put into, or null
    explicit BElementC(BElementC* parent) : m_parent(parent) {}
    virtual ~BElementC();
    BElementC(const BElementC&) = delete;
    BElementC& operator=(const BElementC&) = delete;

    /// Writes the element and all below it.
    virtual void Encode(BEncoderC& encoder) const = 0;

    /// This element as what it is; null if it is something else.
    virtual const BAtomC* AsAtom() const { return nullptr; }
    /// As a list, or null.
    virtual const BListC* AsList() const { return nullptr; }
    /// As a dictionary, or null.
    virtual const BDictionaryC* AsDictionary() const { return nullptr; }
    /// As a list that may be changed, or null.
    virtual BListC* AsList() { return nullptr; }
    /// As a dictionary that may be changed, or null.
    virtual BDictionaryC* AsDictionary() { return nullptr; }

    /// The list or dictionary that this was made for or is in; null if none.
    BElementC* Parent() const { return m_parent; }
    /// Remembers another one; puts the element nowhere.
    void Parent(BElementC* parent) { m_parent = parent; }

private:
    BElementC* m_parent;
};

#endif
