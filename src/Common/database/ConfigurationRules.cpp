#include "Common/database/ConfigurationRules.h"

#undef NDEBUG // the assertion reporter is declared only where assertions are on, and these rules always are
#include <cassert>
#include <cstdio>
#include <cstdlib>

namespace Faultkeeper
{

namespace
{
constexpr const char* kFile = "src/Common/ErrorDatabase";

[[noreturn]] void EndProcess(const SConfigurationRule& rule)
{
#ifdef __GLIBC__
    __assert_fail(rule.condition, kFile, rule.line, rule.function);
#else
    std::fprintf(stderr, "%s:%u: %s: Assertion `%s' failed.\n", kFile, rule.line, rule.function,
                 rule.condition);
    std::abort();
#endif
}
} // namespace

void Require(bool holds, const SConfigurationRule& rule)
{
    if (!holds)
        EndProcess(rule);
}

} // namespace Faultkeeper
