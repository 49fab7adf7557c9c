#include "PlainListener.h"

#include "support/FileLock.h"

#include <Faultkeeper/FaultkeeperAPI.h>

#include <gtest/gtest.h>

#include <poll.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

using namespace Faultkeeper;

namespace
{
const std::pair<int, int> kNoData(265243, 2); // Positioning, GPS, No Data

std::string RaiseBytes(int number)
{
    return "d4:argsli265243ei2ei0ee4:name10:RaiseError3:seqi" + std::to_string(number) + "ee";
}

std::string ClearBytes(int number)
{
    return "d4:argsli265243ei2ee4:name10:ClearError3:seqi" + std::to_string(number) + "ee";
}

/// Nobody else is on port 5300 meanwhile.
class ClientWireTest : public testing::Test
{
protected:
    const Support::CPortLock m_lock;
};

// Asks again and again; the pause only keeps the machine free.
void Await(const char* what, const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error(std::string("waited too long for ") + what);
        poll(nullptr, 0, 5);
    }
}

void AwaitConnection(CFaultkeeperAPI& api)
{
    Await("the connection", [&] { return api.VerifyConnection(); });
}
} // namespace

TEST_F(ClientWireTest, TheFirstReportNeedsNoWaitingWhenTheOwnerIsThere)
{
    CPlainListener owner;
    CFaultkeeperAPI api;
    EXPECT_EQ(api.RaiseError(kNoData, false), 1);
    owner.Accept();
    owner.ReadIntroduction();
    EXPECT_EQ(owner.Read(RaiseBytes(1).size()), "d4:argsli265243ei2ei0ee4:name10:RaiseError3:seqi1ee");
}

TEST_F(ClientWireTest, RaisesAndClearsFollowEachOtherByteForByte)
{
    CPlainListener owner;
    auto api = std::make_unique<CFaultkeeperAPI>();
    AwaitConnection(*api);
    EXPECT_EQ(api->RaiseError(kNoData, true), 1);
    EXPECT_EQ(api->RaiseError(kNoData, true), 0);
    EXPECT_EQ(api->ClearError(kNoData), 1);
    EXPECT_EQ(api->ClearError(-1, eptUnknown, false), 1);
    api.reset();
    owner.Accept();
    owner.ReadIntroduction();
    const std::string expected = "d4:argsli265243ei2ei0ee4:name10:RaiseError3:seqi1ee"
                                 "d4:argsli265243ei2ee4:name10:ClearError3:seqi2ee"
                                 "d4:argsli-1ei21ee4:name10:ClearError3:seqi3ee";
    EXPECT_EQ(owner.Read(expected.size()), expected);
    EXPECT_TRUE(owner.Ended());
}

TEST_F(ClientWireTest, WithoutAnOwnerReportsReturnMinus1)
{
    CFaultkeeperAPI api;
    EXPECT_EQ(api.RaiseError(kNoData, false), -1);
    EXPECT_EQ(api.ClearError(kNoData), -1);
    EXPECT_EQ(api.RaiseError(kNoData.first, eptUnknown, false, false), -1);
}

TEST_F(ClientWireTest, TheQueueIsSentInOrderOnceTheOwnerAppears)
{
    CFaultkeeperAPI api;
    ASSERT_EQ(api.RaiseError(kNoData, false), -1);
    ASSERT_EQ(api.ClearError(kNoData), -1);
    CPlainListener owner;
    Await("the client",
          [&]
          {
              api.ProcessQueuedErrors();
              return owner.Waiting();
          });
    owner.Accept();
    AwaitConnection(api);
    api.ProcessQueuedErrors();
    owner.ReadIntroduction();
    EXPECT_EQ(owner.Read(RaiseBytes(1).size() + ClearBytes(2).size()), RaiseBytes(1) + ClearBytes(2));
}

TEST_F(ClientWireTest, TheQueueIsSentBehindTheFirstReportThatGetsThrough)
{
    CFaultkeeperAPI api;
    ASSERT_EQ(api.RaiseError(kNoData, false), -1);
    CPlainListener owner;
    Await("the connection", [&] { return api.ClearError(7, eptUnknown, false) == 1; });
    EXPECT_EQ(api.ClearError(7, eptUnknown, true), 0);
    owner.Accept();
    owner.ReadIntroduction();
    const std::string expected = "d4:argsli7ei21ee4:name10:ClearError3:seqi1ee" + RaiseBytes(2);
    EXPECT_EQ(owner.Read(expected.size()), expected);
}

TEST_F(ClientWireTest, ALostOwnerIsNoticedByTheNextReport)
{
    CPlainListener owner;
    CFaultkeeperAPI api;
    AwaitConnection(api);
    owner.Accept();
    owner.HangUp();
    Await("the loss", [&] { return !api.Connected(); });
    // Whether it has connected again by now or not, the message does not go to the lost connection.
    Await("a new connection",
          [&] { return api.RaiseError(kNoData.first, static_cast<EProblemType>(2), false, false) == 1; });
    owner.Accept();
    owner.ReadIntroduction();
    EXPECT_EQ(owner.Read(RaiseBytes(1).size()), RaiseBytes(1));
}

