#include "common/Patience.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace Benchmarks
{

namespace
{
constexpr std::chrono::seconds kPatience(30);
constexpr std::chrono::microseconds kBetweenLooks(50);
} // namespace

void WaitPatiently(const std::string& what, const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("waited in vain for " + what);
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

} // namespace Benchmarks
