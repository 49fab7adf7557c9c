#ifndef MESSAGES_BMESSAGEBUILDER_H
#define MESSAGES_BMESSAGEBUILDER_H

#include <MPI/BDictionaryC.h>
#include <MPI/BListC.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// Makes the elements of a message that BScanner has found right. No recursion.
class BMessageBuilder
{
public:
    /// @param bytes  borrowed; one whole, right message
    explicit BMessageBuilder(const std::string& bytes) : m_bytes(bytes) {}

    /// Builds, once.
    /// @return the message, or null if a dictionary has a key twice
    std::unique_ptr<BDictionaryC> Build();

    /// Position of the key that was there already, if Build gave null.
    std::size_t RepeatedKey() const { return m_keyPosition; }

private:
    struct SLevel
    {
        BListC* list;             // this or the next is null
        BDictionaryC* dictionary; // both borrowed
    };

    bool BuildElement();
    bool TakeKey();
    void TakeInteger();
    std::string TakeText();
    bool AtKey() const;
    void Open(std::unique_ptr<BElementC> element);
    BElementC* Put(std::unique_ptr<BElementC> element);

    const std::string& m_bytes;
    std::size_t m_next = 1; // past the "d" of the message
    std::vector<SLevel> m_levels;
    bool m_hasKey = false; // of the dictionary on top, still without its value
    std::string m_key;
    std::size_t m_keyPosition = 0;
};

#endif
