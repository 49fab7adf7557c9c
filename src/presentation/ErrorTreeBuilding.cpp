#include <Faultkeeper/ErrorPresentation.h>

#include "Common/ErrorPath.h"
#include "presentation/ErrorTreeParts.h"
#include "presentation/StateKey.h"

#include <Faultkeeper/Error.h>
#include <Faultkeeper/ErrorDatabaseView.h>
#include <Faultkeeper/ErrorOverlay.h>

namespace Faultkeeper
{

namespace
{
typedef std::vector<std::pair<int, int>> Codes;

/// Walks the active triggers below an error, depth first, and collects what they contribute.
class CTreeBuilder
{
public:
    CTreeBuilder(SErrorTree& tree, std::vector<std::string>& activity, bool useTextKeys, Codes& codes)
        : m_tree(tree), m_activity(activity), m_texts(useTextKeys), m_codes(codes)
    {
    }

    void Visit(const CError& error, bool nested);

private:
    void RecordActivity(const CError& error);
    void VisitSet(const CTriggerSet& triggerSet, bool nested);
    void VisitTrigger(const CTriggerSet& triggerSet, const CError& trigger, bool nested);
    void Contribute(const CTriggerSet& triggerSet, const CError& trigger);

    SErrorTree& m_tree;
    std::vector<std::string>& m_activity;
    const CErrorTexts m_texts;
    Codes& m_codes;
    CErrorPath m_path;
};

void CTreeBuilder::Visit(const CError& error, bool nested)
{
    const CErrorPathStep step(m_path, error);
    RecordActivity(error);
    for (const CTriggerSet& triggerSet : error.TriggerSets())
        VisitSet(triggerSet, nested);
}

void CTreeBuilder::RecordActivity(const CError& error)
{
    std::string bits;
    for (const CTriggerSet& triggerSet : error.TriggerSets())
        for (const CError* trigger : triggerSet.Triggers())
            bits += trigger->Active() ? '1' : '0';
    m_activity.push_back(bits);
}

void CTreeBuilder::VisitSet(const CTriggerSet& triggerSet, bool nested)
{
    int activeTriggers = 0;
    for (const CError* trigger : triggerSet.Triggers())
    {
        if (!trigger->Active())
            continue;
        VisitTrigger(triggerSet, *trigger, nested);
        ++activeTriggers;
    }
    // Also takes away a title that came from further down.
    if (!nested && activeTriggers > 1)
        ClearTitles(m_tree);
}

void CTreeBuilder::VisitTrigger(const CTriggerSet& triggerSet, const CError& trigger, bool nested)
{
    if (!nested)
        Contribute(triggerSet, trigger);
    if (!m_path.Holds(trigger))
        Visit(trigger, nested || triggerSet.LinkingMode() == eelmShallow);
}

void CTreeBuilder::Contribute(const CTriggerSet& triggerSet, const CError& trigger)
{
    m_codes.emplace_back(trigger.ProblemCode(), trigger.ProblemType());
    if (triggerSet.LinkingMode() == eelmVerbose)
        m_tree.problems.push_back(m_texts.Problem(trigger));
    if (triggerSet.TitleSource() == eetsTrigger)
        SetTitles(trigger, m_texts, m_tree);
    AddBeeps(trigger, m_tree);
    if (triggerSet.LinkingMode() != eelmShallow && !trigger.ChildLinkingModePresent(eelmChildOnly))
        m_tree.solutions.push_back(m_texts.Solution(trigger));
}

SErrorTree MakeTree(const CErrorDatabaseView& view, const CErrorOverlay& overlay, const CError& error,
                    bool useTextKeys)
{
    SErrorTree tree;
    Codes codes{{error.ProblemCode(), error.ProblemType()}};
    SetFlags(error, tree);
    tree.problemCode = error.ProblemCode();
    tree.problemType = error.ProblemType();
    SetStatus(view, error, tree);
    std::vector<std::string> activity{
        IndexBits(view.RetrieveErrorIndex(error.ProblemCode(), error.ProblemType()))};
    if (!error.TriggerSets().empty())
        CErrorPresentation::BuildErrorTree(&error, tree, activity, false, useTextKeys, codes);
    FillEmptyTexts(error, CErrorTexts(useTextKeys), tree);
    tree.stateKey = PackStateKey(activity);
    tree.friendlyCode = overlay.FindFriendlyCode(codes);
    return tree;
}
} // namespace

void CErrorPresentation::GetErrorTree(const CErrorDatabaseView& view, const CErrorOverlay& overlay,
                                      const std::list<const CError*>& errors, std::vector<SErrorTree>& trees,
                                      bool useTextKeys)
{
    trees.clear();
    for (const CError* error : errors)
        trees.push_back(MakeTree(view, overlay, *error, useTextKeys));
}

void CErrorPresentation::BuildErrorTree(const CError* error, SErrorTree& tree,
                                        std::vector<std::string>& activity, bool nested, bool useTextKeys,
                                        std::vector<std::pair<int, int>>& codes)
{
    CTreeBuilder(tree, activity, useTextKeys, codes).Visit(*error, nested);
}

} // namespace Faultkeeper
