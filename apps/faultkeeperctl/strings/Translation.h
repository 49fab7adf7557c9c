#ifndef FAULTKEEPERCTL_TRANSLATION_H
#define FAULTKEEPERCTL_TRANSLATION_H

#include "faultkeeperctl/strings/TextFile.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Faultkeeper
{
struct SErrorTree;
}

namespace Faultkeeper::Apps
{

/// Behind a key this makes the key of the text that the translation was made from: screens never ask for it,
/// and it tells when a text of the configuration has changed since.
constexpr const char* kOriginalSuffix = ".original";

enum ETextFinding
{
    etfMissing = 0, ///< no text, or none but blanks where the configuration has one
    etfLeftOver,    ///< a key that the configuration does not have
    etfChanged,     ///< translated from another text than the configuration has now
    etfTwice,       ///< a key that was there before with another text; the first one counts
};

/// Something that is wrong with a translation.
struct STextFinding
{
    ETextFinding kind;
    std::string key;      ///< "" for text in front of the first key, which is left over
    int line;             ///< 0 for a key that is not there
    std::string original; ///< what the configuration has now; "" for a key that it does not have
    std::string former;   ///< for a changed text: what it was translated from
};

/// Every text with the text that it is to be translated from, under a key of its own, for translators.
std::vector<STextRecord> WithOriginals(const std::vector<STextRecord>& originals);

/// A translation of a configuration's texts.
class CTranslation
{
public:
    /// @param originals  the configuration's own texts
    /// @param records    those of the translation
    CTranslation(const std::vector<STextRecord>& originals, const std::vector<STextRecord>& records);

    /// All that is wrong: what is missing in the order of the configuration, then the rest in that of the
    /// file.
    std::vector<STextFinding> Findings() const;

    /// How many texts the configuration has.
    std::size_t Count() const { return m_originals.size(); }

    /// How many translated texts nobody can compare, because the translation does not hold what they were
    /// made from.
    std::size_t Incomparable() const;

    /// The translated text; of one that is missing the original, and its key is added to `missing`.
    std::string Text(const std::string& key, std::vector<std::string>& missing) const;

private:
    const STextRecord* Translated(const std::string& key) const;
    const STextRecord* Former(const std::string& key) const;
    bool IsMissing(const STextRecord& original) const;
    bool IsExpected(const std::string& key) const;
    void FindMissing(std::vector<STextFinding>& findings) const;
    void FindIn(const STextRecord& record, std::vector<STextFinding>& findings) const;

    std::vector<STextRecord> m_originals;
    std::vector<STextRecord> m_records;
    std::map<std::string, std::size_t> m_originalPlaces; // of the first with that key
    std::map<std::string, std::size_t> m_places;         // of the first with that key
};

/// Puts the translated texts in the place of a tree's text keys.
/// @param missing  keys without a translation are appended; their texts are the configuration's
void Translate(SErrorTree& tree, const CTranslation& translation, std::vector<std::string>& missing);

} // namespace Faultkeeper::Apps

#endif
