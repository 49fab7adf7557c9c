#include "FakeHostTest.h"

#include <climits>
#include <new>
#include <stdexcept>

using namespace Faultkeeper;

namespace
{
constexpr int kCode = 265243; // Positioning, GPS, No Data
constexpr EProblemType kType = eptDataErraticAndIntermittentlyIncorrect;
const std::pair<int, int> kId(265243, 2);

typedef FakeHostTest ClientTest;
} // namespace

TEST(ClientConstruction, AsksOnceForTheOwnerOnPort5300AndDoesNotWait)
{
    FakeHost::Reset();
    const CFaultkeeperAPI api;
    EXPECT_EQ(FakeHost::TakeCalls(), "MPISocketClientC true\nConnect localhost 5300 -1\n");
}

TEST(ClientConstruction, ARefusedConnectionLeavesTheClientAsUsefulAsAnyOther)
{
    FakeHost::Reset();
    FakeHost::State().connects = false;
    CFaultkeeperAPI api;
    EXPECT_EQ(api.RaiseError(kCode, kType, false, false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "MPISocketClientC true\nConnect localhost 5300 -1\n"
                                     "verify true\n" +
                                         Sent("RaiseError(265243, 2, 0)"));
}

TEST(ClientDestruction, DropsTheQueueWithoutSendingIt)
{
    FakeHost::Reset();
    {
        CFaultkeeperAPI api;
        FakeHost::State().connected = false;
        ASSERT_EQ(api.RaiseError(kId, false), -1);
        ASSERT_EQ(api.ClearError(kId), -1);
        FakeHost::State().connected = true;
        FakeHost::TakeCalls();
    }
    EXPECT_EQ(FakeHost::TakeCalls(), "~MPISocketClientC\n");
}

TEST_F(ClientTest, ARaiseIsSentAsCodeTypeAndZero)
{
    EXPECT_EQ(m_api->RaiseError(kCode, kType, false, false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n"
                                     "send RaiseError(265243, 2, 0)\nlist destroyed\nlist deleted\n");
}

TEST_F(ClientTest, AClearIsSentAsCodeAndTypeOnly)
{
    EXPECT_EQ(m_api->ClearError(kCode, kType, false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n"
                                     "send ClearError(265243, 2)\nlist destroyed\nlist deleted\n");
}

TEST_F(ClientTest, ThePairFormsSendTheSameMessages)
{
    EXPECT_EQ(m_api->RaiseError(kId, true), 1);
    EXPECT_EQ(m_api->ClearError(kId), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)") + "verify true\n" +
                                         Sent("ClearError(265243, 2)"));
}

TEST_F(ClientTest, NumbersOutsideEveryTableAreSentAsTheyAre)
{
    EXPECT_EQ(m_api->RaiseError({INT_MIN, INT_MAX}, true), 1);
    EXPECT_EQ(m_api->ClearError({-1, -2}), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(-2147483648, 2147483647, 0)") +
                                         "verify true\n" + Sent("ClearError(-1, -2)"));
}

TEST_F(ClientTest, TheSecondOfTwoRaisesReturns0AndSendsNothing)
{
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    FakeHost::TakeCalls();
    EXPECT_EQ(m_api->RaiseError(kId, false), 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "");
}

TEST_F(ClientTest, TheSecondOfTwoClearsReturns0AndSendsNothing)
{
    EXPECT_EQ(m_api->ClearError(kId), 1);
    FakeHost::TakeCalls();
    EXPECT_EQ(m_api->ClearError(kId), 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "");
}

TEST_F(ClientTest, TheFirstClearOfAnErrorThatWasNeverRaisedIsSent)
{
    EXPECT_EQ(m_api->ClearError(kId), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("ClearError(265243, 2)"));
}

TEST_F(ClientTest, RaiseAndClearInTurnAreAllSent)
{
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    EXPECT_EQ(m_api->ClearError(kId), 1);
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)") + "verify true\n" +
                                         Sent("ClearError(265243, 2)") + "verify true\n" +
                                         Sent("RaiseError(265243, 2, 0)"));
}

TEST_F(ClientTest, TheSameProblemWithAnotherFailureModeIsAnotherError)
{
    EXPECT_EQ(m_api->RaiseError({265243, 2}, false), 1);
    EXPECT_EQ(m_api->RaiseError({265243, 3}, false), 1);
    EXPECT_EQ(m_api->RaiseError({265244, 2}, false), 1);
    EXPECT_EQ(m_api->RaiseError({265243, 2}, false), 0);
}

