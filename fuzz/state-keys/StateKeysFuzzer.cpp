// Whatever is given as a state key or as a row of bits, a tree is rebuilt from it or it is refused.
//
// An input is a byte of choices and then the key.

#include "harness/Display.h"
#include "harness/Expectation.h"
#include "harness/Input.h"

#include <Faultkeeper/ErrorPresentation.h>

using namespace Faultkeeper;

namespace
{

Fuzz::CDisplay& Display()
{
    static Fuzz::CDisplay display;
    return display;
}

/// The walk below one error of the configuration takes its bits from the front, whatever they are.
void RebuildBelow(std::size_t choice, const std::string& key, bool plain)
{
    const std::vector<CError>& errors = Display().Database().GetErrorList();
    std::string bits = key;
    SErrorTree tree;
    std::vector<std::string> lines;
    std::vector<std::pair<int, int>> codes;
    CErrorPresentation::RegenerateErrorTree(&errors[choice % errors.size()], bits, tree, lines, plain, codes,
                                            key);
    Fuzz::Expect(key.compare(key.size() - bits.size(), std::string::npos, bits) == 0,
                 "bits are taken from the front");
    Fuzz::Expect(lines.size() <= codes.size(), "each line stands for an error that contributes");
}

bool WellFormed(const std::string& key)
{
    return key.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Display().Reset();
    Display().Reader().Synchronise(Display().Database());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    Fuzz::CInput input(bytes, size);
    const std::uint8_t choice = input.Byte();
    const std::string key = input.Rest();
    const bool accepted = Fuzz::RebuildTree(Display(), key);
    Fuzz::Expect(!accepted || WellFormed(key), "a key of other characters is refused");
    Fuzz::Expect(accepted || !WellFormed(key) || key.size() < 3, "a key that holds an index is accepted");
    RebuildBelow(choice >> 1, key, (choice & 1) != 0);
    return 0;
}
