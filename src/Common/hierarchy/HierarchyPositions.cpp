#include "Common/hierarchy/HierarchyPositions.h"

#include <Faultkeeper/Error.h>

#include <algorithm>
#include <utility>

namespace Faultkeeper
{

namespace
{
bool IdentifierLess(const CError* left, const CError* right)
{
    return std::make_pair(left->ProblemCode(), static_cast<int>(left->ProblemType())) <
           std::make_pair(right->ProblemCode(), static_cast<int>(right->ProblemType()));
}
} // namespace

CHierarchyPositions::CHierarchyPositions(std::vector<CError>& errors)
    : m_errors(errors), m_open(errors.size(), 0), m_settled(errors.size(), 0), m_aboveLeaf(errors.size(), 0),
      m_wayStep(errors.size(), 0)
{
}

std::vector<const CError*> CHierarchyPositions::Calculate()
{
    std::vector<const CError*> cyclic;
    CountLinks();
    MarkAboveLeaves();
    SettleReady();
    // Whatever still waits stands on a cycle or above one: name the cycle, cut it there, and go on.
    for (const CError* error = FindOnCycle(); error != nullptr; error = FindOnCycle())
    {
        cyclic.push_back(error);
        m_ready.push_back(PlaceOf(error));
        SettleReady();
    }
    return cyclic;
}

std::size_t CHierarchyPositions::PlaceOf(const CError* error) const
{
    return static_cast<std::size_t>(error - m_errors.data());
}

void CHierarchyPositions::CountLinks()
{
    for (const CError& error : m_errors)
    {
        for (const CError* parent : error.Parents())
            ++m_open[PlaceOf(parent)];
    }
    for (std::size_t place = 0; place < m_open.size(); ++place)
    {
        if (m_open[place] == 0)
            m_ready.push_back(place);
    }
}

/// An error whose sets are all empty is no leaf: nothing is counted from it upward.
void CHierarchyPositions::MarkAboveLeaves()
{
    std::vector<const CError*> below;
    for (const CError& error : m_errors)
    {
        if (error.TriggerSets().empty())
            below.push_back(&error);
    }
    while (!below.empty())
    {
        const CError* const error = below.back();
        below.pop_back();
        for (const CError* parent : error->Parents())
        {
            if (!m_aboveLeaf[PlaceOf(parent)])
                below.push_back(parent);
            m_aboveLeaf[PlaceOf(parent)] = 1;
        }
    }
}

void CHierarchyPositions::SettleReady()
{
    while (!m_ready.empty())
    {
        const std::size_t place = m_ready.back();
        m_ready.pop_back();
        Settle(place);
    }
}

void CHierarchyPositions::Settle(std::size_t place)
{
    m_settled[place] = 1;
    if (m_wayStep[place] != 0)
        m_goodSteps = std::min(m_goodSteps, m_wayStep[place] - 1);
    if (m_aboveLeaf[place])
        m_errors[place].RecalculatePosition();
    for (const CError* parent : std::as_const(m_errors[place]).Parents())
    {
        const std::size_t above = PlaceOf(parent);
        if (--m_open[above] == 0 && !m_settled[above])
            m_ready.push_back(above);
    }
}

/// The error with the least identifier on one of the cycles that are left, or null. Going down from an error
/// that waits to one that it waits for must come round; the next search goes on where this one has come to.
const CError* CHierarchyPositions::FindOnCycle()
{
    LeaveSettled();
    if (m_way.empty() && !FindStart())
        return nullptr;
    const CError* next = WaitedFor(m_way.back());
    for (; m_wayStep[PlaceOf(next)] == 0; next = WaitedFor(next))
        TakeStep(next);
    const auto cycle = m_way.begin() + static_cast<std::ptrdiff_t>(m_wayStep[PlaceOf(next)] - 1);
    return *std::min_element(cycle, m_way.end(), IdentifierLess);
}

/// Begins a way at the first error that waits.
/// @return false if none does
bool CHierarchyPositions::FindStart()
{
    while (m_firstWaiting < m_errors.size() && m_settled[m_firstWaiting])
        ++m_firstWaiting;
    if (m_firstWaiting == m_errors.size())
        return false;
    TakeStep(&m_errors[m_firstWaiting]);
    return true;
}

void CHierarchyPositions::TakeStep(const CError* error)
{
    m_way.push_back(error);
    m_goodSteps = m_way.size();
    m_wayStep[PlaceOf(error)] = m_way.size();
}

/// Goes back on the way to where nothing has been settled yet.
void CHierarchyPositions::LeaveSettled()
{
    for (; m_way.size() > m_goodSteps; m_way.pop_back())
        m_wayStep[PlaceOf(m_way.back())] = 0;
}

/// A trigger that is not settled. An error that is not settled has one.
const CError* CHierarchyPositions::WaitedFor(const CError* error) const
{
    for (const CTriggerSet& set : error->TriggerSets())
    {
        for (const CError* trigger : set.Triggers())
        {
            if (!m_settled[PlaceOf(trigger)])
                return trigger;
        }
    }
    return nullptr;
}

} // namespace Faultkeeper
