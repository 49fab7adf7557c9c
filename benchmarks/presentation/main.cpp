// What screens ask for when something has changed. The bare cost of a result is making a copy of it.
#include "common/Registration.h"
#include "presentation/Benchmarks.h"

int main(int argumentCount, char** arguments)
{
    Benchmarks::RegisterTrees();
    Benchmarks::RegisterDepth();
    Benchmarks::RegisterCodes();
    Benchmarks::RegisterTexts();
    return Benchmarks::RunAll(argumentCount, arguments);
}
