#ifndef FAULTKEEPER_ERROROVERLAY_H
#define FAULTKEEPER_ERROROVERLAY_H

#include <Faultkeeper/Export.h>

#include <string>
#include <utility>
#include <vector>

namespace Faultkeeper
{

/// A combination of errors and the friendly code that stands for it.
struct SPattern
{
    std::string code;                     ///< what the driver reads out to support; never empty
    bool allowPartialMatch = false;       ///< other errors may be there too
    std::vector<std::pair<int, int>> ids; ///< problem code and failure mode, ascending, duplicates kept
};

/// The table of friendly codes: short codes that stand for a whole combination of errors.
///
/// Read from ErrorPatterns.xml once, then only asked.
/// Threads: FindFriendlyCode may be called from several threads.
/// Failure: a file that is missing, not well-formed or without a "Patterns" element leaves the table empty,
/// without a message. An id that does not have four fields is skipped.
class FAULTKEEPER_EXPORT CErrorOverlay
{
public:
    /// Loads the patterns.
    /// @param directory  put in front of the file's name as it stands, so it ends with a "/"
    explicit CErrorOverlay(const std::string& directory);

    /// Code of the first pattern, in the order of the file, that matches a tree's errors, or "". A pattern
    /// matches when both hold the same identifiers, duplicates counted, in any order; one that allows partial
    /// matches also when each of its identifiers is among the given ones.
    std::string FindFriendlyCode(const std::vector<std::pair<int, int>>& ids) const;

    /// Does nothing; kept for programs that call it.
    void GetCodes() const;

private:
    std::vector<SPattern> m_patterns; // in the order of the file
};

} // namespace Faultkeeper

#endif
