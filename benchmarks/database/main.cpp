#include "common/Registration.h"
#include "database/Benchmarks.h"

int main(int argumentCount, char** arguments)
{
    Benchmarks::RegisterTrees();
    Benchmarks::RegisterGrouping();
    Benchmarks::RegisterLoading();
    Benchmarks::RegisterRaising();
    return Benchmarks::RunAll(argumentCount, arguments);
}
