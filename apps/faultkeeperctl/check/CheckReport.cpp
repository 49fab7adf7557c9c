#include "faultkeeperctl/check/CheckReport.h"

#include "common/text/TypedText.h"

#include "Common/database/ConfigurationRules.h"

namespace Faultkeeper::Apps
{

namespace
{
std::string Counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Null where no rule is broken: then the library loads the configuration nevertheless.
Json RuleDocument(const SCheckFinding& finding)
{
    if (finding.rule == nullptr)
        return Json();
    Json document;
    document["condition"] = finding.rule->condition;
    document["line"] = finding.rule->line;
    document["function"] = finding.rule->function;
    document["order"] = finding.loadOrder;
    return document;
}

Json FindingDocument(const SCheckFinding& finding)
{
    Json document;
    document["file"] = finding.what.file;
    document["line"] = finding.what.line;
    document["column"] = finding.what.column;
    document["severity"] = finding.what.fatal ? "error" : "warning";
    document["text"] = finding.what.text;
    document["suggestion"] = finding.what.suggestion.empty() ? Json() : Json(finding.what.suggestion);
    document["rule"] = RuleDocument(finding);
    return document;
}
} // namespace

std::string CheckText(const SCheckResult& result)
{
    std::string text;
    for (const SCheckFinding& finding : result.findings)
        text += WithoutControls(finding.Line()) + "\n";
    return text + Counted(result.Errors(), "error") + ", " + Counted(result.Warnings(), "warning") + " in " +
           Counted(result.files, "file") + "\n";
}

Json CheckDocument(const SCheckResult& result)
{
    Json document;
    document["errors"] = result.Errors();
    document["warnings"] = result.Warnings();
    document["files"] = result.files;
    document["findings"] = Json::array();
    for (const SCheckFinding& finding : result.findings)
        document["findings"].push_back(FindingDocument(finding));
    return document;
}

} // namespace Faultkeeper::Apps
