#include "common/ConfigurationFingerprint.h"

#include "common/Checksum.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <cinttypes>
#include <cstdio>

namespace Faultkeeper::Apps
{

namespace
{
void AddId(const CError& error, CChecksum& checksum)
{
    checksum.Add(error.ProblemCode()).Add(error.ProblemType());
}

void AddFlags(const CError& error, CChecksum& checksum)
{
    for (const bool flag : {error.Visible(), error.FullScreen(), error.ForceShutdown(),
                            error.IncludeServiceNumber(), error.ShouldBeep(), error.ShouldBeepIfGuiding()})
        checksum.Add(flag ? 1 : 0);
}

void AddTexts(const CError& error, CChecksum& checksum)
{
    checksum.Add(error.ProblemText()).Add(error.SolutionText());
    checksum.Add(error.ShortProblemText()).Add(error.TitleText());
}

void AddTriggerSet(const CTriggerSet& set, CChecksum& checksum)
{
    checksum.Add(set.AutoTrigger() ? 1 : 0).Add(set.TriggersRequired());
    checksum.Add(set.LinkingMode()).Add(set.TitleSource());
    checksum.Add(static_cast<std::int64_t>(set.Triggers().size()));
    for (const CError* trigger : set.Triggers())
        AddId(*trigger, checksum);
}
} // namespace

std::string ConfigurationFingerprint(const CErrorDatabase& database)
{
    CChecksum checksum;
    for (const CError& error : database.GetErrorList())
    {
        AddId(error, checksum);
        AddFlags(error, checksum);
        checksum.Add(error.Severity());
        AddTexts(error, checksum);
        checksum.Add(static_cast<std::int64_t>(error.TriggerSets().size()));
        for (const CTriggerSet& set : error.TriggerSets())
            AddTriggerSet(set, checksum);
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016" PRIx64, static_cast<std::uint64_t>(checksum.Value()));
    return digits;
}

} // namespace Faultkeeper::Apps
