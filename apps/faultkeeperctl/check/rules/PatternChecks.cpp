#include "faultkeeperctl/check/rules/Checks.h"

#include "faultkeeperctl/check/rules/PatternMatches.h"

#include "common/text/TypedText.h"

#include <algorithm>
#include <set>

namespace Faultkeeper::Apps
{

namespace
{
/// @return true if each of them is defined
bool CheckIds(const SPatternModel& pattern, const SConfigurationModel& model, CFindings& findings)
{
    bool defined = true;
    for (const SReference& reference : pattern.ids)
    {
        defined = defined && reference.target != kNoError;
        if (model.LeadsNowhere(reference))
            findings.Warning(reference.place, UndefinedError(reference, model));
    }
    return defined;
}

void CheckRepeated(const SPatternModel& pattern, CFindings& findings)
{
    std::set<ErrorId> before;
    for (const SReference& reference : pattern.ids)
    {
        if (!before.insert(reference.id).second && pattern.partial)
            findings.Warning(reference.place, QuotedTyped(reference.text) +
                                                  " stands twice in this partial pattern, which makes "
                                                  "no difference");
    }
}

/// Would every list of errors that the later one matches be taken by the earlier one?
bool Hides(const SPatternModel& earlier, const SPatternModel& later)
{
    const std::vector<ErrorId> first = earlier.SortedIds();
    const std::vector<ErrorId> second = later.SortedIds();
    if (!earlier.partial)
        return !later.partial && first == second;
    const std::set<ErrorId> wanted(first.begin(), first.end());
    return std::includes(second.begin(), second.end(), wanted.begin(), wanted.end());
}

/// @return the pattern that hides this one, or null
const SPatternModel* HiddenBy(const std::vector<SPatternModel>& patterns, const SPatternModel& pattern)
{
    for (const SPatternModel& earlier : patterns)
    {
        if (&earlier == &pattern)
            break;
        if (!earlier.doubtful && Hides(earlier, pattern))
            return &earlier;
    }
    return nullptr;
}

void CheckReachable(const SPatternModel& pattern, const CPatternMatches& matches, CFindings& findings)
{
    if (pattern.ids.empty() && !pattern.partial)
        findings.Warning(pattern.place,
                         "this pattern has no ids and never matches: in every tree there is an "
                         "error");
    else if (pattern.partial && !matches.CanHold(pattern))
        findings.Warning(pattern.place, "this pattern never matches: no tree can hold all of these errors");
    else if (!pattern.partial && !matches.CanEqual(pattern))
        findings.Warning(pattern.place, "this pattern never matches: no tree can hold exactly these errors");
}
} // namespace

void CheckPatterns(const CHierarchy& hierarchy, CFindings& findings)
{
    const CPatternMatches matches(hierarchy);
    const SConfigurationModel& model = hierarchy.Model();
    for (const SPatternModel& pattern : model.patterns)
    {
        const bool defined = CheckIds(pattern, model, findings);
        CheckRepeated(pattern, findings);
        if (pattern.doubtful || !defined)
            continue;
        const SPatternModel* const hiding = HiddenBy(model.patterns, pattern);
        if (hiding != nullptr)
            findings.Warning(pattern.place, "this pattern never matches: the one in line " +
                                                std::to_string(hiding->place.line) +
                                                " stands before it and matches wherever it would");
        else if (hierarchy.Certain())
            CheckReachable(pattern, matches, findings);
    }
}

} // namespace Faultkeeper::Apps
