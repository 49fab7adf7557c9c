#include "common/ExpatPass.h"

#include <expat.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace Benchmarks
{

namespace
{
std::vector<char> ReadWhole(const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr || std::fseek(file.get(), 0, SEEK_END) != 0)
        throw std::runtime_error("cannot read " + path);
    std::vector<char> text(static_cast<std::size_t>(std::ftell(file.get())));
    std::rewind(file.get());
    if (std::fread(text.data(), 1, text.size(), file.get()) != text.size())
        throw std::runtime_error("cannot read " + path);
    return text;
}
} // namespace

void ParseWithoutHandlers(const std::vector<std::string>& files)
{
    for (const std::string& file : files)
    {
        const std::vector<char> text = ReadWhole(file);
        const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                             &XML_ParserFree);
        if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK)
            throw std::runtime_error(file + " is not well-formed");
    }
}

} // namespace Benchmarks
