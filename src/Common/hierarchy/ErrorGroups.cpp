#include "Common/hierarchy/ErrorGroups.h"

#include <functional>

namespace Faultkeeper
{

void CErrorGroups::Group(const std::list<const CError*>& errors, std::list<const CError*>& tops)
{
    Forget(); // what a call that ran out of memory may have left
    List(errors);
    CollectLinks();
    m_waits.assign(m_listed.size(), 1);
    m_grouping.FindTops(m_waits, m_tops);
    tops.assign(m_tops.begin(), m_tops.end());
    Forget();
}

void CErrorGroups::List(const std::list<const CError*>& errors)
{
    for (const CError* error : errors)
    {
        m_listed.push_back(error);
        Place& place = PlaceOf(error);
        if (place == CErrorLinks::kNowhere)
            place = static_cast<Place>(m_listed.size() - 1);
        m_firstPlaces.push_back(place);
    }
    m_grouping.Repeated(m_firstPlaces);
}

void CErrorGroups::Forget()
{
    for (const CError* error : m_listed)
    {
        if (Own(error))
            PlaceOf(error) = CErrorLinks::kNowhere;
    }
    m_strangers.clear();
    m_listed.clear();
    m_firstPlaces.clear();
}

void CErrorGroups::CollectLinks()
{
    m_links.Begin(m_listed.size());
    m_positions.clear();
    Place place = 0;
    for (const CError* error : m_listed)
    {
        m_positions.push_back(error->Position());
        m_links.Collect(*error, place++, [this](const CError* other) { return FindPlace(other); });
    }
    m_links.Finish();
}

CErrorLinks::Place& CErrorGroups::PlaceOf(const CError* error)
{
    if (Own(error))
        return m_ownPlaces[static_cast<std::size_t>(error - m_own.data())];
    return m_strangers.emplace(error, CErrorLinks::kNowhere).first->second;
}

CErrorLinks::Place CErrorGroups::FindPlace(const CError* error) const
{
    if (Own(error))
        return m_ownPlaces[static_cast<std::size_t>(error - m_own.data())];
    const auto found = m_strangers.find(error);
    return found == m_strangers.end() ? CErrorLinks::kNowhere : found->second;
}

bool CErrorGroups::Own(const CError* error) const
{
    const std::less<const CError*> before; // also orders pointers to different arrays
    return !m_own.empty() && !before(error, m_own.data()) && before(error, m_own.data() + m_own.size());
}

} // namespace Faultkeeper
