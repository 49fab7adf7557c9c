#include "faultkeeperd/Log.h"

#include <cstddef>
#include <cstdio>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kQuotedBytes = 80;

std::string Printable(const std::string& text)
{
    std::string result;
    for (const char byte : text)
    {
        const unsigned value = static_cast<unsigned char>(byte);
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", value);
        if (value < 0x20 || value == 0x7F)
            result += escaped;
        else
            result += byte;
    }
    return result;
}

void Log(const char* level, const std::string& text)
{
    // One write for the whole line: several processes may share the log.
    const std::string line = std::string("faultkeeperd: ") + level + ": " + Printable(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}
} // namespace

void LogError(const std::string& text)
{
    Log("error", text);
}

void LogWarning(const std::string& text)
{
    Log("warning", text);
}

void LogInfo(const std::string& text)
{
    Log("info", text);
}

std::string Quoted(const std::string& text)
{
    const std::string start = Printable(text.substr(0, kQuotedBytes));
    return "\"" + start + (text.size() > kQuotedBytes ? "\"..." : "\"");
}

} // namespace Faultkeeper::Apps
