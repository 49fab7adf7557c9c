#include "harness/Expectation.h"

#include <cstdio>
#include <cstdlib>

namespace Fuzz
{

void Expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "expected: %s\n", what);
    std::abort();
}

} // namespace Fuzz
