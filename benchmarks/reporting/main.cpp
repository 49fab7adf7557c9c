// Reports through client, owner and table, from process to process: reporting_benchmarks [--stored]
// [option...] With --stored the owner has a state store.
#include "common/Registration.h"
#include "reporting/Benchmarks.h"
#include "reporting/MeasuredOwner.h"
#include "support/FreshDirectory.h"

#include <algorithm>
#include <string>
#include <vector>

int main(int argumentCount, char** arguments)
{
    using namespace Benchmarks;
    std::vector<char*> others(arguments, arguments + argumentCount);
    const auto stored = std::find(others.begin(), others.end(), std::string("--stored"));
    const Support::CFreshDirectory storage;
    if (stored == others.end())
    {
        CMeasuredOwner owner({"--state", "none"});
        RegisterLatencies(owner);
        RegisterThroughput(owner);
        return RunAll(argumentCount, arguments);
    }
    others.erase(stored);
    CMeasuredOwner owner({"--state", storage.File("state")});
    RegisterStoredThroughput(owner);
    return RunAll(static_cast<int>(others.size()), others.data());
}
