#include "faultkeeperctl/check/rules/Checks.h"

#include "faultkeeperctl/check/hierarchy/Cycles.h"

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

/// Tells circles. What circles share is told with the first of them, so that all texts together are no longer
/// than what there is to tell.
class CCircleTexts
{
public:
    /// @param model  borrowed
    explicit CCircleTexts(const SConfigurationModel& model) : m_model(model), m_told(model.errors.size(), 0)
    {
    }

    std::string Tell(const CHierarchy::Errors& circle)
    {
        std::string text;
        for (std::size_t next = 0; next < circle.size();)
        {
            const std::size_t more = MoreToldBefore(circle, next);
            text += more >= kFewest ? std::to_string(more) + " more, told with another circle <- "
                                    : Name(circle[next]) + " <- ";
            next += more >= kFewest ? more : 1;
        }
        for (const std::size_t error : circle)
            m_told[error] = 1;
        return text + Name(circle.front());
    }

private:
    static constexpr std::size_t kFewest = 3; // that are left out

    std::string Name(std::size_t error) const { return "\"" + m_model.errors[error].Name() + "\""; }

    /// How many errors from here on stand between errors that were told before.
    std::size_t MoreToldBefore(const CHierarchy::Errors& circle, std::size_t first) const
    {
        std::size_t next = first;
        while (next > 0 && next + 1 < circle.size() && m_told[circle[next - 1]] != 0 &&
               m_told[circle[next]] != 0 && m_told[circle[next + 1]] != 0)
            ++next;
        return next - first;
    }

    const SConfigurationModel& m_model;
    std::vector<char> m_told;
};

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
    CCircleTexts texts(model);
    for (const CHierarchy::Errors& cycle : FindCycles(hierarchy))
        findings.ErrorAcross(PlaceOfLink(model.errors[cycle.front()], cycle[1]),
                             "errors trigger each other in a circle: " + texts.Tell(cycle) +
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
