#include "faultkeeperctl/graph/HierarchyGraph.h"

#include "common/text/ErrorNames.h"
#include "common/text/TypedText.h"
#include "faultkeeperctl/reasons/SetStates.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/Identifiers.h>

#include <cstddef>
#include <map>

namespace Faultkeeper::Apps
{

namespace
{
// In the order of severities; readable below black letters.
constexpr const char* kColours[] = {"#cfe2f3", "#fff2cc", "#f6b26b", "#ea9999"};
constexpr const char* kNoColour = "#ffffff";
constexpr const char* kSatisfiedColour = "#d9d9d9";

constexpr const char* kHead = "digraph hierarchy {\n"
                              "    rankdir=LR;\n"
                              "    node [fontname=\"Helvetica\", fontsize=10, shape=box, style=filled, "
                              "fillcolor=\"#ffffff\"];\n"
                              "    edge [fontname=\"Helvetica\", fontsize=9, arrowsize=0.6];\n";

std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : WithoutControls(text))
        quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return quoted + "\"";
}

std::string NodeOf(const CError& error)
{
    return Quoted(ErrorNumber(error.ProblemCode(), error.ProblemType()));
}

// The backslash that begins a new line is not to be quoted, so the lines are quoted one by one.
std::string Label(const std::string& first, const std::string& second)
{
    const std::string quotedFirst = Quoted(first);
    const std::string quotedSecond = Quoted(second);
    return quotedFirst.substr(0, quotedFirst.size() - 1) + "\\n" + quotedSecond.substr(1);
}

std::string ColourOf(const CError& error)
{
    const int severity = error.Severity();
    return severity >= eesLow && severity <= eesCritical ? kColours[severity] : kNoColour;
}

std::string ErrorLines(const CError& error, const SGraphStyle& style)
{
    std::string text = "    " + NodeOf(error) + " [label=" +
                       Label(ErrorName(error.ProblemCode(), error.ProblemType()), error.ProblemText());
    if (style.live && error.Active())
        text += ", fillcolor=\"" + ColourOf(error) + "\", penwidth=2";
    if (!error.Visible())
        text += ", fontcolor=\"#666666\"";
    return text + "];\n";
}

std::string SetLabel(const SSetState& set, const SGraphStyle& style)
{
    const std::string needed = std::to_string(set.needed) + " of " + std::to_string(set.triggers) +
                               (set.automatic ? "" : ", not automatic");
    return style.live ? Label(needed, std::to_string(set.active) + " active") : Quoted(needed);
}

std::string SetLines(const CError& error, const CTriggerSet& set, const SSetState& state,
                     const SGraphStyle& style)
{
    const std::string parent = NodeOf(error);
    const std::string node = Quoted(ErrorNumber(error.ProblemCode(), error.ProblemType()) + " set " +
                                    std::to_string(state.number));
    const std::string line = state.automatic ? "" : ", style=dashed";
    std::string text = "    " + node + " [shape=ellipse, label=" + SetLabel(state, style);
    if (!state.automatic)
        text += ", style=\"filled,dashed\"";
    if (style.live && state.Satisfied())
        text += ", fillcolor=\"" + std::string(kSatisfiedColour) + "\"";
    text += "];\n    " + parent + " -> " + node + " [dir=back" + line + "];\n";
    for (const CError* const trigger : set.Triggers())
        text += "    " + node + " -> " + NodeOf(*trigger) + " [dir=back" +
                (set.LinkingMode() == eelmShallow ? ", style=dotted" : line) + "];\n";
    return text;
}
} // namespace

std::string HierarchyGraph(const CErrorDatabase& database, const SGraphStyle& style)
{
    std::map<ErrorId, const CError*> errors;
    for (const CError& error : database.GetErrorList())
    {
        const ErrorId id(error.ProblemCode(), error.ProblemType());
        errors[id] = database.RetrieveError(id.first, id.second);
    }
    std::string text = kHead;
    for (const auto& entry : errors)
    {
        const CError& error = *entry.second;
        if (!style.includeLeaves && error.TriggerSets().empty() && error.Parents().empty())
            continue;
        text += ErrorLines(error, style);
        const std::vector<SSetState> states = SetStates(error);
        for (std::size_t i = 0; i < states.size(); ++i)
            text += SetLines(error, error.TriggerSets()[i], states[i], style);
    }
    return text + "}\n";
}

} // namespace Faultkeeper::Apps