TEST_F(ClientTest, BothFormsShareWhatWasSentLast)
{
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    EXPECT_EQ(m_api->RaiseError(kCode, kType, false, false), 0);
    EXPECT_EQ(m_api->ClearError(kCode, kType, false), 1);
    EXPECT_EQ(m_api->ClearError(kId), 0);
}

TEST_F(ClientTest, TheThirdArgumentOfARaiseHasNoEffect)
{
    EXPECT_EQ(m_api->RaiseError(kCode, kType, true, false), 1);
    EXPECT_EQ(m_api->RaiseError(kCode, kType, false, false), 0);
    EXPECT_EQ(m_api->ClearError(kCode, kType, false), 1);
    EXPECT_EQ(m_api->RaiseError(kCode, kType, false, false), 1);
    EXPECT_EQ(m_api->RaiseError(kCode, kType, true, false), 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)") + "verify true\n" +
                                         Sent("ClearError(265243, 2)") + "verify true\n" +
                                         Sent("RaiseError(265243, 2, 0)"));
}

TEST_F(ClientTest, TheThirdArgumentDoesNotDecideAboutQueueing)
{
    m_host.connected = false;
    EXPECT_EQ(m_api->RaiseError(kCode, kType, true, false), -1);
    m_host.connected = true;
    FakeHost::TakeCalls();
    m_api->ProcessQueuedErrors();
    EXPECT_EQ(FakeHost::TakeCalls(), "");
}

TEST_F(ClientTest, SilentModeMutesThePairForms)
{
    m_api->SilentMode(true);
    EXPECT_EQ(m_api->RaiseError(kId, true), 0);
    EXPECT_EQ(m_api->ClearError(kId), 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "");
}

TEST_F(ClientTest, SilentModeLeavesTheFormsWithCodeAndTypeAlone)
{
    m_api->SilentMode(true);
    EXPECT_EQ(m_api->RaiseError(kCode, kType, false, true), 1);
    EXPECT_EQ(m_api->ClearError(kCode, kType, true), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)") + "verify true\n" +
                                         Sent("ClearError(265243, 2)"));
}

TEST_F(ClientTest, SilentModeQueuesNothingWhileThereIsNoConnection)
{
    m_host.connected = false;
    m_api->SilentMode(true);
    EXPECT_EQ(m_api->RaiseError(kId, true), 0);
    EXPECT_EQ(m_api->ClearError(kId), 0);
    m_host.connected = true;
    m_api->ProcessQueuedErrors();
    EXPECT_EQ(FakeHost::TakeCalls(), "");
}

TEST_F(ClientTest, SilentModeDoesNotHoldBackWhatWasQueuedBefore)
{
    m_host.connected = false;
    ASSERT_EQ(m_api->RaiseError(kId, true), -1);
    m_host.connected = true;
    m_api->SilentMode(true);
    FakeHost::TakeCalls();
    m_api->ProcessQueuedErrors();
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\nverify true\n" + Sent("RaiseError(265243, 2, 0)"));
}

TEST_F(ClientTest, SilentModeSwitchedOffLetsThePairFormsSpeakAgain)
{
    m_api->SilentMode(true);
    m_api->SilentMode(false);
    EXPECT_EQ(m_api->RaiseError(kId, true), 1);
}

TEST_F(ClientTest, ASendThatThrowsLeavesTheNewStateNoted)
{
    m_host.onSend = [] { throw std::runtime_error("no memory left"); };
    EXPECT_THROW(m_api->RaiseError(kId, false), std::runtime_error);
    m_host.onSend = nullptr;
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)"));
    EXPECT_EQ(m_api->RaiseError(kId, false), 0);
    EXPECT_EQ(m_api->ClearError(kId), 1);
}

TEST_F(ClientTest, AMessageThatThereIsNoMemoryForIsNotNotedAsSent)
{
    m_host.onList = [] { throw std::bad_alloc(); };
    EXPECT_THROW(m_api->RaiseError(kId, false), std::bad_alloc);
    m_host.onList = nullptr;
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n");
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)"));
}

TEST_F(ClientTest, ARepeatFromWithinTheSendIsFoundToBeOne)
{
    int inner = -2;
    m_host.onSend = [&] { inner = m_api->RaiseError(kId, false); };
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    EXPECT_EQ(inner, 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(265243, 2, 0)"));
}

TEST_F(ClientTest, ASendThatFailsInsideTheHostCountsAsSent)
{
    m_host.answers = {true}; // and SendNotification answers no
    m_host.connected = false;
    EXPECT_EQ(m_api->RaiseError(kId, false), 1);
    EXPECT_EQ(m_api->RaiseError(kId, false), 0);
}