TEST_F(ClientWireTest, AnOwnerThatStartsAnewGetsWhatWasReportedMeanwhile)
{
    auto owner = std::make_unique<CPlainListener>();
    CFaultkeeperAPI api;
    ASSERT_EQ(api.RaiseError(kNoData, false), 1);
    owner->Accept();
    const std::string session = owner->ReadIntroduction();
    ASSERT_EQ(owner->Read(RaiseBytes(1).size()), RaiseBytes(1));
    owner.reset();
    Await("the loss", [&] { return !api.VerifyConnection(); });
    EXPECT_EQ(api.ClearError(kNoData), -1);
    owner = std::make_unique<CPlainListener>();
    AwaitConnection(api);
    api.ProcessQueuedErrors();
    owner->Accept();
    EXPECT_EQ(owner->ReadIntroduction(), session);
    EXPECT_EQ(owner->Read(ClearBytes(2).size()), ClearBytes(2));
}

TEST_F(ClientWireTest, AnOwnerThatKeepsAccountLosesNothingByBeingReplaced)
{
    auto owner = std::make_unique<CPlainListener>();
    CFaultkeeperAPI api;
    ASSERT_EQ(api.RaiseError(kNoData, false), 1);
    owner->Accept();
    owner->ReadIntroduction();
    owner->Say("d7:welcomei0ee");
    Await("the welcome",
          [&]
          {
              api.ProcessMessages(false);
              return api.Welcomed();
          });
    owner.reset();
    Await("the loss",
          [&]
          {
              api.ProcessMessages(false);
              return !api.Connected();
          });
    EXPECT_EQ(api.ClearError(kNoData), 1) << "it will arrive";
    EXPECT_EQ(api.ClearError(kNoData), 0);
    owner = std::make_unique<CPlainListener>();
    Await("the client",
          [&]
          {
              api.ProcessMessages(false);
              return owner->Waiting();
          });
    owner->Accept();
    owner->ReadIntroduction();
    owner->Say("d7:welcomei0ee");
    EXPECT_FALSE(api.WaitUntilAcknowledged(100));
    EXPECT_EQ(owner->Read(RaiseBytes(1).size() + ClearBytes(2).size()), RaiseBytes(1) + ClearBytes(2));
    owner->Say("d3:acki2ee");
    EXPECT_TRUE(api.WaitUntilAcknowledged(30000));
}

namespace
{
/// Its hooks fail when they are told to.
class CFailing : public CFaultkeeperAPI
{
public:
    void DataSent() override { Fail(dataSentFails, "sent"); }
    bool Connected() override
    {
        Fail(looksFail && WaitingCount() > 0, "looked");
        return CFaultkeeperAPI::Connected();
    }

    bool dataSentFails = false;
    bool looksFail = false; // between two messages that are gathered

private:
    static void Fail(bool fails, const char* what)
    {
        if (fails)
            throw std::runtime_error(what);
    }
};

std::string FailureOf(CFaultkeeperAPI& api)
{
    try
    {
        api.ProcessQueuedErrors();
    }
    catch (const std::runtime_error& failure)
    {
        return failure.what();
    }
    return "none";
}
} // namespace

TEST_F(ClientWireTest, AHookThatThrowsWhenTheQueueIsSentThrowsToTheCaller)
{
    CFailing api;
    ASSERT_EQ(api.RaiseError(kNoData, false), -1);
    ASSERT_EQ(api.ClearError(kNoData), -1);
    CPlainListener owner;
    AwaitConnection(api);
    api.dataSentFails = true;
    EXPECT_EQ(FailureOf(api), "sent");
    api.dataSentFails = false;
    EXPECT_EQ(FailureOf(api), "none");
    EXPECT_EQ(api.RaiseError(kNoData, false), 1);
    owner.Accept();
    owner.ReadIntroduction();
    const std::string expected = RaiseBytes(1) + ClearBytes(2) + RaiseBytes(3);
    EXPECT_EQ(owner.Read(expected.size()), expected) << "each once, and none gathered any more";
}

TEST_F(ClientWireTest, OfTwoHooksThatThrowWhenTheQueueIsSentTheFirstIsTold)
{
    CFailing api;
    ASSERT_EQ(api.RaiseError(kNoData, false), -1);
    ASSERT_EQ(api.ClearError(kNoData), -1);
    CPlainListener owner;
    AwaitConnection(api);
    api.dataSentFails = true;
    api.looksFail = true;
    EXPECT_EQ(FailureOf(api), "looked");
    EXPECT_EQ(api.SentCount(), 1u) << "the batch was ended";
    api.dataSentFails = false;
    api.looksFail = false;
    EXPECT_EQ(FailureOf(api), "none");
    owner.Accept();
    owner.ReadIntroduction();
    EXPECT_EQ(owner.Read(RaiseBytes(1).size() + ClearBytes(2).size()), RaiseBytes(1) + ClearBytes(2));
}
