// Reports through client, owner and table, from process to process: reporting_benchmarks [--stored]
// [--errors N] [option...] With --stored the owner has a state store; it has 400 errors if not told
// otherwise.
#include "common/Registration.h"
#include "reporting/Benchmarks.h"
#include "reporting/MeasuredOwner.h"
#include "support/FreshDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace Benchmarks
{

namespace
{
using Arguments = std::vector<char*>;

/// Takes an option and so many words behind it out of the arguments.
/// @return its last word, null if it is not there
const char* Take(Arguments& arguments, const char* option, std::ptrdiff_t words)
{
    const auto found = std::find(arguments.begin(), arguments.end(), std::string(option));
    if (arguments.end() - found <= words)
        return nullptr;
    const char* const last = found[words];
    arguments.erase(found, found + words + 1);
    return last;
}

int Run(Arguments arguments)
{
    const bool stored = Take(arguments, "--stored", 0) != nullptr;
    const char* const errors = Take(arguments, "--errors", 1);
    const Support::CFreshDirectory storage;
    CMeasuredOwner owner(errors == nullptr ? 400 : std::strtoul(errors, nullptr, 10),
                         {"--state", stored ? storage.File("state") : "none"});
    if (stored)
    {
        RegisterStoredThroughput(owner);
    }
    else
    {
        RegisterLatencies(owner);
        RegisterThroughput(owner);
    }
    return RunAll(static_cast<int>(arguments.size()), arguments.data());
}
} // namespace

} // namespace Benchmarks

int main(int argumentCount, char** arguments)
{
    return Benchmarks::Run({arguments, arguments + argumentCount});
}
