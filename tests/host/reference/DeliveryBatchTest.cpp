// Notifications that are gathered, that send others, and that are under way when their client ends.
#include <MPI/BEncoderC.h>

#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;

TEST_F(HostDelivery, ABatchIsSentAtItsEnd)
{
    m_client->BeginBatch();
    SendAll(1, 100);
    EXPECT_EQ(m_client->SentCount(), 0u);
    m_client->BeginBatch();
    SendAll(101, 101);
    m_client->EndBatch();
    EXPECT_EQ(m_client->SentCount(), 0u) << "of the outer one";
    m_client->EndBatch();
    EXPECT_EQ(m_client->SentCount(), 101u);
    EXPECT_EQ(Received(101).size(), 101u);
    m_client->EndBatch(); // one too many does no harm
    SendAll(102, 102);
    EXPECT_EQ(m_client->SentCount(), 102u);
}

TEST_F(HostDelivery, ANoHoldsToTheEndOfABatch)
{
    Say(Welcome(0));
    std::int64_t number = 0;
    while (m_client->VerifyConnection())
        ASSERT_TRUE(Send(static_cast<std::uint64_t>(++number), 1000));
    while (m_client->WaitingCount() > 0)
    {
        Peer().ReceivePending();
        m_client->ProcessMessages(false);
    }
    m_client->BeginBatch();
    ASSERT_FALSE(m_client->VerifyConnection());
    Say(Acknowledgement(number));
    ASSERT_TRUE(m_client->HasRoom());
    for (int milliseconds = 0; milliseconds < 300; milliseconds += 50)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(m_client->VerifyConnection());
    }
    m_client->EndBatch();
    EXPECT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
}

TEST_F(HostDelivery, ANoHoldsToTheEndOfABatchAlthoughTheReceiverWelcomesMeanwhile)
{
    m_client->BeginBatch();
    std::int64_t number = 0;
    while (m_client->VerifyConnection())
        ASSERT_TRUE(Send(static_cast<std::uint64_t>(++number), 1000));
    Say(Welcome(0));
    while (m_client->WaitingCount() > 0)
    {
        Peer().ReceivePending();
        m_client->ProcessMessages(false);
    }
    Say(Acknowledgement(number));
    ASSERT_TRUE(m_client->Welcomed() && m_client->HasRoom());
    EXPECT_FALSE(m_client->VerifyConnection()) << "what met a no comes first";
    m_client->EndBatch();
    EXPECT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
}

TEST_F(HostDelivery, ALargeBatchIsSentInLargePieces)
{
    m_client->BeginBatch();
    for (std::uint64_t number = 1; number <= 1000; ++number)
    {
        ASSERT_TRUE(m_client->VerifyConnection() && Send(number, 10000));
        Peer().ReceivePending();
    }
    EXPECT_GT(m_client->SentCount(), 900u);
    m_client->EndBatch();
}

/// Sends another notification on the way of the first.
class Interrupting : public MPISocketClientC
{
public:
    Interrupting() : MPISocketClientC(true) {}
    bool SendMessage(BEncoderC* message) override
    {
        const bool first = std::exchange(interrupt, false);
        EXPECT_TRUE(!first || SendNotification("inner", nullptr));
        return MPISocketClientC::SendMessage(message);
    }
    void DataSent() override
    {
        const bool first = std::exchange(answer, false);
        EXPECT_TRUE(!first || SendNotification("answer", nullptr));
    }

    bool interrupt = false;
    bool answer = false;
};

TEST_F(HostDelivery, NumbersGoUpWhateverIsSentFromWithinASending)
{
    auto client = std::make_unique<Interrupting>();
    ASSERT_TRUE(client->Connect("127.0.0.1", m_listener.Port(), 30000));
    CRawConnection peer = m_listener.Accept();
    client->answer = true;
    EXPECT_TRUE(client->SendNotification("first", nullptr));
    client->interrupt = true;
    EXPECT_FALSE(client->SendNotification("outer", nullptr)) << "its number was taken on the way";
    EXPECT_TRUE(client->SendNotification("last", nullptr));
    client.reset();
    EXPECT_EQ(peer.ReceiveToEnd().substr(58), "d4:argsle4:name5:first3:seqi1ee"
                                              "d4:argsle4:name6:answer3:seqi2ee"
                                              "d4:argsle4:name5:inner3:seqi3ee"
                                              "d4:argsle4:name4:last3:seqi4ee");
}

TEST_F(HostDelivery, TheDestructorReadsWhatIsPendingAndCutsNothingOff)
{
    Say(Welcome(0));
    LetTheSystemTakeLittle();
    std::uint64_t number = 1;
    while (m_client->BytesWaiting() == 0 && m_client->VerifyConnection())
        ASSERT_TRUE(Send(number++, 1000));
    Peer().Send(Acknowledgement(0));
    ASSERT_TRUE(HasInput(m_client->Descriptor(), 30000));
    const std::uint64_t sent = m_client->SentCount();
    m_client.reset();
    bool broken = true;
    const std::string all = Peer().ReceiveToEnd(&broken);
    EXPECT_FALSE(broken);
    EXPECT_NE(all.find("3:seqi" + std::to_string(sent) + "ee"), std::string::npos);
}

} // namespace
