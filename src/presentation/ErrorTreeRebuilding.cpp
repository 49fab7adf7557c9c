#include <Faultkeeper/ErrorPresentation.h>

#include "Common/ErrorName.h"
#include "Common/ErrorPath.h"
#include "presentation/ErrorTreeParts.h"
#include "presentation/StateKey.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorDatabaseView.h>

#include <cstddef>
#include <stdexcept>

namespace Faultkeeper
{

namespace
{
typedef std::vector<std::pair<int, int>> Codes;

constexpr const char* kBranch = "+-";
constexpr const char* kDeeper = "--";

/// Walks the triggers that a row of bits selects below an error, whatever their present state is.
class CTreeRebuilder
{
public:
    /// @param prefix  of the error's own line; not used if the lines are to be plain
    CTreeRebuilder(const std::string& bits, SErrorTree& tree, std::vector<std::string>& lines, bool plain,
                   Codes& codes, const std::string& prefix)
        : m_bits(bits), m_used(0), m_tree(tree), m_lines(lines), m_plain(plain), m_codes(codes),
          m_prefix(plain ? std::string() : prefix)
    {
    }

    void Visit(const CError& error);

    /// How many bits have been taken from the front.
    std::size_t Used() const { return m_used; }

private:
    bool BitSet(std::size_t position) const { return position < m_bits.size() && m_bits[position] == '1'; }
    std::size_t TakeSelected(const CError& error, std::vector<const CError*>& selected);
    void Contribute(const CTriggerSet& triggerSet, const CError& trigger);
    void ShowBelow(const std::vector<const CError*>& triggers);

    const std::string& m_bits;
    std::size_t m_used;
    SErrorTree& m_tree;
    std::vector<std::string>& m_lines;
    const bool m_plain;
    Codes& m_codes;
    std::string m_prefix; // of the lines of where the walk is; empty if they are plain
    CErrorPath m_path;
};

void CTreeRebuilder::Visit(const CError& error)
{
    if (m_used == m_bits.size())
        return;
    const CErrorPathStep step(m_path, error);
    std::vector<const CError*> selected;
    const std::size_t triggers = TakeSelected(error, selected);
    if (selected.size() > 1)
        ClearTitles(m_tree);
    // Keys are read so in the field: an error whose triggers take the last bit shows nothing below itself.
    if (m_bits.size() - m_used <= triggers)
    {
        m_used = m_bits.size();
        return;
    }
    m_used += triggers;
    ShowBelow(selected);
}

void CTreeRebuilder::ShowBelow(const std::vector<const CError*>& triggers)
{
    const std::size_t length = m_prefix.size();
    if (!m_plain)
        m_prefix += kDeeper;
    for (const CError* trigger : triggers)
    {
        m_lines.push_back(m_prefix + ErrorName(*trigger));
        if (!m_path.Holds(*trigger))
            Visit(*trigger);
    }
    m_prefix.resize(length);
}

// Returns how many triggers the error has, selected or not.
std::size_t CTreeRebuilder::TakeSelected(const CError& error, std::vector<const CError*>& selected)
{
    std::size_t triggers = 0;
    for (const CTriggerSet& triggerSet : error.TriggerSets())
    {
        for (const CError* trigger : triggerSet.Triggers())
        {
            if (!BitSet(m_used + triggers++))
                continue;
            selected.push_back(trigger);
            Contribute(triggerSet, *trigger);
        }
    }
    return triggers;
}

void CTreeRebuilder::Contribute(const CTriggerSet& triggerSet, const CError& trigger)
{
    const CErrorTexts texts(false);
    m_codes.emplace_back(trigger.ProblemCode(), trigger.ProblemType());
    AddBeeps(trigger, m_tree);
    if (triggerSet.LinkingMode() == eelmVerbose)
        m_tree.problems.push_back(texts.Problem(trigger));
    if (triggerSet.TitleSource() == eetsTrigger)
        SetTitles(trigger, texts, m_tree);
    if (triggerSet.LinkingMode() != eelmShallow && !trigger.ChildLinkingModePresent(eelmChildOnly))
        m_tree.solutions.push_back(texts.Solution(trigger));
}

// The error of the database at a position of the table, or null.
const CError* ErrorAt(int index, const CErrorDatabase& db, CErrorDatabaseView& view)
{
    int problemCode = 0;
    int problemType = 0;
    if (view.RetrieveErrorFromIndex(index, problemCode, problemType) < 0)
        return nullptr;
    return db.RetrieveError(problemCode, problemType);
}
} // namespace

void CErrorPresentation::RegenerateErrorTree(const std::string& stateKey, const CErrorDatabase& db,
                                             CErrorDatabaseView& view, SErrorTree& tree,
                                             std::vector<std::string>& lines,
                                             std::vector<std::pair<int, int>>& codes, bool plain)
{
    std::string bits = ExpandStateKey(stateKey);
    const CError* const error = ErrorAt(IndexOfBits(bits), db, view);
    if (error == nullptr)
        return;
    codes.emplace_back(error->ProblemCode(), error->ProblemType());
    SetFlags(*error, tree);
    SetStatus(view, *error, tree);
    lines.push_back((plain ? "" : kBranch) + ErrorName(*error));
    if (error->TriggerSets().empty())
    {
        SetTexts(*error, CErrorTexts(false), tree);
        return;
    }
    if (bits.size() < kIndexBits)
        throw std::out_of_range("basic_string::substr"); // what callers have always been told
    bits.erase(0, kIndexBits);
    RegenerateErrorTree(error, bits, tree, lines, plain, codes, kBranch);
    FillEmptyTexts(*error, CErrorTexts(false), tree);
}

void CErrorPresentation::RegenerateErrorTree(const CError* error, std::string& bits, SErrorTree& tree,
                                             std::vector<std::string>& lines, bool plain,
                                             std::vector<std::pair<int, int>>& codes,
                                             const std::string& prefix)
{
    CTreeRebuilder rebuilder(bits, tree, lines, plain, codes, prefix);
    rebuilder.Visit(*error);
    bits.erase(0, rebuilder.Used());
}

} // namespace Faultkeeper
