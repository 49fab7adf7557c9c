#include <Faultkeeper/Error.h>

#include <Faultkeeper/ErrorDatabase.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Faultkeeper
{

CError::CError(CErrorDatabase& database, EModuleIdentifier module, ESubModuleIdentifier subModule,
               EProblemIdentifier problem, EProblemType type, EErrorSeverity severity, bool visible,
               bool fullScreen, bool forceShutdown, bool includeServiceNumber, bool shouldBeep,
               bool shouldBeepIfGuiding)
    : m_problemCode(static_cast<std::uint32_t>(module) | static_cast<std::uint32_t>(subModule) |
                    static_cast<std::uint32_t>(problem)),
      m_problemType(type), m_visible(visible), m_active(false), m_fullScreen(fullScreen),
      m_forceShutdown(forceShutdown), m_includeServiceNumber(includeServiceNumber), m_shouldBeep(shouldBeep),
      m_shouldBeepIfGuiding(shouldBeepIfGuiding), m_changed(false), m_severity(severity), m_position(1),
      m_database(database)
{
}

CError::CError(CErrorDatabase& database)
    : m_problemCode(0), m_problemType(static_cast<EProblemType>(0)), m_visible(false), m_active(false),
      m_fullScreen(false), m_forceShutdown(false), m_includeServiceNumber(false), m_shouldBeep(false),
      m_shouldBeepIfGuiding(false), m_changed(false), m_severity(eesLow), m_position(1), m_database(database)
{
}

CError::CError(const CError& other) = default;

// The flags that say how an error is announced belong to the definition in its place, not to the state that
// is carried over: screens rely on them staying put.
CError& CError::operator=(const CError& other)
{
    m_database.StateTouched(); // before the rest, which may run out of memory half-way
    m_database.LinksTouched();
    m_problemCode = other.m_problemCode;
    m_problemType = other.m_problemType;
    m_problemText = other.m_problemText;
    m_solutionText = other.m_solutionText;
    m_shortProblemText = other.m_shortProblemText;
    m_titleText = other.m_titleText;
    m_visible = other.m_visible;
    m_active = other.m_active;
    m_fullScreen = other.m_fullScreen;
    m_forceShutdown = other.m_forceShutdown;
    m_changed = other.m_changed;
    m_severity = other.m_severity;
    m_position = other.m_position;
    m_triggerSets = other.m_triggerSets;
    m_parents = other.m_parents;
    return *this;
}

CError::~CError() = default;

void CError::Changed(bool changed)
{
    m_changed = changed;
    m_database.StateTouched();
}

std::list<CError*>& CError::Parents()
{
    m_database.ParentsHandedOut(*this);
    return m_parents;
}

void CError::AddTriggerSet(const CTriggerSet& triggerSet)
{
    m_database.LinksTouched();
    m_triggerSets.push_back(triggerSet);
}

void CError::AddParent(CError* parent)
{
    m_database.LinksTouched();
    m_parents.push_back(parent);
}

bool CError::IsParentOf(const CError* error) const
{
    return std::any_of(m_triggerSets.begin(), m_triggerSets.end(),
                       [error](const CTriggerSet& set) { return set.HasTrigger(error); });
}

bool CError::IsChildOf(const CError* error) const
{
    return std::find(m_parents.begin(), m_parents.end(), error) != m_parents.end();
}

bool CError::IsRelatedTo(const CError* error) const
{
    return IsParentOf(error) || IsChildOf(error);
}

bool CError::ChildLinkingModePresent(EErrorLinkingMode mode) const
{
    return std::any_of(m_triggerSets.begin(), m_triggerSets.end(),
                       [mode](const CTriggerSet& set) { return set.LinkingMode() == mode; });
}

void CError::RecalculatePosition()
{
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
    std::int64_t position = 1;
    for (const CTriggerSet& set : m_triggerSets)
    {
        for (const CError* trigger : set.Triggers())
            position = std::min(position + trigger->m_position, kLargest);
    }
    m_position = static_cast<int>(position);
    m_database.StateTouched();
}

void CError::Raise(bool silent)
{
    m_active = true;
    m_database.StateTouched();
    if (silent)
        return;
    m_database.ErrorRaised(ProblemCode(), ProblemType());
    for (CError* parent : m_parents)
        parent->ChildRaised(this);
}

void CError::Clear(bool silent)
{
    m_active = false;
    m_database.StateTouched();
    if (silent)
        return;
    m_database.ErrorCleared(ProblemCode(), ProblemType());
    for (CError* parent : m_parents)
        parent->ChildCleared(this);
}

void CError::ChildRaised(CError* child)
{
    if (AnyAutoSetRaised(child) && !m_active)
        Raise(false);
}

void CError::ChildCleared(CError* child)
{
    if (EveryAutoSetCleared(child) && m_active)
        Clear(false);
}

bool CError::AnyAutoSetRaised(const CError* child) const
{
    bool raised = false;
    for (const CTriggerSet& set : m_triggerSets)
    {
        if (set.AutoTrigger())
            raised = set.Raised(child) || raised;
    }
    return raised;
}

bool CError::EveryAutoSetCleared(const CError* child) const
{
    bool anyAuto = false;
    bool allCleared = true;
    for (const CTriggerSet& set : m_triggerSets)
    {
        if (set.AutoTrigger())
        {
            anyAuto = true;
            allCleared = set.Cleared(child) && allCleared;
        }
    }
    return anyAuto && allCleared;
}

} // namespace Faultkeeper
