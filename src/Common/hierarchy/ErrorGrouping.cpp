#include "Common/hierarchy/ErrorGrouping.h"

#include <algorithm>

namespace Faultkeeper
{

void CErrorGrouping::FindTops(std::vector<char>& waits, Errors& tops)
{
    tops.clear();
    m_next.clear(); // a call that ran out of memory may have left some
    for (auto first = std::find(waits.begin(), waits.end(), 1); first != waits.end();
         first = std::find(first, waits.end(), 1))
        tops.push_back(m_errors[TopOfGroup(waits, static_cast<Place>(first - waits.begin()))]);
}

CErrorGrouping::Place CErrorGrouping::TopOfGroup(std::vector<char>& waits, Place first)
{
    Place top = first;
    waits[first] = 0;
    m_pass.assign(1, first);
    while (!m_pass.empty())
    {
        JoinPass(waits);
        top = BetterTop(top);
        StartNextPass(waits);
    }
    return top;
}

/// Lets everything join that joins in the same pass as its first members.
void CErrorGrouping::JoinPass(std::vector<char>& waits)
{
    for (std::size_t i = 0; i < m_pass.size(); ++i)
    {
        const Place member = m_pass[i];
        const Place* const end = m_links.EndOfRelatedTo(PlaceOfLinks(member));
        for (const Place* related = m_links.FirstRelatedTo(PlaceOfLinks(member)); related != end; ++related)
        {
            const Place place = *related;
            if (waits[place] == 0)
                continue;
            if (place < member)
            {
                m_next.push_back(place);
                continue;
            }
            waits[place] = 0;
            m_pass.push_back(place);
        }
    }
}

void CErrorGrouping::StartNextPass(std::vector<char>& waits)
{
    m_pass.clear();
    for (const Place place : m_next)
    {
        if (waits[place] != 0)
            m_pass.push_back(place);
        waits[place] = 0;
    }
    m_next.clear();
}

/// The member of this pass that takes the top's place, or the top. Of equals within a pass the earlier in the
/// list was met first.
CErrorGrouping::Place CErrorGrouping::BetterTop(Place top) const
{
    int largest = m_positions[top];
    Place best = CErrorLinks::kNowhere;
    for (const Place member : m_pass)
    {
        const int position = m_positions[member];
        const bool earlierOfEquals = position == largest && best != CErrorLinks::kNowhere && member < best;
        if (position > largest || earlierOfEquals)
        {
            largest = position;
            best = member;
        }
    }
    return best == CErrorLinks::kNowhere ? top : best;
}

/// Of an error that stands at several places, the links are at the first.
CErrorGrouping::Place CErrorGrouping::PlaceOfLinks(Place place) const
{
    return m_firstPlaces == nullptr ? place : (*m_firstPlaces)[place];
}

} // namespace Faultkeeper
