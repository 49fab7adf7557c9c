// Whatever ErrorPatterns.xml holds, it can be read and asked, and the answer does not depend on the order of
// the errors.

#include "harness/Expectation.h"
#include "harness/Input.h"
#include "harness/ScratchDirectory.h"
#include "harness/XmlMutation.h"

#include "support/FreshDirectory.h"

#include <Faultkeeper/ErrorOverlay.h>
#include <Faultkeeper/Identifiers.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using namespace Faultkeeper;

namespace
{

typedef std::vector<std::pair<int, int>> Ids;

const std::string& Prefix()
{
    static const Fuzz::CScratchDirectory directory;
    return directory.Prefix();
}

std::pair<int, int> Id(int module, int subModule, int problem, int type)
{
    return {module | subModule | problem, type};
}

/// The identifiers that the dictionary spells, and what a name that is not known becomes.
const Ids& KnownIds()
{
    static const Ids ids = {
        Id(emiPositioning, esmiGPS, epiNoData, 2), Id(emiPositioning, esmiGPS, epiNoData, 3),
        Id(emiGPS, esmiGPS, epiCommunications, 9), Id(emiSystem, esmiBattery, epiPower, 0),
        Id(emiUnknown, esmiUnknown, epiUnknown, 0)};
    return ids;
}

/// The identifiers that the bits of `choice` select, one of them once more if bit `size` is set.
Ids Chosen(unsigned choice)
{
    const Ids& known = KnownIds();
    Ids ids;
    for (std::size_t i = 0; i < known.size(); ++i)
    {
        if ((choice >> i & 1U) != 0)
            ids.push_back(known[i]);
    }
    if (!ids.empty() && (choice >> known.size() & 1U) != 0)
        ids.push_back(ids.front());
    return ids;
}

void CheckAnswer(const CErrorOverlay& overlay, Ids ids)
{
    const std::string code = overlay.FindFriendlyCode(ids);
    std::reverse(ids.begin(), ids.end());
    Fuzz::Expect(overlay.FindFriendlyCode(ids) == code, "the order of the errors does not matter");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Prefix();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    Support::WriteFile(Prefix() + "ErrorPatterns.xml", Fuzz::CInput(bytes, size).Rest());
    const CErrorOverlay overlay(Prefix());
    for (unsigned choice = 0; choice < 1U << (KnownIds().size() + 1); ++choice)
        CheckAnswer(overlay, Chosen(choice));
    overlay.GetCodes();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t room,
                                               unsigned seed)
{
    return Fuzz::MutateXml(bytes, size, room, seed);
}
