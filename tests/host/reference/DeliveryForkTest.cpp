// A client in a process that forks.
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "host/reference/DeliveryFixture.h"

namespace
{

using namespace HostTest;

class HostFork : public HostDelivery
{
protected:
    /// Forks, and has the child do something. Ends the test if it does not say that all was well.
    void InAChild(const std::function<bool()>& action)
    {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            _exit(action() ? 0 : 1);
        m_child = child;
    }

    void ExpectChildWasContent()
    {
        int status = -1;
        ASSERT_EQ(waitpid(m_child, &status, 0), m_child);
        EXPECT_EQ(status, 0);
    }

    bool SendsOne(std::uint64_t number)
    {
        return Eventually([&] { return m_client->VerifyConnection(); }) && Send(number);
    }

    pid_t m_child = -1;
};

TEST_F(HostFork, AChildHasASessionAndNumbersOfItsOwn)
{
    Say(Welcome(0));
    SendAll(1, 3);
    EXPECT_EQ(Received(3), (Numbers{1, 2, 3}));
    const std::string session = m_stream.Session();
    InAChild(
        [&]
        {
            const bool anew = !m_client->Welcomed() && m_client->UnacknowledgedCount() == 0 &&
                              m_client->SentCount() == 0 && m_client->GivenUpCount() == 0;
            const bool sends = SendsOne(1) && SendsOne(2);
            const bool counts = m_client->UnacknowledgedCount() == 2 && m_client->SentCount() == 2;
            m_client.reset();
            return anew && sends && counts;
        });
    EXPECT_TRUE(m_client->Welcomed());
    SendAll(4, 4);
    EXPECT_EQ(Received(4), (Numbers{1, 2, 3, 4})) << "and nothing of the child's";
    CRawConnection ofChild = m_listener.Accept();
    CSessionStream stream;
    stream.Take(ofChild.ReceiveToEnd());
    ExpectChildWasContent();
    EXPECT_EQ(stream.Numbers(), (Numbers{1, 2}));
    EXPECT_NE(stream.Session(), session);
    Say(Acknowledgement(4));
    EXPECT_TRUE(m_client->WaitUntilAcknowledged(0));
}

TEST_F(HostFork, WhatWaitsAndWhatHasComeInIsTheParents)
{
    LetTheSystemTakeLittle();
    std::uint64_t number = 0;
    while (m_client->BytesWaiting() == 0)
        ASSERT_TRUE(m_client->VerifyConnection() && Send(++number, 60000));
    Peer().Send(Welcome(0));
    ASSERT_TRUE(HasInput(m_client->Descriptor(), 30000));
    InAChild(
        [&]
        {
            m_client->ProcessMessages(false);
            return !m_client->Welcomed() && m_client->BytesWaiting() == 0 && m_client->WaitingCount() == 0 &&
                   SendsOne(1);
        });
    ExpectChildWasContent();
    EXPECT_GT(m_client->BytesWaiting(), 0u);
    m_client->ProcessMessages(false);
    EXPECT_TRUE(m_client->Welcomed());
    std::string received;
    EXPECT_TRUE(Eventually(
        [&]
        {
            received += Peer().ReceivePending();
            m_client->ProcessMessages(false);
            return m_client->WaitingCount() == 0;
        }));
    EXPECT_NE((received + Peer().ReceivePending()).find("3:seqi" + std::to_string(number) + "ee"),
              std::string::npos);
}

TEST_F(HostFork, TheParentMayEndAndTheChildGoesOn)
{
    Say(Welcome(0));
    InAChild([&] { return SendsOne(1) && m_client->WaitUntilAcknowledged(30000); });
    m_client.reset();
    EXPECT_NE(Peer().ReceiveToEnd(), "") << "the child does not hold the connection";
    AcceptNext();
    EXPECT_EQ(Received(1), (Numbers{1}));
    Peer().Send(Welcome(0) + Acknowledgement(1));
    ExpectChildWasContent();
}

TEST_F(HostFork, AGrandchildHasItsOwnToo)
{
    InAChild(
        [&]
        {
            const bool child = SendsOne(1);
            const pid_t grandchild = fork();
            if (grandchild == 0)
                _exit(SendsOne(1) && m_client->UnacknowledgedCount() == 1 ? 0 : 1);
            int status = -1;
            return child && waitpid(grandchild, &status, 0) == grandchild && status == 0;
        });
    ExpectChildWasContent();
    std::string sessions;
    for (int count = 0; count < 2; ++count)
    {
        AcceptNext();
        EXPECT_EQ(Received(1), (Numbers{1}));
        EXPECT_EQ(sessions.find(m_stream.Session()), std::string::npos);
        sessions += m_stream.Session();
    }
}

TEST(HostForkWithoutSession, AConnectionIsTheChildsAsMuchAsTheParents)
{
    CRawListener listener;
    MPISocketConnectionC connection;
    ASSERT_TRUE(connection.Connect("127.0.0.1", listener.Port(), 30000));
    CRawConnection peer = listener.Accept();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        _exit(connection.Connected() && connection.SendNotification("child", nullptr) ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(connection.SendNotification("parent", nullptr));
    const std::string both = "d4:argsle4:name5:childed4:argsle4:name6:parente";
    EXPECT_EQ(peer.Receive(both.size()), both);
}

} // namespace
