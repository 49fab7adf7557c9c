#ifndef MPI_BDICTIONARYC_H
#define MPI_BDICTIONARYC_H

#include <MPI/BElementC.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>

/// Named elements in a message; every message is one.
///
/// Ownership: the dictionary owns its elements and deletes them with itself.
class CORE_EXPORT BDictionaryC : public BElementC
{
public:
    /// An empty dictionary.
    /// @param parent  borrowed, may be null; the dictionary is not put into it
    explicit BDictionaryC(BElementC* parent = nullptr);
    ~BDictionaryC() override;

    /// Writes the entries in the order of their keys, compared byte by byte.
    void Encode(BEncoderC& encoder) const override;
    const BDictionaryC* AsDictionary() const override { return this; }
    BDictionaryC* AsDictionary() override { return this; }

    /// Puts an element in and becomes its parent. An element that had this key before is deleted.
    /// @param element  not null
    void Insert(const std::string& key, std::unique_ptr<BElementC> element);

    /// The element of that key, or null.
    const BElementC* Find(const std::string& key) const;
    /// The same to be changed.
    BElementC* Find(const std::string& key);

    /// How many keys there are.
    std::size_t Size() const { return m_elements.size(); }

    /// All elements by their keys.
    const std::map<std::string, std::unique_ptr<BElementC>>& Elements() const { return m_elements; }

private:
    std::map<std::string, std::unique_ptr<BElementC>> m_elements;
};

#endif
