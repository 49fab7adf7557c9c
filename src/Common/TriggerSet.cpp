#include <Faultkeeper/TriggerSet.h>

#include <Faultkeeper/Error.h>

#include <algorithm>

namespace Faultkeeper
{

CTriggerSet::CTriggerSet(bool autoTrigger, int triggersRequired, EErrorLinkingMode linkingMode,
                         EErrorTitleSource titleSource)
    : m_autoTrigger(autoTrigger), m_triggersRequired(triggersRequired), m_linkingMode(linkingMode),
      m_titleSource(titleSource)
{
}

void CTriggerSet::AddTrigger(CError* trigger)
{
    m_triggers.push_back(trigger);
}

bool CTriggerSet::HasTrigger(const CError* error) const
{
    return std::find(m_triggers.begin(), m_triggers.end(), error) != m_triggers.end();
}

bool CTriggerSet::Raised(const CError* child) const
{
    bool found = false;
    int active = 0;
    for (const CError* trigger : m_triggers)
    {
        found = found || trigger == child;
        if (trigger == child || trigger->Active())
            ++active;
    }
    return found && m_triggersRequired <= active;
}

bool CTriggerSet::Cleared(const CError* child) const
{
    bool found = false;
    int active = 0;
    for (const CError* trigger : m_triggers)
    {
        if (trigger == child)
            found = true;
        else if (trigger->Active())
            ++active;
    }
    return found && m_triggersRequired > active;
}

} // namespace Faultkeeper
