#include "faultkeeperctl/check/rules/Checks.h"

#include "faultkeeperctl/check/NearestErrors.h"
#include "faultkeeperctl/check/hierarchy/PatternMatches.h"

#include "common/text/TypedText.h"

#include <algorithm>
#include <set>

namespace Faultkeeper::Apps
{

namespace
{
/// @return true if each of them is defined
bool CheckIds(const SPatternModel& pattern, const SConfigurationModel& model, CNearestErrors& nearest,
              CFindings& findings)
{
    bool defined = true;
    for (const SReference& reference : pattern.ids)
    {
        defined = defined && reference.target != kNoError;
        if (model.LeadsNowhere(reference))
            findings.Warning(reference.place, UndefinedError(reference, nearest.To(reference.text)));
    }
    return defined;
}

void CheckRepeated(const SPatternModel& pattern, CFindings& findings)
{
    std::set<ErrorId> before;
    for (const SReference& reference : pattern.ids)
    {
        if (!reference.guessed && !before.insert(reference.id).second && pattern.partial)
            findings.Warning(reference.place, QuotedTyped(reference.text) +
                                                  " stands twice in this partial pattern, which makes "
                                                  "no difference");
    }
}

/// Patterns that were looked at, with what they match.
class CEarlierPatterns
{
public:
    /// @param pattern  borrowed
    void Add(const SPatternModel& pattern)
    {
        SEarlier earlier;
        earlier.pattern = &pattern;
        earlier.wanted = pattern.SortedIds();
        if (pattern.partial)
            earlier.wanted.erase(std::unique(earlier.wanted.begin(), earlier.wanted.end()),
                                 earlier.wanted.end());
        m_earlier.push_back(earlier);
    }

    /// @return the pattern that takes every list of errors that this one matches, or null
    const SPatternModel* Hiding(const SPatternModel& pattern) const
    {
        const Ids ids = pattern.SortedIds();
        const auto found =
            std::find_if(m_earlier.begin(), m_earlier.end(),
                         [&](const SEarlier& earlier) { return Hides(earlier, pattern, ids); });
        return found == m_earlier.end() ? nullptr : found->pattern;
    }

private:
    typedef std::vector<ErrorId> Ids; // sorted

    struct SEarlier
    {
        const SPatternModel* pattern;
        Ids wanted; // for a partial one each of them once
    };

    static bool Hides(const SEarlier& earlier, const SPatternModel& later, const Ids& ids)
    {
        if (!earlier.pattern->partial)
            return !later.partial && earlier.wanted == ids;
        return std::includes(ids.begin(), ids.end(), earlier.wanted.begin(), earlier.wanted.end());
    }

    std::vector<SEarlier> m_earlier;
};

/// Errors that are raised along stand in the same tree, or head it.
void CheckInTheWay(const SPatternModel& pattern, const std::vector<std::size_t>& inTheWay,
                   const SConfigurationModel& model, CFindings& findings)
{
    if (inTheWay.empty())
        return;
    const std::size_t more = inTheWay.size() - 1;
    const std::string others =
        more == 0 ? "" : " and " + std::to_string(more) + (more == 1 ? " other" : " others");
    findings.Warning(pattern.place, "this pattern matches only after \"" +
                                        model.errors[inTheWay.front()].Name() + "\"" + others +
                                        (more == 0 ? " was cleared on its own: these errors raise it"
                                                   : " were cleared on their own: these errors raise them"));
}

void CheckReachable(const SPatternModel& pattern, const CPatternMatches& matches,
                    const SConfigurationModel& model, CFindings& findings)
{
    if (pattern.ids.empty() && !pattern.partial)
        findings.Warning(pattern.place,
                         "this pattern has no ids and never matches: in every tree there is an "
                         "error");
    else if (pattern.partial && !matches.CanHold(pattern))
        findings.Warning(pattern.place, "this pattern never matches: no tree can hold all of these errors");
    else if (!pattern.partial && !matches.CanEqual(pattern))
        findings.Warning(pattern.place, "this pattern never matches: no tree can hold exactly these errors");
    else if (!pattern.partial)
        CheckInTheWay(pattern, matches.InTheWay(pattern), model, findings);
}
} // namespace

void CheckPatterns(const CHierarchy& hierarchy, CFindings& findings)
{
    const CPatternMatches matches(hierarchy);
    const SConfigurationModel& model = hierarchy.Model();
    CNearestErrors nearest(model.Names());
    const bool certain = hierarchy.Certain();
    CEarlierPatterns earlier;
    for (const SPatternModel& pattern : model.patterns)
    {
        const bool defined = CheckIds(pattern, model, nearest, findings);
        CheckRepeated(pattern, findings);
        if (pattern.doubtful)
            continue;
        const SPatternModel* const hiding = defined ? earlier.Hiding(pattern) : nullptr;
        earlier.Add(pattern);
        if (hiding != nullptr)
            findings.Warning(pattern.place, "this pattern never matches: the one in line " +
                                                std::to_string(hiding->place.line) +
                                                " stands before it and matches wherever it would");
        else if (certain && defined)
            CheckReachable(pattern, matches, model, findings);
    }
}

} // namespace Faultkeeper::Apps
