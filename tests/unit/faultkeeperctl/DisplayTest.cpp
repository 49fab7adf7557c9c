#include "faultkeeperctl/Display.h"

#include <gtest/gtest.h>

using namespace Faultkeeper::Apps;

TEST(StateText, NamesNoProcessWhereNobodyInParticularKeepsTheLock)
{
    STableFacts facts;
    facts.state = etsBusy;
    EXPECT_EQ(StateText(facts, "/run/x"),
              "the table in /run/x is locked again and again, so that it cannot be copied");
    facts.holder = 7;
    EXPECT_EQ(StateText(facts, "/run/x"), Describe(facts, "/run/x"));
}
