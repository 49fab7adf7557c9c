#include "faultkeeperd/Log.h"

#include "common/text/TypedText.h"
#include "faultkeeperd/LogLimit.h"

#include <cstddef>
#include <cstdio>
#include <memory>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::size_t kQuotedBytes = 80;

std::unique_ptr<CLogLimit> s_limit; // null: nothing is left out

void Write(const std::string& text)
{
    // One write for the whole line: several processes may share the log.
    const std::string line = "faultkeeperd: " + text + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

void Log(const char* level, const std::string& text)
{
    std::string line = std::string(level) + ": " + WithoutControls(text);
    if (s_limit != nullptr)
        line = s_limit->Admit(line, CLogLimit::Clock::now());
    if (!line.empty())
        Write(line);
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

void LimitLog()
{
    s_limit = std::make_unique<CLogLimit>();
}

void LogLeftOut(bool all)
{
    if (s_limit == nullptr)
        return;
    for (const std::string& line : s_limit->LeftOut(CLogLimit::Clock::now(), all))
        Write(line);
}

std::string Quoted(const std::string& text)
{
    return QuotedTyped(text, kQuotedBytes);
}

} // namespace Faultkeeper::Apps
