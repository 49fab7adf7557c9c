#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>

namespace Support
{

std::string PrintedBy(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    action();
    std::cout.flush();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

std::string WarnedBy(const std::function<void()>& action)
{
    testing::internal::CaptureStderr();
    action();
    std::fflush(stderr);
    return testing::internal::GetCapturedStderr();
}

} // namespace Support
