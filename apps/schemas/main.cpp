#include "schemas/Schema.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>

namespace
{
using namespace Faultkeeper;
using namespace Faultkeeper::ConfigurationFormat;

bool Write(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    if (file.flush())
        return true;
    std::fprintf(stderr, "faultkeeper_schemas: cannot write %s: %s\n", path.c_str(), std::strerror(errno));
    return false;
}

int WriteAll(const std::string& prefix)
{
    const bool list = Write(prefix + "FaultkeeperConfig.xsd",
                            Apps::Schema({std::begin(kListElements), std::end(kListElements)},
                                         "FaultkeeperConfig.xml: the modules of a console and their files."));
    const bool module = Write(prefix + "Module.xsd",
                              Apps::Schema({std::begin(kModuleElements), std::end(kModuleElements)},
                                           "A module's file: its errors, their texts and what raises them."));
    const bool patterns =
        Write(prefix + "ErrorPatterns.xsd",
              Apps::Schema({std::begin(kPatternElements), std::end(kPatternElements)},
                           "ErrorPatterns.xml: the friendly codes of combinations of errors."));
    return list && module && patterns ? 0 : 1;
}
} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::fputs("usage: faultkeeper_schemas DIR\n", stderr);
        return 2;
    }
    try
    {
        return WriteAll(std::string(arguments[1]) + "/");
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "faultkeeper_schemas: %s\n", error.what());
        return 1;
    }
}
