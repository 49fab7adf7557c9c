#ifndef FAULTKEEPER_ERRORPRESENTATION_H
#define FAULTKEEPER_ERRORPRESENTATION_H

#include <Faultkeeper/ErrorEntry.h>
#include <Faultkeeper/ErrorTree.h>
#include <Faultkeeper/Export.h>

#include <list>
#include <string>
#include <utility>
#include <vector>

namespace Faultkeeper
{

class CError;
class CErrorDatabase;
class CErrorDatabaseView;
class CErrorOverlay;

/// Turns errors into what screens and people read: trees with texts, state keys, lists, listings and text
/// files.
///
/// An error's *name* is "<module>:<sub-module>:<problem>:<failure mode>", the last as a number. Where text
/// keys are asked for, each text is replaced by the name and a suffix that the console looks up in its own
/// language:
/// ".shortTitle" for the title, ".vtTitle" for the short problem text, ".problem" and ".solution".
///
/// Has no state and is never instantiated. Nothing is changed but the arguments named as outputs.
/// Threads: as those of the database and view that are passed.
class FAULTKEEPER_EXPORT CErrorPresentation
{
public:
    CErrorPresentation() = delete;

    /// Builds one tree for each listed error, in list order; normally the active tops of a database.
    /// @param view         a reading view; tells counters, times and the table position for the key. Errors
    /// without
    ///                     a record get zeros and the position -1.
    /// @param trees        replaced
    /// @param useTextKeys  text keys instead of texts
    static void GetErrorTree(const CErrorDatabaseView& view, const CErrorOverlay& overlay,
                             const std::list<const CError*>& errors, std::vector<SErrorTree>& trees,
                             bool useTextKeys);

    /// Adds what the active triggers of one error contribute, and theirs in turn, depth first.
    /// @param tree      problems, solutions, titles and beeps are added to
    /// @param activity  one string for each visited error is appended: a "1" or "0" for each trigger
    /// @param nested    only record activity, contribute nothing (what is below a shallow link)
    /// @param codes     the identifier of each trigger that contributes is appended
    static void BuildErrorTree(const CError* error, SErrorTree& tree, std::vector<std::string>& activity,
                               bool nested, bool useTextKeys, std::vector<std::pair<int, int>>& codes);

    /// Rebuilds a tree from its state key alone, whatever the present state is. Texts are used, never keys;
    /// problemCode, problemType, stateKey and friendlyCode of `tree` keep what they hold.
    /// @param stateKey  upper-case hexadecimal digits
    /// @param view      either kind; finds the top error by its position in the table
    /// @param lines     one line for each error of the tree is appended
    /// @param codes     the identifier of each error of the tree is appended
    /// @param plain     lines hold names only, without the drawn branches
    /// Does nothing if the key names no record of the table or no error of the database.
    /// @throws std::invalid_argument before anything changes if the key holds another character than 0-9 and
    /// A-F
    /// @throws std::out_of_range if the key is shorter than ten bits and the top error has trigger sets; the
    /// outputs are changed as far as the top error goes
    static void RegenerateErrorTree(const std::string& stateKey, const CErrorDatabase& db,
                                    CErrorDatabaseView& view, SErrorTree& tree,
                                    std::vector<std::string>& lines, std::vector<std::pair<int, int>>& codes,
                                    bool plain);

    /// Rebuilds what is below one error.
    /// @param bits    one "1" or "0" for each trigger, of this error and then of those selected, depth first;
    /// what is
    ///                used is taken from the front. A bit that is missing counts as "0".
    /// @param prefix  begins every line
    static void RegenerateErrorTree(const CError* error, std::string& bits, SErrorTree& tree,
                                    std::vector<std::string>& lines, bool plain,
                                    std::vector<std::pair<int, int>>& codes, const std::string& prefix);

    /// Orders trees newest raise first. Trees raised in the same second have no order among them.
    static bool ErrorTreeSorter(const SErrorTree& left, const SErrorTree& right);

    /// Makes a history: one tree with text keys for each entry whose counter2 is not 0.
    /// @param trees  appended to; then all of it is sorted, newest raise first
    static void FormatErrorList(const std::vector<SErrorEntry>& entries, std::vector<SErrorTree>& trees);

    /// Prints "Active top level errors" and the listed errors with their active triggers to standard output.
    static void PrintErrorTree(const std::list<const CError*>& errors);
    /// Prints the active triggers of one error, and theirs in turn.
    /// @param prefix  begins every line; two blanks are put in front of it for each level
    static void PrintErrorChildren(const std::string& prefix, const CError* error);

    /// Writes the four texts of every error under their text keys to a file, eight lines an error; what the
    /// file held is replaced. A path that cannot be opened is passed over without a message.
    static void DumpLocalisedText(const std::vector<CError>& errors, const std::string& path);
};

} // namespace Faultkeeper

#endif
