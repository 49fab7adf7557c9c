#include "FakeHostTest.h"

#include <map>
#include <random>
#include <utility>

using namespace Faultkeeper;

namespace
{
typedef std::pair<bool, int> Event; // raise, code

std::string Message(const Event& event)
{
    return event.first ? "send RaiseError(" + std::to_string(event.second) + ", 2, 0)\n"
                       : "send ClearError(" + std::to_string(event.second) + ", 2)\n";
}

/// What a client should do, said as briefly as possible: the connection holds for a whole request or for none
/// of it.
class CModel
{
public:
    int Report(const Event& event, bool queue, bool connected)
    {
        const int result = Send(event, connected);
        if (result == -1 && queue)
            m_queue.push_back(event);
        if (result != -1 && queue)
            Drain(connected);
        return result;
    }

    void Drain(bool connected)
    {
        if (!connected)
            return;
        for (const Event& event : m_queue)
            Send(event, true);
        m_queue.clear();
    }

    /// The messages since it was last asked.
    std::string TakeSent() { return std::exchange(m_sent, std::string()); }

private:
    int Send(const Event& event, bool connected)
    {
        const auto last = m_last.find(event.second);
        if (last != m_last.end() && last->second == event.first)
            return 0;
        if (!connected)
            return -1;
        m_last[event.second] = event.first;
        m_sent += Message(event);
        return 1;
    }

    std::map<int, bool> m_last;
    std::vector<Event> m_queue;
    std::string m_sent;
};

std::string TakeSent(FakeHost::SState& host)
{
    std::string sent;
    for (const std::string& call : std::exchange(host.calls, {}))
        if (call.compare(0, 4, "send") == 0)
            sent += call + "\n";
    return sent;
}

int Report(CFaultkeeperAPI& api, const Event& event, bool queue)
{
    const EProblemType type = eptDataErraticAndIntermittentlyIncorrect;
    return event.first ? api.RaiseError(event.second, type, queue, queue)
                       : api.ClearError(event.second, type, queue);
}

class ClientModelTest : public FakeHostTest, public testing::WithParamInterface<unsigned>
{
};
} // namespace

TEST_P(ClientModelTest, RandomReportsAreSentAndQueuedAsTheModelSays)
{
    std::mt19937 random(GetParam());
    CModel model;
    for (int step = 0; step < 2000; ++step)
    {
        if (random() % 10 == 0)
            m_host.connected = !m_host.connected;
        if (random() % 10 == 0)
        {
            m_api->ProcessQueuedErrors();
            model.Drain(m_host.connected);
        }
        const Event event(random() % 2 == 0, static_cast<int>(random() % 6));
        const bool queue = random() % 3 != 0;
        const int expected = model.Report(event, queue, m_host.connected);
        ASSERT_EQ(Report(*m_api, event, queue), expected) << "step " << step;
        ASSERT_EQ(TakeSent(m_host), model.TakeSent()) << "step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ClientModelTest, testing::Range(0U, 20U));
