#include "harness/Refusal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// <cassert> must stay out of here: it declares the reporter as one that never throws.

namespace
{

constexpr const char* kRuleFile =
    "src/Common/ErrorDatabase"; // all configuration rules are reported as of this file

struct SRuleBroken
{
};

} // namespace

/// Takes the place of the C library's assertion reporter.
extern "C" [[noreturn]] void __assert_fail(const char* condition, const char* file, unsigned line,
                                           const char* function)
{
    if (std::strcmp(file, kRuleFile) == 0)
        throw SRuleBroken();
    std::fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", file, line, function, condition);
    std::abort();
}

namespace Fuzz
{

bool Refused(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const SRuleBroken&)
    {
        return true;
    }
    return false;
}

} // namespace Fuzz
