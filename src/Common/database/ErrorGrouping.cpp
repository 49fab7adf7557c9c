#include "Common/database/ErrorGrouping.h"

#include <Faultkeeper/Error.h>

#include <algorithm>

namespace Faultkeeper
{

CErrorGrouping::CErrorGrouping(const std::list<const CError*>& errors)
    : m_errors(errors.begin(), errors.end()), m_visited(m_errors.size(), 0)
{
    m_related.reserve(m_errors.size());
    for (const CError* error : m_errors)
        m_related[error]; // links are kept for listed errors only
    CollectLinks();
}

void CErrorGrouping::FindTops(std::list<const CError*>& tops)
{
    for (std::size_t place = 0; place < m_errors.size(); ++place)
    {
        if (!m_visited[place])
            tops.push_back(TopOfGroup(place));
    }
}

void CErrorGrouping::CollectLinks()
{
    for (std::size_t place = 0; place < m_errors.size(); ++place)
    {
        for (const CTriggerSet& set : m_errors[place]->TriggerSets())
        {
            for (const CError* trigger : set.Triggers())
                AddLink(trigger, place);
        }
        for (const CError* parent : m_errors[place]->Parents())
            AddLink(parent, place);
    }
}

void CErrorGrouping::AddLink(const CError* target, std::size_t place)
{
    const auto found = m_related.find(target);
    if (found != m_related.end())
        found->second.push_back(place);
}

const CError* CErrorGrouping::TopOfGroup(std::size_t first)
{
    Places pass(1, first);
    Places next;
    m_visited[first] = 1;
    m_top = first;
    while (!pass.empty())
    {
        JoinPass(pass, next);
        // Of equals within a pass the earlier in the list was met first.
        std::sort(pass.begin(), pass.end());
        for (const std::size_t member : pass)
            ChooseTop(member);
        pass.clear();
        for (const std::size_t place : next)
        {
            if (!m_visited[place])
                pass.push_back(place);
            m_visited[place] = 1;
        }
        next.clear();
    }
    return m_errors[m_top];
}

/// Lets everything join that joins in the same pass as the given members; what joins in the next pass goes to
/// `next`.
void CErrorGrouping::JoinPass(Places& pass, Places& next)
{
    for (std::size_t i = 0; i < pass.size(); ++i)
    {
        const std::size_t member = pass[i];
        for (const std::size_t place : m_related[m_errors[member]])
        {
            if (m_visited[place])
                continue;
            if (place < member)
            {
                next.push_back(place);
                continue;
            }
            m_visited[place] = 1;
            pass.push_back(place);
        }
    }
}

void CErrorGrouping::ChooseTop(std::size_t candidate)
{
    if (m_errors[candidate]->Position() > m_errors[m_top]->Position())
        m_top = candidate;
}

} // namespace Faultkeeper
