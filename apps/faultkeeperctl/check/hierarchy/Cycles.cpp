#include "faultkeeperctl/check/hierarchy/Cycles.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Faultkeeper::Apps
{

namespace
{
typedef CHierarchy::Errors Errors;

/// Finds the shortest cycles of single errors. Of several it takes the one with the smaller identifiers.
class CShortestCycles
{
public:
    /// @param hierarchy  borrowed
    explicit CShortestCycles(const CHierarchy& hierarchy);

    /// The errors that are on a cycle or above one, by their identifiers.
    const Errors& Candidates() const { return m_candidates; }

    /// A shortest cycle through the error, which it begins with; empty if there is none.
    Errors Through(std::size_t error);

private:
    bool Meet(std::size_t error, std::size_t first);

    std::vector<Errors> m_triggers; // without those that are on no cycle; by their identifiers, none twice
    Errors m_candidates;
    Errors m_from; // of the errors that were met, the one that they were met from
    Errors m_met;
};

CShortestCycles::CShortestCycles(const CHierarchy& hierarchy)
    : m_triggers(hierarchy.Model().errors.size()), m_from(m_triggers.size(), kNoError)
{
    const std::vector<SDefinition>& errors = hierarchy.Model().errors;
    const auto before = [&errors](std::size_t left, std::size_t right)
    { return errors[left].id != errors[right].id ? errors[left].id < errors[right].id : left < right; };
    std::vector<char> candidate(m_triggers.size(), 1);
    for (const std::size_t error : hierarchy.FromLeaves())
        candidate[error] = 0;
    for (std::size_t error = 0; error < m_triggers.size(); ++error)
    {
        if (candidate[error] == 0)
            continue;
        m_candidates.push_back(error);
        Errors& triggers = m_triggers[error];
        std::copy_if(hierarchy.Triggers(error).begin(), hierarchy.Triggers(error).end(),
                     std::back_inserter(triggers),
                     [&candidate](std::size_t trigger) { return candidate[trigger] != 0; });
        std::sort(triggers.begin(), triggers.end(), before);
        triggers.erase(std::unique(triggers.begin(), triggers.end()), triggers.end());
    }
    std::sort(m_candidates.begin(), m_candidates.end(), before);
}

/// Looks in all directions at once.
Errors CShortestCycles::Through(std::size_t error)
{
    m_met = {error};
    bool closed = false;
    for (std::size_t next = 0; next < m_met.size() && !closed; ++next)
        closed = Meet(m_met[next], error);
    Errors cycle;
    for (std::size_t on = m_from[error]; closed && on != error; on = m_from[on])
        cycle.push_back(on);
    if (closed)
        cycle.push_back(error);
    std::reverse(cycle.begin(), cycle.end());
    for (const std::size_t met : m_met)
        m_from[met] = kNoError;
    return cycle;
}

/// @return true if a trigger of the error is the first one
bool CShortestCycles::Meet(std::size_t error, std::size_t first)
{
    for (const std::size_t trigger : m_triggers[error])
    {
        if (m_from[trigger] != kNoError)
            continue;
        m_from[trigger] = error;
        if (trigger == first)
            return true;
        m_met.push_back(trigger);
    }
    return false;
}

/// The errors that are on cycles, those on short ones first, so that few are left for the long ones.
Errors ShortFirst(CShortestCycles& shortest)
{
    std::vector<std::pair<std::size_t, std::size_t>> lengths;
    for (const std::size_t error : shortest.Candidates())
    {
        const std::size_t length = shortest.Through(error).size();
        if (length != 0)
            lengths.emplace_back(length, error);
    }
    std::stable_sort(lengths.begin(), lengths.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    Errors errors;
    for (const auto& length : lengths)
        errors.push_back(length.second);
    return errors;
}
} // namespace

std::vector<Errors> FindCycles(const CHierarchy& hierarchy)
{
    CShortestCycles shortest(hierarchy);
    std::vector<Errors> cycles;
    std::vector<char> covered(hierarchy.Model().errors.size(), 0);
    for (const std::size_t uncovered : ShortFirst(shortest))
    {
        if (covered[uncovered] != 0)
            continue;
        Errors cycle = shortest.Through(uncovered);
        for (const std::size_t error : cycle)
            covered[error] = 1;
        std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end()), cycle.end());
        cycles.push_back(std::move(cycle));
    }
    return cycles;
}

} // namespace Faultkeeper::Apps
