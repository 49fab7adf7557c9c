#include "FakeHostTest.h"

#include <stdexcept>

using namespace Faultkeeper;

namespace
{
constexpr EProblemType kType = eptDataErraticAndIntermittentlyIncorrect;

std::pair<int, int> Id(int code)
{
    return {code, 2};
}

/// A client that has lost its owner.
class QueueTest : public FakeHostTest
{
protected:
    QueueTest() { m_host.connected = false; }

    void Connect()
    {
        m_host.connected = true;
        FakeHost::TakeCalls();
    }

    /// Queues a raise of each code.
    void QueueRaises(const std::vector<int>& codes)
    {
        for (const int code : codes)
            ASSERT_EQ(m_api->RaiseError(Id(code), false), -1);
    }

    /// What one more drain of the queue does.
    std::string Drained()
    {
        FakeHost::TakeCalls();
        m_api->ProcessQueuedErrors();
        return FakeHost::TakeCalls();
    }
};
} // namespace

TEST_F(QueueTest, ARaiseWithoutConnectionReturnsMinus1AfterOneCheckAndIsQueued)
{
    EXPECT_EQ(m_api->RaiseError(Id(1), false), -1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify false\n");
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)"));
}

TEST_F(QueueTest, AClearWithoutConnectionReturnsMinus1AfterOneCheckAndIsQueued)
{
    EXPECT_EQ(m_api->ClearError(Id(1)), -1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify false\n");
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("ClearError(1, 2)"));
}

TEST_F(QueueTest, ARaiseWithoutConnectionThatMayNotBeQueuedIsGone)
{
    EXPECT_EQ(m_api->RaiseError(1, kType, true, false), -1);
    EXPECT_EQ(m_api->ClearError(1, kType, false), -1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify false\nverify false\n");
    Connect();
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, WhatWasNotSentDoesNotCountAsSent)
{
    EXPECT_EQ(m_api->RaiseError(1, kType, false, false), -1);
    Connect();
    EXPECT_EQ(m_api->RaiseError(1, kType, false, false), 1);
}

TEST_F(QueueTest, TheNextRaiseInPairFormSendsTheQueueInOrderBehindItself)
{
    QueueRaises({3, 1, 2});
    Connect();
    EXPECT_EQ(m_api->RaiseError(Id(9), false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(9, 2, 0)") + "verify true\n" +
                                         "verify true\n" + Sent("RaiseError(3, 2, 0)") + "verify true\n" +
                                         Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                                         Sent("RaiseError(2, 2, 0)"));
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, TheNextClearInPairFormSendsTheQueueInOrderBehindItself)
{
    QueueRaises({1});
    ASSERT_EQ(m_api->ClearError(Id(2)), -1);
    Connect();
    EXPECT_EQ(m_api->ClearError(Id(9)), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("ClearError(9, 2)") + "verify true\n" +
                                         "verify true\n" + Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                                         Sent("ClearError(2, 2)"));
}

TEST_F(QueueTest, ARaiseOrClearThatMayNotQueueLeavesTheQueueAlone)
{
    QueueRaises({1});
    Connect();
    EXPECT_EQ(m_api->RaiseError(9, kType, false, false), 1);
    EXPECT_EQ(m_api->RaiseError(9, kType, false, false), 0);
    EXPECT_EQ(m_api->ClearError(9, kType, false), 1);
    EXPECT_EQ(m_api->ClearError(9, kType, false), 0);
    EXPECT_EQ(FakeHost::TakeCalls(),
              "verify true\n" + Sent("RaiseError(9, 2, 0)") + "verify true\n" + Sent("ClearError(9, 2)"));
}

TEST_F(QueueTest, ARepeatSendsTheQueueToo)
{
    m_host.answers = {true};
    ASSERT_EQ(m_api->RaiseError(Id(9), false), 1);
    QueueRaises({1});
    Connect();
    EXPECT_EQ(m_api->RaiseError(Id(9), false), 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)"));
}

TEST_F(QueueTest, ARaiseThenAClearAreBothQueuedAndSentInThatOrder)
{
    ASSERT_EQ(m_api->RaiseError(Id(1), false), -1);
    ASSERT_EQ(m_api->ClearError(Id(1)), -1);
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                             Sent("ClearError(1, 2)"));
}

TEST_F(QueueTest, ASecondRaiseOfWhatWasSentAsRaisedIsDroppedEvenWithoutConnection)
{
    m_host.answers = {true};
    ASSERT_EQ(m_api->RaiseError(Id(1), false), 1);
    FakeHost::TakeCalls();
    EXPECT_EQ(m_api->RaiseError(Id(1), false), 0);
    EXPECT_EQ(FakeHost::TakeCalls(), "");
    Connect();
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, AnEmptyQueueIsDrainedWithoutLookingAtTheConnection)
{
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, AQueueWithoutConnectionCostsOneCheckAndStays)
{
    QueueRaises({1, 2});
    EXPECT_EQ(Drained(), "verify false\n");
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                             Sent("RaiseError(2, 2, 0)"));
}

