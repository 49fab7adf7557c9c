#ifndef FAULTKEEPER_ERROR_H
#define FAULTKEEPER_ERROR_H

#include <Faultkeeper/Export.h>
#include <Faultkeeper/Identifiers.h>
#include <Faultkeeper/TriggerSet.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace Faultkeeper
{

class CErrorDatabase;

/// One fault definition (what it is called, what the driver reads, how it beeps) with its live state.
///
/// Errors form a hierarchy: an error's trigger sets hold the errors that can raise it, its parents are the
/// errors in whose trigger sets it stands. A raise or clear that is not silent is reported to the database
/// and then offered to every parent, which follows by the rules of its trigger sets.
///
/// Ownership: the database owns every error in one vector; triggers and parents are borrowed pointers into
/// it.
///
/// Threads: none inside; one thread at a time per database.
///
/// Failure: there is none. An error that does not know a pointer it is asked about answers "no". Raises and
/// clears go up the hierarchy by recursion: its depth is bounded by the stack (some 100 bytes a level).
class FAULTKEEPER_EXPORT CError
{
public:
    /// An inactive error with empty texts, position 1, no trigger sets and no parents.
    /// @param database  told of every change that is not silent; must outlive the error
    CError(CErrorDatabase& database, EModuleIdentifier module, ESubModuleIdentifier subModule,
           EProblemIdentifier problem, EProblemType type, EErrorSeverity severity, bool visible,
           bool fullScreen, bool forceShutdown, bool includeServiceNumber, bool shouldBeep,
           bool shouldBeepIfGuiding);

    /// An inactive, invisible error with problem code 0, failure mode 0 and low severity.
    explicit CError(CErrorDatabase& database);

    /// Copies everything, state and links included; the copy belongs to the same database.
    CError(const CError& other);

    /// Copies all but three flags: the target keeps its own IncludeServiceNumber, ShouldBeep and
    /// ShouldBeepIfGuiding, and stays with its own database.
    CError& operator=(const CError& other);

    ~CError();

    /// Module | sub-module | problem.
    int ProblemCode() const { return static_cast<int>(m_problemCode); }
    /// The module part of the problem code.
    EModuleIdentifier ModuleId() const { return static_cast<EModuleIdentifier>(m_problemCode & 0xFF0000U); }
    /// The sub-module part of the problem code.
    ESubModuleIdentifier SubModuleId() const
    {
        return static_cast<ESubModuleIdentifier>(m_problemCode & 0xFF00U);
    }
    /// The problem part of the problem code.
    EProblemIdentifier ProblemId() const { return static_cast<EProblemIdentifier>(m_problemCode & 0xFFU); }
    /// The failure mode: 0..21 of an error that was loaded, whatever the constructor was given of another.
    EProblemType ProblemType() const { return m_problemType; }

    /// What is wrong, for the driver.
    const std::string& ProblemText() const { return m_problemText; }
    /// Replaces what is wrong.
    void ProblemText(const std::string& text) { m_problemText = text; }
    /// What to do about it.
    const std::string& SolutionText() const { return m_solutionText; }
    /// Replaces what to do.
    void SolutionText(const std::string& text) { m_solutionText = text; }
    /// What is wrong, for small displays.
    const std::string& ShortProblemText() const { return m_shortProblemText; }
    /// Replaces the text for small displays.
    void ShortProblemText(const std::string& text) { m_shortProblemText = text; }
    /// Heading of the error's screen; may be empty.
    const std::string& TitleText() const { return m_titleText; }
    /// Replaces the heading.
    void TitleText(const std::string& text) { m_titleText = text; }

    /// Is the error shown at all?
    bool Visible() const { return m_visible; }
    /// True while the error is raised.
    bool Active() const { return m_active; }
    /// Is the error shown over the whole screen?
    bool FullScreen() const { return m_fullScreen; }
    /// Does the error force the console to shut down?
    bool ForceShutdown() const { return m_forceShutdown; }
    /// Is the number of the service shown with the error?
    bool IncludeServiceNumber() const { return m_includeServiceNumber; }
    /// Is a beep wanted when the error is raised?
    bool ShouldBeep() const { return m_shouldBeep; }
    /// Is a beep wanted when the error is raised while the vehicle is guiding?
    bool ShouldBeepIfGuiding() const { return m_shouldBeepIfGuiding; }

    /// Did a raise or clear request reach the error since the last CErrorDatabase::UpdateErrorTree()? A
    /// request counts even when it changed nothing; what follows from triggers does not count.
    bool Changed() const { return m_changed; }
    /// Sets or takes back the mark; the database does both.
    void Changed(bool changed);

    /// How bad the error is.
    EErrorSeverity Severity() const { return m_severity; }

    /// Size of the hierarchy below: 1 for a leaf, otherwise 1 plus the positions of all triggers. The error
    /// with the largest position in a group of linked errors is the group's top.
    int Position() const { return m_position; }

    /// The trigger sets in the order added; none for a leaf.
    const std::vector<CTriggerSet>& TriggerSets() const { return m_triggerSets; }

    /// The errors in whose trigger sets this one stands, once for each time it does.
    const std::list<CError*>& Parents() const { return m_parents; }
    /// For changing them. From then on the database takes the links between its errors as unsettled and looks
    /// at them whenever it rebuilds its lists.
    std::list<CError*>& Parents();

    /// Appends a copy of the set.
    void AddTriggerSet(const CTriggerSet& triggerSet);
    /// Appends a parent; duplicates are kept.
    /// @param parent  borrowed, not null
    void AddParent(CError* parent);

    /// Does any trigger set hold `error`? Direct links only, as in the next two.
    bool IsParentOf(const CError* error) const;
    /// Is `error` among the parents?
    bool IsChildOf(const CError* error) const;
    /// Is `error` a trigger or a parent of this one?
    bool IsRelatedTo(const CError* error) const;
    /// Has any trigger set this linking mode?
    bool ChildLinkingModePresent(EErrorLinkingMode mode) const;

    /// Sets the position to 1 plus the current positions of all triggers, each counted as often as it is
    /// listed; stops at the largest int.
    void RecalculatePosition();

    /// Makes the error active, whatever it was. Unless silent, reports it to the database and then calls
    /// ChildRaised on every parent in order.
    void Raise(bool silent);
    /// Makes the error inactive, whatever it was. Unless silent, reports it to the database and then calls
    /// ChildCleared on every parent in order.
    void Clear(bool silent);

    /// Raises this error (not silently) if it is inactive and any automatic set is satisfied by `child`.
    void ChildRaised(CError* child);
    /// Clears this error (not silently) if it is active, has automatic sets, and every one of them holds
    /// `child` and is no longer satisfied without it.
    void ChildCleared(CError* child);

private:
    bool AnyAutoSetRaised(const CError* child) const;
    bool EveryAutoSetCleared(const CError* child) const;

    std::uint32_t m_problemCode;
    EProblemType m_problemType;
    std::string m_problemText;
    std::string m_solutionText;
    std::string m_shortProblemText;
    std::string m_titleText;
    bool m_visible;
    bool m_active;
    bool m_fullScreen;
    bool m_forceShutdown;
    bool m_includeServiceNumber;
    bool m_shouldBeep;
    bool m_shouldBeepIfGuiding;
    bool m_changed;
    EErrorSeverity m_severity;
    int m_position;
    std::vector<CTriggerSet> m_triggerSets;
    std::list<CError*> m_parents; // not owned
    CErrorDatabase& m_database;
};

} // namespace Faultkeeper

#endif
