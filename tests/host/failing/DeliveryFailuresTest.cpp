// Confirmed delivery while the system takes only some of the bytes, or none.
#include <MPI/BAtomC.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "host/failing/FailingCalls.h"
#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;

class HostFailingDelivery : public HostDelivery
{
protected:
    /// The system takes so many bytes more from the client, and then none; introductions go out.
    void LetOut(int bytes)
    {
        m_calls.Ask("send",
                    [this, bytes](int descriptor, int size, void* data) mutable -> std::optional<int>
                    {
                        const bool introduction = size > 11 && std::memcmp(data, "d4:argsl32:", 11) == 0;
                        if (descriptor != m_client->Descriptor() || introduction)
                            return std::nullopt;
                        const int some = std::min(bytes, size);
                        bytes -= some;
                        errno = EAGAIN;
                        return some > 0 ? some : -1;
                    });
    }

    void LetOutAll() { m_calls.Leave("send"); }

    /// A second connection of a session whose receiver had acknowledged nothing of 1 to 6.
    void BeginAgainAfterSix()
    {
        Say(Welcome(0));
        SendAll(1, 6);
        Received(6);
        EndConnection();
        AwaitNext();
    }

    CFailingCalls m_calls;
};

TEST_F(HostFailingDelivery, AnIntroductionThatGoesOutInPiecesIsFinishedFirst)
{
    m_calls.Ask("send",
                [first = true](int, int, void*) mutable -> std::optional<int>
                {
                    errno = EAGAIN;
                    return std::exchange(first, false) ? 10 : -1;
                });
    Start(true);
    EXPECT_TRUE(m_client->SendNotification("RaiseError", nullptr));
    EXPECT_EQ(m_client->WaitingCount(), 1u);
    std::string bytes = Peer().ReceivePending();
    EXPECT_EQ(bytes, "d4:argsl32");
    LetOutAll();
    m_client->ProcessMessages(false);
    m_client.reset();
    bytes += Peer().ReceiveToEnd();
    EXPECT_EQ(bytes.substr(58), "d4:argsle4:name10:RaiseError3:seqi1ee");
}

TEST_F(HostFailingDelivery, AConnectionThatBreaksDuringTheIntroductionIsMadeAgain)
{
    m_client = std::make_unique<MPISocketClientC>(true);
    m_calls.Fail("send", ECONNRESET);
    EXPECT_FALSE(m_client->Connect("127.0.0.1", m_listener.Port(), 30000));
    AcceptNext();
    AwaitNext();
    ASSERT_TRUE(Eventually([&] { return m_client->VerifyConnection(); }));
    SendAll(1, 1);
    EXPECT_EQ(Received(1), (Numbers{1}));
}

TEST_F(HostFailingDelivery, IntroductionsDifferAlsoWhileTheSystemHasNoRandomnessYet)
{
    Received(0);
    std::string session = m_stream.Session();
    for (int client = 0; client < 3; ++client)
    {
        m_calls.Fail("getrandom", EAGAIN);
        Start(true);
        Received(0);
        EXPECT_EQ(m_stream.Session().size(), 32u);
        EXPECT_NE(m_stream.Session(), session);
        session = m_stream.Session();
    }
}

TEST_F(HostFailingDelivery, AWelcomeInTheMiddleOfTheFirstMessageLetsItEnd)
{
    LetOut(10);
    SendAll(1, 2);
    Say(Welcome(0));
    LetOutAll();
    m_client->ProcessMessages(false);
    EXPECT_EQ(Received(2), (Numbers{1, 2}));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 2u);
}

TEST_F(HostFailingDelivery, WhatIsAcknowledgedBeforeItGoesOutAgainDoesNotGo)
{
    BeginAgainAfterSix();
    LetOut(0);
    Say(Welcome(0) + Acknowledgement(4));
    LetOutAll();
    EXPECT_EQ(ReceivedInTheEnd(), (Numbers{5, 6}));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 2u);
}

TEST_F(HostFailingDelivery, WhatIsAcknowledgedWhileItGoesOutAgainIsFinished)
{
    BeginAgainAfterSix();
    LetOut(10);
    Say(Welcome(0) + Acknowledgement(4));
    LetOutAll();
    m_client->ProcessMessages(false);
    EXPECT_EQ(Received(6), (Numbers{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 2u);
}

TEST_F(HostFailingDelivery, AMessageThatIsNoNotificationWaitsForItsTurnWhateverIsAcknowledged)
{
    Say(Welcome(0));
    SendAll(1, 2);
    Received(2);
    LetOut(0);
    BAtomC atom(7);
    EXPECT_TRUE(m_client->SendMessageElement(&atom));
    SendAll(3, 3);
    EndConnection();
    AwaitNext();
    Say(Welcome(0) + Acknowledgement(2));
    EXPECT_EQ(m_client->UnacknowledgedCount(), 1u);
    LetOutAll();
    m_client->ProcessMessages(false);
    const std::string expected = "i7e" + Notification(3);
    EXPECT_EQ(Peer().Receive(expected.size()), expected);
}

} // namespace