TEST_F(QueueTest, EventsAlreadyInThatStateLeaveTheQueueUnsent)
{
    QueueRaises({1, 1, 2});
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                             Sent("RaiseError(2, 2, 0)"));
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, EventsThatMeetALostConnectionStayInOrderWhileTheWalkGoesOnToTheEnd)
{
    QueueRaises({1, 2, 3, 4, 5});
    m_host.answers = {true, true, false, true, false, false};
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)") +
                             "verify false\nverify true\n" + Sent("RaiseError(3, 2, 0)") +
                             "verify false\nverify false\n");
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(2, 2, 0)") + "verify true\n" +
                             Sent("RaiseError(4, 2, 0)") + "verify true\n" + Sent("RaiseError(5, 2, 0)"));
}

TEST_F(QueueTest, ANewEventComesBehindThoseThatStayed)
{
    QueueRaises({1, 2});
    m_host.answers = {true, false, false};
    ASSERT_EQ(Drained(), "verify true\nverify false\nverify false\n");
    QueueRaises({3});
    Connect();
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                             Sent("RaiseError(2, 2, 0)") + "verify true\n" + Sent("RaiseError(3, 2, 0)"));
}

TEST_F(QueueTest, AConnectionLostBetweenAMessageAndTheQueueCostsTheMessageNothing)
{
    QueueRaises({1});
    m_host.answers = {true, false};
    FakeHost::TakeCalls();
    EXPECT_EQ(m_api->RaiseError(Id(9), false), 1);
    EXPECT_EQ(FakeHost::TakeCalls(), "verify true\n" + Sent("RaiseError(9, 2, 0)") + "verify false\n");
}

TEST_F(QueueTest, AHostThatDrainsTheQueueFromWithinADrainSendsEveryEventOnce)
{
    QueueRaises({1, 2});
    Connect();
    m_host.onVerify = [&] { m_api->ProcessQueuedErrors(); };
    m_host.onSend = m_host.onVerify;
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(1, 2, 0)") + "verify true\n" +
                             Sent("RaiseError(2, 2, 0)"));
    EXPECT_EQ(Drained(), "");
    m_host.onVerify = nullptr;
    m_host.onSend = nullptr;
}

TEST_F(QueueTest, WhatAHostQueuesFromWithinADrainIsWalkedOverToo)
{
    QueueRaises({1});
    Connect();
    m_host.answers = {true, true, false, true};
    m_host.onSend = [&]
    {
        m_host.onSend = nullptr;
        EXPECT_EQ(m_api->RaiseError(Id(2), false), -1);
    };
    EXPECT_EQ(Drained(), "verify true\nverify true\nsend RaiseError(1, 2, 0)\nverify false\n"
                         "list destroyed\nlist deleted\nverify true\n" +
                             Sent("RaiseError(2, 2, 0)"));
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, ASendThatThrowsDuringADrainKeepsTheQueueUsable)
{
    QueueRaises({1, 2});
    Connect();
    m_host.onSend = [] { throw std::runtime_error("no memory left"); };
    EXPECT_THROW(m_api->ProcessQueuedErrors(), std::runtime_error);
    m_host.onSend = nullptr;
    EXPECT_EQ(Drained(), "verify true\nverify true\n" + Sent("RaiseError(2, 2, 0)")); // 1 counts as sent
    EXPECT_EQ(Drained(), "");
}

TEST_F(QueueTest, WhatADrainHasSentBeforeASendThatThrowsIsNotSentAgain)
{
    QueueRaises({1});
    EXPECT_EQ(m_api->ClearError(Id(1)), -1);
    QueueRaises({2});
    Connect();
    int sends = 0;
    m_host.onSend = [&]
    {
        if (++sends == 3)
            throw std::runtime_error("no memory left");
    };
    EXPECT_THROW(m_api->ProcessQueuedErrors(), std::runtime_error);
    m_host.onSend = nullptr;
    EXPECT_EQ(Drained(), "verify true\n"); // 2 counts as sent
    EXPECT_EQ(Drained(), "");
}
