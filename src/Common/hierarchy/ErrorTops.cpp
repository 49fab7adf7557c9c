#include "Common/hierarchy/ErrorTops.h"

#include <algorithm>
#include <cstddef>
#include <functional>

namespace Faultkeeper
{

namespace
{
constexpr int kActiveBit = 1;
constexpr int kChangedBit = 2;

char StateOf(const CError& error)
{
    return static_cast<char>((error.Active() ? kActiveBit : 0) | (error.Changed() ? kChangedBit : 0));
}
} // namespace

CErrorTops::CErrorTops(std::vector<CError>& errors, const Index& index)
    : m_errors(errors), m_places(errors.size(), CErrorLinks::kNowhere),
      m_grouping(m_listed, m_positions, m_links)
{
    m_listed.reserve(index.size());
    for (const auto& entry : index)
    {
        const std::size_t position = static_cast<std::size_t>(entry.second);
        m_places[position] = static_cast<Place>(m_listed.size());
        m_listed.push_back(&m_errors[position]);
    }
}

void CErrorTops::Take()
{
    if (!m_linksKnown)
        CollectLinks();
    m_states.resize(m_listed.size());
    m_positions.resize(m_listed.size());
    for (std::size_t place = 0; place < m_listed.size(); ++place)
    {
        m_states[place] = StateOf(*m_listed[place]);
        m_positions[place] = m_listed[place]->Position();
    }
}

void CErrorTops::CollectLinks()
{
    const auto placeOf = [this](const CError* error)
    {
        const std::less<const CError*> before; // a link made by hand may lead anywhere
        const CError* const first = m_errors.data();
        const bool own = !before(error, first) && before(error, first + m_errors.size());
        return own ? m_places[static_cast<std::size_t>(error - first)] : CErrorLinks::kNowhere;
    };
    m_links.Begin(m_listed.size());
    Place place = 0;
    for (const CError* error : m_listed)
        m_links.Collect(*error, place++, placeOf);
    m_links.Finish();
    m_linksKnown = true;
}

void CErrorTops::Group(bool active, bool changedOnly, std::list<const CError*>& tops)
{
    const int mask = kActiveBit | (changedOnly ? kChangedBit : 0);
    const int wanted = (active ? kActiveBit : 0) | (changedOnly ? kChangedBit : 0);
    m_waits.resize(m_states.size());
    std::transform(m_states.begin(), m_states.end(), m_waits.begin(),
                   [mask, wanted](char state) { return (state & mask) == wanted ? 1 : 0; });
    m_grouping.FindTops(m_waits, m_tops);
    PutTopsInto(tops);
}

/// What one list gives up the others take, so that nothing is allocated once all have been at their longest.
void CErrorTops::PutTopsInto(std::list<const CError*>& tops)
{
    auto place = tops.begin();
    for (const CError* top : m_tops)
    {
        if (place == tops.end())
            place = AppendNode(tops);
        *place++ = top;
    }
    m_spareNodes.splice(m_spareNodes.end(), tops, place, tops.end());
}

std::list<const CError*>::iterator CErrorTops::AppendNode(std::list<const CError*>& tops)
{
    if (m_spareNodes.empty())
        return tops.insert(tops.end(), nullptr);
    const auto node = m_spareNodes.begin();
    tops.splice(tops.end(), m_spareNodes, node);
    return node;
}

void CErrorTops::TakeBackMarks()
{
    for (std::size_t place = 0; place < m_states.size(); ++place)
    {
        if ((m_states[place] & kChangedBit) != 0)
            m_errors[static_cast<std::size_t>(m_listed[place] - m_errors.data())].Changed(false);
    }
}

} // namespace Faultkeeper
