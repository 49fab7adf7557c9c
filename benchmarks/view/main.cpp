#include "common/Registration.h"
#include "view/Benchmarks.h"

int main(int argumentCount, char** arguments)
{
    Benchmarks::RegisterReading();
    Benchmarks::RegisterOwning();
    return Benchmarks::RunAll(argumentCount, arguments);
}
