#include "faultkeeperctl/check/rules/Checks.h"

#include <algorithm>
#include <cstdint>

namespace Faultkeeper::Apps
{

namespace
{
// A key of 256 Ki digits. The library builds longer ones, for as long as it takes and memory lasts.
constexpr std::uint64_t kMostKeyBits = 1048576;

SPlace PlaceOfLink(const SDefinition& error, std::size_t trigger)
{
    for (const STriggerSetModel& set : error.sets)
    {
        for (const SReference& reference : set.triggers)
        {
            if (reference.target == trigger)
                return reference.place;
        }
    }
    return error.place;
}

std::string PathText(const SConfigurationModel& model, const CHierarchy::Errors& cycle)
{
    std::string text;
    for (const std::size_t error : cycle)
        text += "\"" + model.errors[error].Name() + "\" <- ";
    return text + "\"" + model.errors[cycle.front()].Name() + "\"";
}

/// For each error, how many bits a key takes for what is below it when everything is active: one for each
/// trigger, on every way that leads there.
std::vector<std::uint64_t> KeyBits(const CHierarchy& hierarchy)
{
    std::vector<std::uint64_t> bits(hierarchy.Model().errors.size(), 0);
    for (const std::size_t error : hierarchy.FromLeaves())
    {
        for (const std::size_t trigger : hierarchy.Triggers(error))
            bits[error] = std::min(bits[error] + 1 + bits[trigger], kMostKeyBits + 1);
    }
    return bits;
}
} // namespace

void CheckCycles(const CHierarchy& hierarchy, CFindings& findings)
{
    const SConfigurationModel& model = hierarchy.Model();
    for (const CHierarchy::Errors& cycle : hierarchy.Cycles())
        findings.ErrorAcross(PlaceOfLink(model.errors[cycle.front()], cycle[1]),
                             "errors trigger each other in a circle: " + PathText(model, cycle) +
                                 " (\"<-\": is triggered by)");
}

void CheckStateKeys(const CHierarchy& hierarchy, CFindings& findings)
{
    const std::vector<std::uint64_t> bits = KeyBits(hierarchy);
    for (std::size_t error = 0; error < bits.size(); ++error)
    {
        const SDefinition& definition = hierarchy.Model().errors[error];
        if (bits[error] > kMostKeyBits && hierarchy.Parents(error).empty())
            findings.Warning(definition.place,
                             "with all that is below \"" + definition.Name() +
                                 "\" active its state key takes more than " + std::to_string(kMostKeyBits) +
                                 " bits, because so many ways lead to the same errors: a display takes long "
                                 "for its tree");
    }
}

} // namespace Faultkeeper::Apps
