#include <Faultkeeper/ErrorOverlay.h>

#include "Common/Numbers.h"
#include "Common/XmlAttributes.h"
#include "Common/database/ConfigurationFormat.h"

#include <Faultkeeper/Identifiers.h>

#include <Core/IO/XMLDocument.h>
#include <Core/IO/XMLNode.h>
#include <Core/Utilities/SplitString.h>

#include <algorithm>

namespace Faultkeeper
{

using namespace ConfigurationFormat;

namespace
{
typedef std::pair<int, int> ErrorId;

// The "Patterns" element below the top element, whatever that is called; null if there is none.
const Core::IO::XMLNode* FindPatterns(const Core::IO::XMLNode& root)
{
    if (root.Children().empty())
        return nullptr;
    return root.Children().front().Child(kPatterns);
}

// A name that is not known is -1, which sets every bit of the code: such an id is kept and matches no error.
bool ReadId(const std::string& text, ErrorId& id)
{
    std::vector<std::string> fields;
    const bool split = Core::Utilities::SplitString(text, ":", fields, 0);
    if (!split || fields.size() != 4)
        return false;
    const int module = TranslateModuleId(fields[0]);
    const int subModule = TranslateSubModuleId(fields[1]);
    const int problem = TranslateProblemId(fields[2]);
    id = ErrorId(module | subModule | problem, NumberOrZero(fields[3]));
    return true;
}

SPattern ReadPattern(const Core::IO::XMLNode& node)
{
    SPattern pattern;
    pattern.code = Attribute(node, kFixedCode);
    pattern.allowPartialMatch = Flag(node, kAllowPartialMatch);
    for (const Core::IO::XMLNode& child : node.Children())
    {
        ErrorId id;
        if (ReadId(Attribute(child, kId), id))
            pattern.ids.push_back(id);
    }
    std::sort(pattern.ids.begin(), pattern.ids.end());
    return pattern;
}

// Partial: each id of the pattern is looked up on its own, so how often it stands there does not matter.
bool Matches(const SPattern& pattern, const std::vector<ErrorId>& sortedIds)
{
    if (pattern.ids == sortedIds)
        return true;
    const auto given = [&](const ErrorId& id)
    { return std::binary_search(sortedIds.begin(), sortedIds.end(), id); };
    return pattern.allowPartialMatch && std::all_of(pattern.ids.begin(), pattern.ids.end(), given);
}
} // namespace

CErrorOverlay::CErrorOverlay(const std::string& directory)
{
    Core::IO::XMLDocument document(false);
    document.Parse(directory + "ErrorPatterns.xml"); // a failed parse leaves nothing to be found below
    const Core::IO::XMLNode* const patterns = FindPatterns(document.RootNode());
    if (patterns == nullptr)
        return;
    for (const Core::IO::XMLNode& node : patterns->Children())
        if (node.Name() == kPattern && !Attribute(node, kFixedCode).empty())
            m_patterns.push_back(ReadPattern(node));
}

std::string CErrorOverlay::FindFriendlyCode(const std::vector<std::pair<int, int>>& ids) const
{
    std::vector<ErrorId> sortedIds(ids);
    std::sort(sortedIds.begin(), sortedIds.end());
    const auto found = std::find_if(m_patterns.begin(), m_patterns.end(),
                                    [&](const SPattern& pattern) { return Matches(pattern, sortedIds); });
    return found == m_patterns.end() ? std::string() : found->code;
}

void CErrorOverlay::GetCodes() const {}

} // namespace Faultkeeper
