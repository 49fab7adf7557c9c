#include "Common/hierarchy/ErrorLinks.h"

namespace Faultkeeper
{

void CErrorLinks::Begin(std::size_t places)
{
    m_links.clear();
    m_starts.assign(places + 1, 0); // counts the links of each place until Finish
}

/// Counting sort by the member that is held.
void CErrorLinks::Finish()
{
    Place end = 0;
    for (Place& start : m_starts)
    {
        end += start;
        start = end; // one past the member's last; filling goes down from there
    }
    m_related.resize(m_links.size());
    for (auto link = m_links.rbegin(); link != m_links.rend(); ++link)
        m_related[--m_starts[link->member]] = link->holder;
}

} // namespace Faultkeeper
