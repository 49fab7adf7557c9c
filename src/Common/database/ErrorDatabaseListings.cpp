#include <Faultkeeper/ErrorDatabase.h>

#include "Common/ErrorName.h"
#include "Common/ErrorPath.h"

#include <iostream>
#include <string>

namespace Faultkeeper
{

namespace
{
constexpr const char* kBranch = "---";
constexpr const char* kShallowBranch = "   ";

std::string Headline(const CError& error)
{
    return ErrorName(error) + "  (" + std::to_string(error.Position()) + ") [" + error.ProblemText() + "]";
}

std::string Settings(const CTriggerSet& set)
{
    return "Trigger threshold is " + (set.AutoTrigger() ? std::to_string(set.TriggersRequired()) : "N/A") +
           ". Linking mode is " + (set.LinkingMode() == eelmShallow ? "shallow." : "deep.") +
           " Title source is " + (set.TitleSource() == eetsTrigger ? "trigger." : "parent.");
}

void PrintSets(const CError& error, const std::string& indent, CErrorPath& path);

void PrintTriggers(const CTriggerSet& set, const std::string& linePrefix, const std::string& childIndent,
                   CErrorPath& path)
{
    for (const CError* trigger : set.Triggers())
    {
        std::cout << linePrefix << Headline(*trigger) << std::endl;
        if (!path.Holds(*trigger))
            PrintSets(*trigger, childIndent, path);
    }
}

/// The triggers of a shallow set are set apart by blanks in place of the dashes of their own level.
void PrintSets(const CError& error, const std::string& indent, CErrorPath& path)
{
    const CErrorPathStep step(path, error);
    for (const CTriggerSet& set : error.TriggerSets())
    {
        const bool shallow = set.LinkingMode() == eelmShallow;
        const std::string linePrefix = shallow ? std::string(indent.size(), ' ') : indent;
        if (!set.Triggers().empty())
            std::cout << indent << Settings(set) << std::endl;
        PrintTriggers(set, linePrefix, linePrefix + (shallow ? kShallowBranch : kBranch), path);
    }
}
} // namespace

void CErrorDatabase::PrintTree() const
{
    for (const auto& entry : m_index)
    {
        const CError& error = m_errors[static_cast<std::size_t>(entry.second)];
        std::cout << "+" << TranslateModuleId(error.ModuleId()) << std::endl;
        std::cout << "|--+" << TranslateSubModuleId(error.SubModuleId()) << std::endl;
        std::cout << "|  ---+" << TranslateProblemId(error.ProblemId()) << std::endl;
        std::cout << "|     --->" << std::to_string(error.ProblemType()) << std::endl;
    }
}

void CErrorDatabase::PrintHierarchy(bool includeLeaves) const
{
    for (const auto& entry : m_index)
    {
        const CError& error = m_errors[static_cast<std::size_t>(entry.second)];
        if ((error.TriggerSets().empty() && !includeLeaves) || !error.Parents().empty())
            continue;
        std::cout << Headline(error) << (error.Visible() ? " visible" : " not visible") << std::endl;
        PrintHierarchy(error, kBranch);
        std::cout << std::endl;
    }
}

void CErrorDatabase::PrintHierarchy(const CError& error, const std::string& indent) const
{
    CErrorPath path;
    PrintSets(error, indent, path);
}

} // namespace Faultkeeper
