#include "faultkeeperctl/check/Checker.h"

#include "faultkeeperctl/check/reading/ConfigurationReader.h"
#include "faultkeeperctl/check/reading/PatternReader.h"
#include "faultkeeperctl/check/rules/Checks.h"

#include <algorithm>

namespace Faultkeeper::Apps
{

namespace
{
/// Missing, broken and empty files. That there are too many errors is told better by who knows them.
void CheckFiles(const std::string& prefix, CFindings& findings)
{
    const CConfigurationFiles files(prefix);
    for (const SConfigurationFinding& finding : files.Findings())
    {
        if (finding.fatal)
            findings.Add(finding);
    }
}

void CheckModel(const SConfigurationModel& model, int lineWidth, CFindings& findings)
{
    const CHierarchy hierarchy(model);
    CheckTriggers(hierarchy, findings);
    CheckThresholds(model, findings);
    CheckClearing(hierarchy, findings);
    CheckDisplay(hierarchy, findings);
    CheckDefinitions(model, findings);
    CheckTexts(hierarchy, lineWidth, findings);
    CheckCapacity(model, findings);
    CheckCycles(hierarchy, findings);
    CheckStateKeys(hierarchy, findings);
    CheckPatterns(hierarchy, findings);
}
} // namespace

std::size_t SCheckResult::Errors() const
{
    return static_cast<std::size_t>(std::count_if(
        findings.begin(), findings.end(), [](const SCheckFinding& finding) { return finding.what.fatal; }));
}

const SCheckFinding* SCheckResult::FirstBrokenRule() const
{
    const SCheckFinding* first = nullptr;
    for (const SCheckFinding& finding : findings)
    {
        if (finding.rule != nullptr && (first == nullptr || finding.loadOrder < first->loadOrder))
            first = &finding;
    }
    return first;
}

SCheckResult CheckConfiguration(const std::string& prefix, int lineWidth)
{
    CFindings findings;
    CheckFiles(prefix, findings);
    const CConfigurationReader reader(prefix, findings);
    SConfigurationModel model = reader.Model();
    ReadPatterns(prefix, model, findings);
    CheckModel(model, lineWidth, findings);
    SCheckResult result;
    result.findings = findings.InOrder();
    result.files = findings.FileCount();
    return result;
}

} // namespace Faultkeeper::Apps
