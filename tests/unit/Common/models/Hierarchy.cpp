#include "unit/Common/models/Hierarchy.h"

#include <algorithm>

namespace Models
{

namespace
{
std::string Joined(const std::vector<int>& numbers)
{
    std::string text;
    for (const int number : numbers)
        text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
}

std::string WhereSet(const std::vector<char>& flags)
{
    std::string text;
    for (std::size_t i = 0; i < flags.size(); ++i)
        text += flags[i] != 0 ? " " + std::to_string(i) : "";
    return text;
}
} // namespace

void LinkParents(THierarchy& hierarchy)
{
    for (std::size_t parent = 0; parent < hierarchy.size(); ++parent)
    {
        for (const SSet& set : hierarchy[parent].sets)
        {
            for (const int trigger : set.triggers)
                hierarchy[static_cast<std::size_t>(trigger)].parents.push_back(static_cast<int>(parent));
        }
    }
}

std::string Shown(const THierarchy& hierarchy)
{
    std::string text;
    for (std::size_t error = 0; error < hierarchy.size(); ++error)
    {
        text += std::to_string(error) + ":";
        for (const SSet& set : hierarchy[error].sets)
            text += (set.automatic ? " auto " : " manual ") + std::to_string(set.needed) + " of {" +
                    Joined(set.triggers) + "}";
        text += "; parents " + Joined(hierarchy[error].parents) + "\n";
    }
    return text;
}

std::string Shown(const SRequest& request)
{
    return (request.raise ? "raise " : "clear ") + std::to_string(request.error) +
           (request.silent ? " silently" : "");
}

std::string Shown(const SOutcome& outcome)
{
    std::string heard;
    for (const int word : outcome.heard)
        heard += (word > 0 ? " +" : " -") + std::to_string(std::abs(word) - 1);
    return "active" + WhereSet(outcome.active) + "; changed" + WhereSet(outcome.changed) + "; heard" + heard;
}

CPropagation::CPropagation(const THierarchy& hierarchy) : m_hierarchy(hierarchy)
{
    m_outcome.active.resize(hierarchy.size());
    m_outcome.changed.resize(hierarchy.size());
}

void CPropagation::Begin(unsigned active)
{
    for (std::size_t error = 0; error < m_hierarchy.size(); ++error)
    {
        m_outcome.active[error] = (active >> error & 1U) != 0 ? 1 : 0;
        m_outcome.changed[error] = 0;
    }
    m_outcome.heard.clear();
}

void CPropagation::Request(const SRequest& request)
{
    m_outcome.changed[static_cast<std::size_t>(request.error)] = 1;
    if ((Active(request.error) != 0) == request.raise)
        return;
    if (request.raise)
        Raise(request.error, request.silent);
    else
        Clear(request.error, request.silent);
}

void CPropagation::Raise(int error, bool silent)
{
    Active(error) = 1;
    if (silent)
        return;
    m_outcome.heard.push_back(error + 1);
    for (const int parent : Node(error).parents)
        ChildRaised(parent, error);
}

void CPropagation::Clear(int error, bool silent)
{
    Active(error) = 0;
    if (silent)
        return;
    m_outcome.heard.push_back(-(error + 1));
    for (const int parent : Node(error).parents)
        ChildCleared(parent, error);
}

void CPropagation::ChildRaised(int parent, int child)
{
    bool any = false;
    for (const SSet& set : Node(parent).sets)
    {
        if (set.automatic && Raised(set, child))
            any = true;
    }
    if (any && Active(parent) == 0)
        Raise(parent, false);
}

void CPropagation::ChildCleared(int parent, int child)
{
    bool allCleared = true;
    bool anyAutomatic = false;
    for (const SSet& set : Node(parent).sets)
    {
        if (!set.automatic)
            continue;
        anyAutomatic = true;
        if (!Cleared(set, child))
            allCleared = false;
    }
    if (anyAutomatic && allCleared && Active(parent) != 0)
        Clear(parent, false);
}

bool CPropagation::Raised(const SSet& set, int child) const
{
    bool found = false;
    int count = 0;
    for (const int trigger : set.triggers)
    {
        if (trigger == child)
        {
            found = true;
            ++count;
        }
        else if (m_outcome.active[static_cast<std::size_t>(trigger)] != 0)
        {
            ++count;
        }
    }
    return found && set.needed <= count;
}

bool CPropagation::Cleared(const SSet& set, int child) const
{
    bool found = false;
    int count = 0;
    for (const int trigger : set.triggers)
    {
        if (trigger == child)
            found = true;
        else if (m_outcome.active[static_cast<std::size_t>(trigger)] != 0)
            ++count;
    }
    return found && set.needed > count;
}

} // namespace Models
