#pragma once

#include <FakeHost.h>

#include <gtest/gtest.h>

#include <optional>

#include <Faultkeeper/FaultkeeperAPI.h>

/// A client on a fresh fake host that is connected; the record of calls starts after its construction.
class FakeHostTest : public testing::Test
{
protected:
    FakeHostTest() : m_host(FakeHost::State())
    {
        FakeHost::Reset();
        m_api.emplace();
        FakeHost::TakeCalls();
    }

    ~FakeHostTest() override
    {
        m_api.reset();
        EXPECT_EQ(m_host.elementsAlive, 0);
        FakeHost::Reset();
    }

    FakeHost::SState& m_host;
    std::optional<Faultkeeper::CFaultkeeperAPI> m_api;
};

/// What the host sees of one message that is sent and of its arguments afterwards.
inline std::string Sent(const std::string& message)
{
    return "send " + message + "\nlist destroyed\nlist deleted\n";
}
