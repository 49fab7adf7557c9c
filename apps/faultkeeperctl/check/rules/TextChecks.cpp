#include "faultkeeperctl/check/rules/Checks.h"

#include "faultkeeperctl/check/hierarchy/TreeContents.h"
#include "faultkeeperctl/check/rules/Markup.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/text/TextWidth.h"

#include "Common/database/ConfigurationFormat.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace Faultkeeper::Apps
{

namespace
{
// All characters that count as white space, in UTF-8.
const char* const kBlanks[] = {" ",
                               "\t",
                               "\n",
                               "\r",
                               "\xC2\x85",
                               "\xC2\xA0",
                               "\xE1\x9A\x80",
                               "\xE2\x80\x80",
                               "\xE2\x80\x81",
                               "\xE2\x80\x82",
                               "\xE2\x80\x83",
                               "\xE2\x80\x84",
                               "\xE2\x80\x85",
                               "\xE2\x80\x86",
                               "\xE2\x80\x87",
                               "\xE2\x80\x88",
                               "\xE2\x80\x89",
                               "\xE2\x80\x8A",
                               "\xE2\x80\xA8",
                               "\xE2\x80\xA9",
                               "\xE2\x80\xAF",
                               "\xE2\x81\x9F",
                               "\xE3\x80\x80"};

/// Bytes of the blank that starts at a position; 0 if there is none.
std::size_t BlankBytes(const std::string& text, std::size_t start)
{
    for (const char* const blank : kBlanks)
    {
        const std::size_t bytes = std::strlen(blank);
        if (text.compare(start, bytes, blank) == 0)
            return bytes;
    }
    return 0;
}

bool IsBlank(const std::string& text)
{
    std::size_t end = 0;
    while (end < text.size())
    {
        const std::size_t bytes = BlankBytes(text, end);
        if (bytes == 0)
            return false;
        end += bytes;
    }
    return true;
}

int WidestLine(const std::string& text)
{
    int widest = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        widest = std::max(widest, DisplayWidth(line));
    return widest;
}

void CheckText(const std::string& type, const STextModel& text, int lineWidth, CFindings& findings)
{
    const std::string name = "the text \"" + type + "\"";
    const std::string markup = MarkupIn(text.text);
    const int width = lineWidth == 0 ? 0 : WidestLine(text.text);
    if (!text.text.empty() && IsBlank(text.text))
        findings.Warning(text.place, name + " has nothing but blanks in it");
    if (!markup.empty())
        findings.Warning(text.place, name + " has markup in it, which screens show as it stands: " + "\"" +
                                         WithoutControls(markup) + "\"");
    if (width > lineWidth)
        findings.Warning(text.place, name + " is " + std::to_string(width) + " columns wide, a line has " +
                                         std::to_string(lineWidth));
}

/// Notices of low severity do without a headline. A misspelled one is told where it stands.
bool LacksTitle(const SDefinition& error)
{
    return error.severity > eesLow && !error.MayHaveTitle();
}

/// Marks those that satisfy the set on their own, or may have been meant to.
void MarkRaising(const CHierarchy::SSet& set, std::vector<char>& raising)
{
    const bool mayRaise = set.model->autoTrigger || set.model->Doubts(ConfigurationFormat::kAutoTrigger);
    const bool anyNumber = set.model->Doubts(ConfigurationFormat::kTriggersNeeded);
    CHierarchy::Errors triggers = set.triggers;
    std::sort(triggers.begin(), triggers.end());
    for (auto first = triggers.begin(); mayRaise && first != triggers.end();)
    {
        const auto last = std::upper_bound(first, triggers.end(), *first);
        if (anyNumber || set.model->needed <= last - first)
            raising[*first] = 1;
        first = last;
    }
}

/// For each error, whether it raises a parent on its own, so that it never heads a tree unless the parent is
/// cleared, or whether only a slip that was told keeps it from that.
std::vector<char> FindRaising(const CHierarchy& hierarchy)
{
    std::vector<char> raising(hierarchy.Model().errors.size(), 0);
    for (std::size_t error = 0; error < raising.size(); ++error)
    {
        for (const CHierarchy::SSet& set : hierarchy.Sets(error))
            MarkRaising(set, raising);
    }
    return raising;
}

/// For each error, whether a misspelled trigger was probably meant to name it.
std::vector<char> FindMeant(const SConfigurationModel& model)
{
    std::vector<char> meant(model.errors.size(), 0);
    for (const SDefinition& error : model.errors)
    {
        for (const STriggerSetModel& set : error.sets)
        {
            for (const SReference& trigger : set.triggers)
            {
                if (trigger.meant != kNoError)
                    meant[trigger.meant] = 1;
            }
        }
    }
    return meant;
}

/// What stands below another may borrow its title.
void CheckTitle(const CHierarchy& hierarchy, std::size_t error, CFindings& findings)
{
    const SDefinition& definition = hierarchy.Model().errors[error];
    if (definition.visible && LacksTitle(definition))
        findings.Warning(
            definition.place,
            std::string("this \"Error\" is visible but has no text \"title\"") +
                (hierarchy.Parents(error).empty() ? "" : ", which it needs where no parent is active"));
}

/// A set that takes several triggers has no title of theirs while it raises its error: two clear it.
bool TakesTitleOfOne(const STriggerSetModel& set)
{
    return set.title == eetsTrigger && set.doubtful.empty() && (!set.autoTrigger || set.needed <= 1);
}

/// A title from further below takes the place of the one that is missing.
void CheckTitlesOfTriggers(const SConfigurationModel& model, const STriggerSetModel& set,
                           const std::vector<char>& titlesBelow, CFindings& findings)
{
    for (const SReference& trigger : set.triggers)
    {
        if (trigger.target == kNoError || (set.linking != eelmShallow && titlesBelow[trigger.target] != 0))
            continue;
        const SDefinition& definition = model.errors[trigger.target];
        if (LacksTitle(definition))
            findings.Warning(trigger.place, QuotedTyped(trigger.text) +
                                                " has no text \"title\", which this set's trees are to be "
                                                "headed with: they are headed with the error's own");
    }
}
} // namespace

void CheckTexts(const CHierarchy& hierarchy, int lineWidth, CFindings& findings)
{
    const SConfigurationModel& model = hierarchy.Model();
    const bool allLinks = model.KnowsAllLinks(); // one that is missing may raise a parent of any error
    const std::vector<char> meant = FindMeant(model);
    const std::vector<char> raising = FindRaising(hierarchy);
    const std::vector<char> shown = FindShown(hierarchy, false);
    const std::vector<char> titlesBelow = FindTitlesBelow(hierarchy);
    for (std::size_t error = 0; error < model.errors.size(); ++error)
    {
        for (const auto& text : model.errors[error].texts)
            CheckText(text.first, text.second, lineWidth, findings);
        if (allLinks && meant[error] == 0 && raising[error] == 0 && !model.IsReplaced(error))
            CheckTitle(hierarchy, error, findings);
        for (const STriggerSetModel& set : model.errors[error].sets)
        {
            if (shown[error] != 0 && TakesTitleOfOne(set))
                CheckTitlesOfTriggers(model, set, titlesBelow, findings);
        }
    }
}

} // namespace Faultkeeper::Apps
