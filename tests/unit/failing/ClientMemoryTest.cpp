#include "support/failing/FailingMemory.h"
#include "unit/client/PlainListener.h"

#include "support/FileLock.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <MPI/BAtomC.h>
#include <MPI/BDecoderC.h>
#include <MPI/BListC.h>

#include <gtest/gtest.h>

#include <poll.h>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace
{

using namespace Faultkeeper;
using FailingMemory::CAttempt;
using FailingMemory::FailEach;

const std::pair<int, int> kNoData(265243, 2);  // Positioning, GPS, No Data
const std::pair<int, int> kNoPower(265254, 2); // Positioning, GPS, Power

/// Nobody else is on port 5300 meanwhile.
class ClientMemoryTest : public testing::Test
{
protected:
    const Support::CPortLock m_lock;
};

void AwaitConnection(CFaultkeeperAPI& api)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!api.VerifyConnection())
    {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("waited too long for the connection");
        poll(nullptr, 0, 5);
    }
}

/// "+27 " for a raise of problem 27, "-27 " for a clear, "" for what does not concern errors.
std::string Shown(const BDictionaryC& message)
{
    const BElementC* const name = message.Find("name");
    const BElementC* const arguments = message.Find("args");
    if (name == nullptr || arguments == nullptr)
        return "";
    const std::string& verb = name->AsAtom()->Text();
    if (verb != "RaiseError" && verb != "ClearError")
        return "";
    const BAtomC* const code = arguments->AsList()->At(0)->AsAtom();
    return (verb == "RaiseError" ? "+" : "-") + std::to_string(code->Integer() & 0xFF) + " ";
}

/// Everything that the client has sent till its end.
std::string Received(CPlainListener& owner)
{
    std::string shown;
    BDecoderC decoder;
    owner.Accept();
    for (std::string rest = owner.ReadToEnd(); !rest.empty();)
    {
        rest.erase(0, decoder.Feed(rest.data(), rest.size()));
        if (decoder.Failed())
            return shown + "and then: " + decoder.FaultReason();
        if (const std::unique_ptr<BDictionaryC> message = decoder.TakeMessage())
            shown += Shown(*message);
    }
    return shown + (decoder.Incomplete() ? "and half a message" : "");
}

TEST_F(ClientMemoryTest, AClientIsMadeOrThrows)
{
    const CPlainListener owner;
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::optional<CFaultkeeperAPI> api;
            const bool ended = attempt.Run([&] { api.emplace(); });
            EXPECT_EQ(ended, api.has_value());
        });
    EXPECT_GT(failed, 0);
}

TEST_F(ClientMemoryTest, AReportIsSentWholeOrNotAtAllAndTheNextOnesAreSent)
{
    CPlainListener owner;
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::optional<CFaultkeeperAPI> api;
            api.emplace();
            AwaitConnection(*api);
            const bool ended = attempt.Run([&] { EXPECT_EQ(api->RaiseError(kNoData, true), 1); });
            EXPECT_EQ(api->ClearError(kNoData), 1);
            EXPECT_EQ(api->RaiseError(kNoData, true), 1);
            api.reset();
            const std::string received = Received(owner);
            if (ended || received != "-27 +27 ")
            {
                EXPECT_EQ(received, "+27 -27 +27 ");
            }
        });
    EXPECT_GT(failed, 3);
}

TEST_F(ClientMemoryTest, AReportThatCouldNotBeQueuedCanBeMadeAgain)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            CFaultkeeperAPI api; // nobody listens
            if (!attempt.Run([&] { EXPECT_EQ(api.RaiseError(kNoData, true), -1); }))
            {
                EXPECT_EQ(api.RaiseError(kNoData, true), -1);
            }
        });
    EXPECT_GT(failed, 0);
}

TEST_F(ClientMemoryTest, WhatADrainHasSentIsNotSentAgainAndWhatItHasNotIsSentByTheNext)
{
    const int failed = FailEach(
        [&](CAttempt& attempt)
        {
            std::optional<CFaultkeeperAPI> api;
            api.emplace();
            EXPECT_EQ(api->RaiseError(kNoData, true), -1);
            EXPECT_EQ(api->ClearError(kNoData), -1);
            EXPECT_EQ(api->RaiseError(kNoPower, true), -1);
            CPlainListener owner;
            AwaitConnection(*api);
            if (!attempt.Run([&] { api->ProcessQueuedErrors(); }))
                api->ProcessQueuedErrors();
            EXPECT_EQ(api->ClearError(kNoPower), 1);
            api.reset();
            // One message at most is lost: the one whose sending threw counts as sent.
            const std::string received = Received(owner);
            const std::string all = "+27 -27 +38 -38 ";
            bool expected = received == all;
            for (std::size_t lost = 0; lost < 12 && attempt.Met(); lost += 4)
                expected = expected || received == std::string(all).erase(lost, 4);
            EXPECT_TRUE(expected) << received;
        });
    EXPECT_GT(failed, 3);
}

} // namespace
