#include "faultkeeperctl/check/CheckReport.h"

#include "Common/database/ConfigurationRules.h"

#include "RandomConfiguration.h"

#include "support/FreshDirectory.h"
#include "system/ChildProcess.h"

#include <Faultkeeper/ErrorDatabase.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace
{

using namespace Faultkeeper::Apps;

constexpr int kConfigurations = 25; // for each seed
constexpr int kAborted = 128 + SIGABRT;

/// What a process says that loads the configuration in the working directory.
struct SLoaded
{
    int status;
    std::string errors;
};

SLoaded Load()
{
    Support::CChildProcess loading(
        []
        {
            const rlimit none = {0, 0}; // of a core file
            setrlimit(RLIMIT_CORE, &none);
            if (std::freopen("errors", "w", stderr) == nullptr)
                return 1;
            const Faultkeeper::CErrorDatabase database("");
            return std::fflush(stderr);
        });
    const int status = loading.Wait();
    return {status, Support::ReadFile("errors")};
}

/// As the C library tells it.
std::string Assertion(const SCheckFinding& finding)
{
    return ": src/Common/ErrorDatabase:" + std::to_string(finding.rule->line) + ": " +
           finding.rule->function + ": Assertion `" + finding.rule->condition + "' failed.\n";
}

bool Tells(const SCheckResult& result, const std::string& what)
{
    return std::any_of(result.findings.begin(), result.findings.end(),
                       [&what](const SCheckFinding& finding)
                       { return finding.what.text.find(what) != std::string::npos; });
}

bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

void ExpectAgreement(const SCheckResult& checked, const SLoaded& loaded)
{
    const SCheckFinding* const first = checked.FirstBrokenRule();
    if (first != nullptr)
    {
        EXPECT_EQ(loaded.status, kAborted);
        EXPECT_TRUE(Holds(loaded.errors, Assertion(*first))) << loaded.errors << "\n" << first->Line();
        return;
    }
    EXPECT_EQ(loaded.status, 0) << loaded.errors;
    EXPECT_EQ(Holds(loaded.errors, "is part of a cycle"), Tells(checked, "in a circle"));
    EXPECT_EQ(Holds(loaded.errors, "links to itself"), Tells(checked, "links to itself"));
}

class CheckAgreementTest : public testing::TestWithParam<unsigned>
{
};

TEST_P(CheckAgreementTest, ABrokenRuleIsFoundExactlyIfLoadingEndsTheProcessOverIt)
{
    CheckCases::CRandomConfiguration random(GetParam());
    int broken = 0;
    for (int number = 0; number < kConfigurations; ++number)
    {
        const Support::CFreshDirectory directory;
        const Support::CWorkingDirectory inside(directory.Path());
        random.Write(number % 4); // edits
        const SCheckResult checked = CheckConfiguration("", 0);
        SCOPED_TRACE("configuration " + std::to_string(number) + "\n" + CheckText(checked));
        ExpectAgreement(checked, Load());
        ASSERT_FALSE(HasFailure());
        broken += checked.FirstBrokenRule() != nullptr ? 1 : 0;
    }
    EXPECT_GT(broken, 0) << "nothing was tried";
    EXPECT_LT(broken, kConfigurations) << "nothing was loaded";
}

INSTANTIATE_TEST_SUITE_P(Seeds, CheckAgreementTest, testing::Range(0U, 20U));

} // namespace
