#include "faultkeeperctl/typed/FileText.h"

#include "faultkeeperctl/Settings.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::string_view kMarkOfUtf8 = "\xEF\xBB\xBF";

int LeaveOpen(std::FILE*)
{
    return 0;
}

[[noreturn]] void FailToRead(const std::string& path)
{
    throw CFailure(epsNo, "cannot read " + FileName(path) + ": " + std::strerror(errno));
}
} // namespace

std::string FileText(const std::string& path)
{
    const bool standard = path == "-";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        standard ? stdin : std::fopen(path.c_str(), "re"), standard ? LeaveOpen : std::fclose);
    if (file == nullptr)
        FailToRead(path);
    std::string text;
    char piece[4096];
    for (std::size_t read = 0; (read = std::fread(piece, 1, sizeof piece, file.get())) > 0;)
        text.append(piece, read);
    if (std::ferror(file.get()) != 0)
        FailToRead(path);
    return text.compare(0, kMarkOfUtf8.size(), kMarkOfUtf8) == 0 ? text.substr(kMarkOfUtf8.size()) : text;
}

std::string FileName(const std::string& path)
{
    return path == "-" ? "standard input" : path;
}

} // namespace Faultkeeper::Apps
