// Campaigns against real processes that are killed at random: see scripts/campaign.

#include "campaign/runs/Campaigns.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace
{
struct SCampaign
{
    const char* name;
    bool (*run)(int rounds, unsigned seed);
};

constexpr SCampaign kCampaigns[] = {
    {"owner", &Campaign::RunOwners},   {"hierarchy", &Campaign::RunHierarchy},
    {"reader", &Campaign::RunReaders}, {"reporter", &Campaign::RunReporters},
    {"tight", &Campaign::RunTight},    {"garbage", &Campaign::RunGarbage},
    {"load", &Campaign::RunLoad},
};

constexpr int kUsage = 2;
} // namespace

int main(int argumentCount, char** arguments)
{
    const char* const name = argumentCount > 1 ? arguments[1] : "";
    const int rounds = argumentCount > 2 ? std::atoi(arguments[2]) : 0;
    const auto seed = static_cast<unsigned>(argumentCount > 3 ? std::atoi(arguments[3]) : 1);
    try
    {
        for (const SCampaign& campaign : kCampaigns)
        {
            if (std::strcmp(name, campaign.name) == 0 && rounds > 0)
                return campaign.run(rounds, seed) ? 0 : 1;
        }
    }
    catch (const std::exception& failure)
    {
        std::fprintf(stderr, "faultkeeper_campaign: %s\n", failure.what());
        return 1;
    }
    std::fprintf(stderr, "usage: faultkeeper_campaign CAMPAIGN ROUNDS [SEED], see scripts/campaign\n");
    return kUsage;
}
