#ifndef FAULTKEEPER_PRESENTATION_ERRORTREEPARTS_H
#define FAULTKEEPER_PRESENTATION_ERRORTREEPARTS_H

#include <Faultkeeper/ErrorTree.h>

#include <string>

namespace Faultkeeper
{

class CError;
class CErrorDatabaseView;
struct SErrorEntry;

/// What building, rebuilding and formatting trees have in common.

/// The texts of errors as a tree shows them: as they are, or as the keys that the console looks up.
class CErrorTexts
{
public:
    explicit CErrorTexts(bool useTextKeys) : m_useTextKeys(useTextKeys) {}

    std::string Title(const CError& error) const;
    std::string ShortTitle(const CError& error) const;
    std::string Problem(const CError& error) const;
    std::string Solution(const CError& error) const;

private:
    std::string TextOrKey(const CError& error, const std::string& text, const char* key) const;

    bool m_useTextKeys;
};

/// Flags and severity of the top error; the identifier is left as it is.
void SetFlags(const CError& error, SErrorTree& tree);

/// Times and counters of a record.
void SetStatus(const SErrorEntry& entry, SErrorTree& tree);
/// The same from the view's record of the error, zeros if there is none.
void SetStatus(const CErrorDatabaseView& view, const CError& error, SErrorTree& tree);

/// Adds the beeps of an error to those of the tree.
void AddBeeps(const CError& error, SErrorTree& tree);

/// Both titles of one error, in place of what is there.
void SetTitles(const CError& error, const CErrorTexts& texts, SErrorTree& tree);
/// No titles: several errors would compete for them, so the top error's are filled in later.
void ClearTitles(SErrorTree& tree);

/// The texts of one error in place of all that is there: both titles, one problem, one solution.
void SetTexts(const CError& error, const CErrorTexts& texts, SErrorTree& tree);
/// The texts of the top error wherever its triggers have left nothing.
void FillEmptyTexts(const CError& error, const CErrorTexts& texts, SErrorTree& tree);

} // namespace Faultkeeper

#endif
