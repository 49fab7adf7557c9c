#include "faultkeeperctl/check/rules/Checks.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/text/TextWidth.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace Faultkeeper::Apps
{

namespace
{
constexpr const char* kTitle = "title";

/// What a screen shows as it stands, although the author meant something else by it: tags, the beginnings of
/// comments and of raw text, entities and escapes.
std::string MarkupIn(const std::string& text)
{
    // no part of it may be tried again and again: texts come from outside and may be long
    static const std::regex markup(
        "</?[A-Za-z][A-Za-z0-9]{0,20}"
        "(\\s{1,3}[A-Za-z][A-Za-z0-9:_-]{0,30}\\s{0,3}=[^<>]{0,200})?\\s?/?>|" // "a <b and c> d" is none
        "<!--|<!\\[CDATA\\[|"
        "&(#x?[0-9A-Fa-f]{1,6}|[A-Za-z][A-Za-z0-9]{1,9});|\\\\[nrt]");
    std::smatch match;
    return std::regex_search(text, match, markup) ? match.str() : "";
}

bool IsBlank(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\n' || c == '\t'; });
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

bool HasTitle(const SDefinition& error)
{
    return error.texts.count(kTitle) != 0;
}

/// Notices of low severity do without a headline.
void CheckTitle(const SDefinition& error, CFindings& findings)
{
    if (error.visible && error.severity > eesLow && !HasTitle(error))
        findings.Warning(error.place, "this \"Error\" is visible but has no text \"title\"");
}

} // namespace

void CheckTexts(const CHierarchy& hierarchy, int lineWidth, CFindings& findings)
{
    const std::vector<SDefinition>& errors = hierarchy.Model().errors;
    for (std::size_t error = 0; error < errors.size(); ++error)
    {
        for (const auto& text : errors[error].texts)
            CheckText(text.first, text.second, lineWidth, findings);
        // what stands below another may borrow its title
        if (hierarchy.Parents(error).empty())
            CheckTitle(errors[error], findings);
    }
}

} // namespace Faultkeeper::Apps
