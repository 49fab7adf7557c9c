// Where a batch ends, and what one connection costs another.
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "host/connections/ServerFixture.h"
#include "host/connections/SessionsHandler.h"

namespace
{

using HostTest::CRawConnection;
using HostTest::Eventually;
using HostTest::kPlain;
using HostTest::kShortest;

using HostServerBatches = HostTest::CServerFixture<HostTest::CSessionsHandler>;

TEST_F(HostServerBatches, BatchesEndWithTheInputOrAfter1024Notifications)
{
    CRawConnection connection = Connect();
    std::string many;
    for (int count = 0; count < 3000; ++count)
        many += kShortest; // 54 kB, which one read takes
    connection.Send(many);
    ASSERT_TRUE(Eventually([&] { return HostTest::HasInput(m_server.Descriptor(), 0); }));
    EXPECT_TRUE(ServeUntil([&] { return m_handler.counts[1] == 3000; }));
    int before = 0;
    for (const int count : m_handler.batches)
    {
        EXPECT_LE(count - before, 1024);
        before = count;
    }
    EXPECT_EQ(before, 3000) << "the last notification is followed by the end of its batch";
    EXPECT_GE(m_handler.batches.size(), 3u);
}

TEST_F(HostServerBatches, ABatchEndsBeforeARefusalIsTold)
{
    CRawConnection connection = Connect();
    connection.Send(std::string(kPlain) + "nonsense");
    EXPECT_TRUE(ServeUntil([&] { return Has(1, "disconnected\n"); }));
    EXPECT_EQ(m_handler.logs[1].find("0 x number 0\nbatch\nrefused at 19: "), 0u);
}

TEST_F(HostServerBatches, TheDescriptorHasInputWhileSomethingIsLeftOver)
{
    CRawConnection connection = Connect();
    std::string many;
    for (int count = 0; count < 2500; ++count)
        many += kShortest;
    connection.Send(many);
    ASSERT_TRUE(Eventually([&] { return HostTest::HasInput(m_server.Descriptor(), 0); }));
    while (m_handler.counts[1] < 2500)
    {
        ASSERT_TRUE(HostTest::HasInput(m_server.Descriptor(), 30000)) << m_handler.counts[1];
        ASSERT_LE(m_server.Serve(0), 1024);
    }
    EXPECT_FALSE(HostTest::HasInput(m_server.Descriptor(), 0));
}

TEST_F(HostServerBatches, AFloodDelaysAnotherByOneBatchAtMost)
{
    CRawConnection flood = Connect();
    CRawConnection other = Connect();
    std::string many;
    for (int count = 0; count < 10000; ++count)
        many += kShortest;
    int afterTheOther = -1; // of the flood, since the other's notification was on its way
    bool sent = false;
    m_handler.onNotification = [&](const MPIPeerC& peer)
    {
        if (peer.connection == 2)
            return;
        if (sent && m_handler.counts[2] == 0)
            ++afterTheOther;
        if (!sent && m_handler.counts[1] == 100)
        {
            other.Send(kPlain);
            sent = true;
        }
    };
    for (int turn = 0; m_handler.counts[2] == 0; ++turn)
    {
        many.erase(0, flood.SendSome(many));
        ASSERT_GE(m_server.Serve(0), 0);
        ASSERT_LT(turn, 10000);
    }
    EXPECT_LE(afterTheOther, 1024);
    EXPECT_GE(afterTheOther, 100) << "it did flood";
}

} // namespace
