#ifndef FAULTKEEPER_TRIGGERSET_H
#define FAULTKEEPER_TRIGGERSET_H

#include <Faultkeeper/Export.h>

#include <list>

namespace Faultkeeper
{

class CError;

/// How an error is joined to its triggers when a tree is displayed. Read by the screens: append, never
/// renumber.
enum EErrorLinkingMode : int
{
    eelmDeep = 0,      ///< triggers add their solutions, and so do the triggers below them
    eelmVerbose = 1,   ///< as deep, and triggers add their problem texts too
    eelmShallow = 2,   ///< triggers add neither solutions nor anything from below them
    eelmChildOnly = 3, ///< as deep, but the owner's own solution is left to its triggers
};

/// Where the title of a displayed tree comes from.
enum EErrorTitleSource : int
{
    eetsParent = 0,  ///< the top error's own title
    eetsTrigger = 1, ///< the title of the one trigger that is active
};

/// The errors that together can raise the error owning this set, and how many of them it takes.
///
/// Value type: a copy has its own list of the same triggers.
/// Ownership: triggers are borrowed. They live in the database's error list, which has stopped growing
/// before the first trigger is added, so they stay valid as long as the database.
/// Threads: none inside; one thread at a time per database.
class FAULTKEEPER_EXPORT CTriggerSet
{
public:
    /// A set without triggers.
    /// @param autoTrigger       may the set raise and clear its owner by itself?
    /// @param triggersRequired  how many active triggers raise the owner; 0 or less: any one of them does
    CTriggerSet(bool autoTrigger, int triggersRequired, EErrorLinkingMode linkingMode,
                EErrorTitleSource titleSource);

    /// True if this set may raise and clear its owner by itself.
    bool AutoTrigger() const { return m_autoTrigger; }
    /// May the set raise and clear its owner by itself from now on? Changes no state.
    void AutoTrigger(bool autoTrigger) { m_autoTrigger = autoTrigger; }

    /// How many triggers must be active for the set to raise its owner; 0 or less: any one does.
    int TriggersRequired() const { return m_triggersRequired; }
    /// Replaces how many are required. Changes no state.
    void TriggersRequired(int triggersRequired) { m_triggersRequired = triggersRequired; }

    /// How the owner is joined to these triggers in displayed trees.
    EErrorLinkingMode LinkingMode() const { return m_linkingMode; }
    /// Replaces how the owner is joined to them.
    void LinkingMode(EErrorLinkingMode linkingMode) { m_linkingMode = linkingMode; }

    /// Where the title of a displayed tree comes from while a trigger of this set is active.
    EErrorTitleSource TitleSource() const { return m_titleSource; }
    /// Replaces where the title comes from.
    void TitleSource(EErrorTitleSource titleSource) { m_titleSource = titleSource; }

    /// The triggers in the order in which they were added, duplicates included.
    const std::list<CError*>& Triggers() const { return m_triggers; }

    /// Appends a trigger; one added twice counts twice.
    /// @param trigger  borrowed, not null
    void AddTrigger(CError* trigger);

    /// Is this very object among the triggers?
    bool HasTrigger(const CError* error) const;

    /// Would the owner be raised now that `child` is? `child` counts as active whatever its own state, once
    /// for each time it is listed; a set without `child` says no. Cost: one walk over the triggers.
    bool Raised(const CError* child) const;

    /// Is the set no longer satisfied now that `child` is cleared? `child` counts as inactive whatever its
    /// own state; a set without `child` says no. Cost: one walk over the triggers.
    bool Cleared(const CError* child) const;

private:
    bool m_autoTrigger;
    int m_triggersRequired;
    EErrorLinkingMode m_linkingMode;
    EErrorTitleSource m_titleSource;
    std::list<CError*> m_triggers; // in the order added; not owned
};

} // namespace Faultkeeper

#endif
