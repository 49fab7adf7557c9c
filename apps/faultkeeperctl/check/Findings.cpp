#include "faultkeeperctl/check/Findings.h"

#include "common/text/NearestName.h"
#include "common/text/TypedText.h"

#include "Common/database/ConfigurationRules.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace Faultkeeper::Apps
{

std::string PlaceText(const SPlace& place)
{
    return place.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

SMessage UnknownName(const std::string& what, const std::string& typed, const std::vector<std::string>& names,
                     const std::string& consequence)
{
    const std::string nearest = NearestName(typed, names);
    const std::string question = nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
    return {"unknown " + what + " " + QuotedTyped(typed) + consequence + question, nearest};
}

std::string SCheckFinding::Line() const
{
    const std::string line = what.Line();
    return rule == nullptr ? line
                           : line + " [rule " + std::to_string(rule->line) + ": " + rule->condition + "]";
}

void CFindings::Examine(const std::string& file)
{
    m_ranks.emplace(file, m_ranks.size());
}

void CFindings::Add(const SConfigurationFinding& finding)
{
    SCheckFinding added;
    added.what = finding;
    m_findings.push_back(added);
}

SCheckFinding& CFindings::Add(bool error, const SPlace& place, const SMessage& message)
{
    Add({error, place.file, place.line, place.column, message.text, message.suggestion});
    return m_findings.back();
}

void CFindings::BrokenRule(const SPlace& place, const SConfigurationRule& rule, const SMessage& message)
{
    SCheckFinding& finding = Add(true, place, message);
    finding.rule = &rule;
    finding.loadOrder = ++m_brokenRules;
}

void CFindings::ErrorAcross(const SPlace& place, const std::string& text)
{
    Add(true, place, SMessage{text}).acrossFiles = true;
}

std::vector<SCheckFinding> CFindings::InOrder() const
{
    std::vector<SCheckFinding> findings = m_findings;
    std::stable_sort(findings.begin(), findings.end(),
                     [this](const SCheckFinding& left, const SCheckFinding& right)
                     { return Before(left, right); });
    std::set<std::string> told; // the first of several came first, and has the smallest load order
    const auto toldBefore = [&told](SCheckFinding finding)
    {
        finding.what.fatal = true;
        return !told.insert(finding.Line()).second;
    };
    findings.erase(std::remove_if(findings.begin(), findings.end(), toldBefore), findings.end());
    return findings;
}

std::size_t CFindings::RankOf(const SCheckFinding& finding) const
{
    const auto found = m_ranks.find(finding.what.file);
    return found == m_ranks.end() ? m_ranks.size() : found->second;
}

bool CFindings::Before(const SCheckFinding& left, const SCheckFinding& right) const
{
    return std::make_tuple(left.acrossFiles, RankOf(left), left.what.line, left.what.column) <
           std::make_tuple(right.acrossFiles, RankOf(right), right.what.line, right.what.column);
}

} // namespace Faultkeeper::Apps
