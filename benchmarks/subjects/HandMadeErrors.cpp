#include "subjects/HandMadeErrors.h"

#include "subjects/MeasuredIds.h"

namespace Benchmarks
{

using namespace Faultkeeper;

CHandMadeErrors::CHandMadeErrors(EShape shape, std::size_t errors, ELinking linking)
    : m_database("/nonexistent/")
{
    const Shape hierarchy = MakeShape(shape, errors);
    m_errors.reserve(errors);
    for (const SMeasuredId& id : MakeIds(errors))
        m_errors.emplace_back(m_database, id.module, id.subModule, id.problem, id.type, eesHigh, true, false,
                              false, false, false, false);
    for (std::size_t owner = 0; owner < errors; ++owner)
    {
        for (const SMeasuredSet& set : hierarchy[owner])
            Link(owner, set, linking);
    }
}

void CHandMadeErrors::Link(std::size_t owner, const SMeasuredSet& set, ELinking linking)
{
    CTriggerSet made(set.autoTrigger, 1, set.linkingMode, set.titleSource);
    for (const std::size_t trigger : set.triggers)
    {
        made.AddTrigger(&m_errors[trigger]);
        if (linking != elTriggersOnly)
            m_errors[trigger].AddParent(&m_errors[owner]);
    }
    if (linking != elParentsOnly)
        m_errors[owner].AddTriggerSet(made);
}

} // namespace Benchmarks
