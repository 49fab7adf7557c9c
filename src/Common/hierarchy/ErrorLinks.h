#ifndef FAULTKEEPER_COMMON_HIERARCHY_ERRORLINKS_H
#define FAULTKEEPER_COMMON_HIERARCHY_ERRORLINKS_H

#include <Faultkeeper/Error.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Faultkeeper
{

/// For each of some numbered errors, those of them whose own lists of triggers and parents hold it.
///
/// `error.IsRelatedTo(member)` looks at the error's own lists; here the question is turned round, so that all
/// who would say yes for a member are found without asking. Kept in two arrays, in which a walk is quick.
/// Cost: linear in errors and links; what has been allocated is used again.
class CErrorLinks
{
public:
    typedef std::uint32_t Place; ///< number of an error, from 0

    static constexpr Place kNowhere = UINT32_MAX; ///< of an error that is not among the numbered ones

    /// Forgets all links, and starts anew for so many errors.
    void Begin(std::size_t places);

    /// Notes the links of one error's own lists.
    /// @param placeOf  tells the place of an error, or kNowhere
    template <typename PlaceOf> void Collect(const CError& error, Place place, const PlaceOf& placeOf)
    {
        for (const CTriggerSet& set : error.TriggerSets())
        {
            for (const CError* trigger : set.Triggers())
                Add(placeOf(trigger), place);
        }
        for (const CError* parent : error.Parents())
            Add(placeOf(parent), place);
    }

    /// Sorts what was collected. Only now the questions below are answered.
    void Finish();

    /// The places of the errors whose lists hold the error at that place, once for each time they do: from
    /// the first up to, but without, the end.
    const Place* FirstRelatedTo(Place place) const { return m_related.data() + m_starts[place]; }
    const Place* EndOfRelatedTo(Place place) const { return m_related.data() + m_starts[place + 1]; }

private:
    struct SLink
    {
        Place member;
        Place holder;
    };

    void Add(Place member, Place holder)
    {
        if (member == kNowhere)
            return;
        m_links.push_back({member, holder});
        ++m_starts[member];
    }

    std::vector<SLink> m_links;  // as collected
    std::vector<Place> m_starts; // by place: first in m_related, and one more for the end
    std::vector<Place> m_related;
};

} // namespace Faultkeeper

#endif
