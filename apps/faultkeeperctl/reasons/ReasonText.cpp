#include "faultkeeperctl/reasons/ReasonText.h"

#include "faultkeeperctl/text/TimeText.h"

#include <algorithm>
#include <cstddef>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kIndent = 2;

bool AnyAutomatic(const SReason& reason)
{
    return std::any_of(reason.sets.begin(), reason.sets.end(),
                       [](const SSetReason& set) { return set.state.automatic; });
}

// What is to be said of the whole; "" if its sets say it all.
std::string WhyText(const SReason& reason)
{
    if (reason.above)
        return "told above";
    if (reason.active && reason.sets.empty())
        return "reported";
    if (reason.active && !AnyAutomatic(reason))
        return "reported itself: none of its sets is automatic";
    if (reason.active && !reason.Held())
        return "no automatic set is satisfied: it was reported itself, or its triggers went in a way that "
               "could not clear it";
    if (!reason.active && reason.sets.empty())
        return "it has no triggers: only a report of it raises it";
    if (!reason.active && !AnyAutomatic(reason))
        return "none of its sets is automatic: only a report of it raises it";
    return "";
}

std::string StateText(const SReason& reason)
{
    if (reason.active)
        return "active since " + TimeOrNever(reason.raised);
    return reason.raised == 0 ? "not active, and never was"
                              : "not active; last raised " + TimeText(reason.raised) + ", cleared " +
                                    TimeOrNever(reason.cleared);
}

std::string MissingText(const SSetState& set)
{
    if (!set.automatic)
        return ", but is not automatic";
    if (set.Satisfied())
        return ": enough, but it was cleared itself since; the next one that is raised raises it";
    if (set.Missing() > set.triggers - set.active)
        return ": it has too few triggers to raise it ever";
    return ": " + std::to_string(set.Missing()) + " more would raise it";
}

std::string SetLine(const SReason& reason, const SSetState& set)
{
    const bool holds = reason.active && set.automatic && set.Satisfied();
    return SetText(set) + (!reason.active  ? MissingText(set)
                           : holds         ? ", which holds it active"
                           : set.automatic ? ""
                                           : ", but is not automatic");
}

std::string Indented(const SReason& reason, std::size_t indent);

std::string SetsText(const SReason& reason, std::size_t indent)
{
    std::string text;
    for (const SSetReason& set : reason.sets)
    {
        if (reason.active && set.triggers.empty())
            continue; // has no part in it
        text += std::string(indent, ' ') + SetLine(reason, set.state) + "\n";
        for (const SReason& trigger : set.triggers)
            text += reason.active ? Indented(trigger, indent + kIndent)
                                  : std::string(indent + kIndent, ' ') +
                                        ErrorName(trigger.id.first, trigger.id.second) + ": " +
                                        StateText(trigger) + "\n";
    }
    return text;
}

std::string Indented(const SReason& reason, std::size_t indent)
{
    const std::string why = WhyText(reason);
    return std::string(indent, ' ') + ErrorName(reason.id.first, reason.id.second) + ": " +
           StateText(reason) + (why.empty() ? "" : "; " + why) + "\n" + SetsText(reason, indent + kIndent);
}

Json SetDocument(const SReason& reason, const SSetReason& set)
{
    Json document;
    document["set"] = set.state.number;
    document["automatic"] = set.state.automatic;
    document["active"] = set.state.active;
    document["of"] = set.state.triggers;
    document["needed"] = set.state.needed;
    document["satisfied"] = set.state.Satisfied();
    document["missing"] = set.state.Missing();
    document["why"] = SetLine(reason, set.state);
    document["triggers"] = Json::array();
    for (const SReason& trigger : set.triggers)
        document["triggers"].push_back(ReasonDocument(trigger));
    return document;
}
} // namespace

std::string ReasonText(const SReason& reason)
{
    return Indented(reason, 0);
}

Json ReasonDocument(const SReason& reason)
{
    Json document = IdDocument(reason.id.first, reason.id.second);
    document["active"] = reason.active;
    SetTime(document, "raised", reason.raised);
    SetTime(document, "cleared", reason.cleared);
    document["above"] = reason.above;
    document["why"] = WhyText(reason);
    document["sets"] = Json::array();
    for (const SSetReason& set : reason.sets)
        document["sets"].push_back(SetDocument(reason, set));
    return document;
}

} // namespace Faultkeeper::Apps
