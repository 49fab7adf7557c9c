// Writes the configuration that is measured, for measurements of whole programs: write_configuration ERRORS
// DIRECTORY
#include "subjects/Configurations.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        std::fprintf(stderr, "usage: write_configuration ERRORS DIRECTORY\n");
        return 2;
    }
    try
    {
        Benchmarks::WriteConfiguration(std::string(arguments[2]) + "/", Benchmarks::esPlausible,
                                       std::strtoul(arguments[1], nullptr, 10));
        return 0;
    }
    catch (const std::exception& failure)
    {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
