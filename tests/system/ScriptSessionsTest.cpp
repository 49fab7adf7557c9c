// What scripts see that introduce themselves and number what they send, as the library's clients do.
#include "SystemFixture.h"

#include <gtest/gtest.h>

using namespace Support;

namespace
{
constexpr std::size_t kHalf = 11; // of a welcome, which tells that the rest was read, too
constexpr int kRounds = 20;       // the store is busy with what came before in most of them

class ScriptSessions : public SystemTest
{
protected:
    /// The introduction of a session of its own for each number.
    static std::string Hello(int session)
    {
        const std::string digits = std::to_string(session);
        return "d4:argsl32:" + std::string(32 - digits.size(), '0') + digits + "e4:name5:Helloe";
    }

    static std::string Raise(const std::string& number)
    {
        return "d4:argsli265225ei9ei0ee4:name10:RaiseError3:seqi" + number + "ee";
    }

    static std::string Clear(const std::string& number)
    {
        return "d4:argsli265225ei9ee4:name10:ClearError3:seqi" + number + "ee";
    }
};
} // namespace

TEST_F(ScriptSessions, OneThatEndsSendingIsAcknowledgedAtOnce)
{
    const auto owner = StartOwner();
    for (int round = 0; round < kRounds; ++round)
    {
        const CRawConnection script;
        script.Send(Hello(round) + Raise("1") + Clear("2"));
        const std::string begin = script.Received(round % 2 == 0 ? 0 : kHalf);
        script.EndSending();
        EXPECT_EQ(begin + script.Received(), "d7:welcomei0eed3:acki2ee") << round;
    }
    EXPECT_EQ(Record(kLinkSensor).counter1, kRounds);
}

TEST_F(ScriptSessions, OneThatEndsSendingWhileItsAcknowledgementWaitsForAPauseGetsIt)
{
    const auto owner = StartOwner({"--state", "none"});
    for (int round = 0; round < kRounds; ++round)
    {
        const CRawConnection script;
        script.Send(Hello(round) + Raise("1") + Clear("2"));
        EXPECT_TRUE(WaitUntil([&] { return Record(kLinkSensor).counter1 == round + 1; }));
        script.EndSending();
        EXPECT_EQ(script.Received(), "d7:welcomei0eed3:acki2ee") << round;
    }
}

TEST_F(ScriptSessions, OneThatComesAgainIsWelcomedWithAllThatItHasSent)
{
    const auto owner = StartOwner();
    for (int round = 0; round < kRounds; ++round)
    {
        {
            const CRawConnection script;
            script.Send(Hello(round) + Raise("1") + Clear("2"));
            EXPECT_TRUE(WaitUntil([&] { return Record(kLinkSensor).counter1 == round + 1; }));
        }
        const CRawConnection script;
        script.Send(Hello(round));
        EXPECT_EQ(script.Received(14), "d7:welcomei2ee") << round;
    }
}

TEST_F(ScriptSessions, WhatIsSentAgainIsAppliedOnceAlsoOnTheSameConnection)
{
    const auto owner = StartOwner();
    const CRawConnection script;
    script.Send(Hello(1) + Raise("1") + Clear("2") + Raise("1") + Clear("2") + Raise("3") + Raise("3"));
    EXPECT_EQ(script.Received(24), "d7:welcomei0eed3:acki3ee");
    EXPECT_EQ(Record(kLinkSensor).counter1, 2);
    CDisplay display(Configuration());
    EXPECT_TRUE(display.ShowsInTime({kLinkSensor, kReceiver, kPosition}));
    script.Send(Clear("2") + Clear("4"));
    EXPECT_EQ(script.Received(10), "d3:acki4ee");
    EXPECT_TRUE(display.ShowsInTime({}));
    EXPECT_EQ(owner->Errors().find("connection closed"), std::string::npos) << owner->Errors();
}
