#include "reporting/Sink.h"

#include "common/Patience.h"
#include "reporting/Loopback.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace Benchmarks
{

namespace
{
constexpr std::size_t kBuffer = 262144;
constexpr char kName[] = "4:name";
constexpr char kHello[] = "5:Hello";
constexpr char kNumber[] = "3:seqi";

/// How often `text` stands in the bytes.
std::uint64_t Count(const std::string& bytes, const char* text)
{
    std::uint64_t count = 0;
    for (std::size_t at = bytes.find(text); at != std::string::npos; at = bytes.find(text, at + 1))
        ++count;
    return count;
}

/// One connection of the sink.
class CPeer
{
public:
    CPeer(int descriptor, bool welcomes, CSink::SShared& shared)
        : m_descriptor(descriptor), m_welcomes(welcomes), m_shared(shared)
    {
    }

    int Descriptor() const { return m_descriptor; }

    /// Takes what has come. @return false at the end
    bool Take(std::vector<char>& buffer);

private:
    void Answer();

    int m_descriptor;
    bool m_welcomes;
    bool m_welcomed = false;
    std::string m_text;
    CSink::SShared& m_shared;
};

bool CPeer::Take(std::vector<char>& buffer)
{
    const ssize_t got = recv(m_descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (got < 0)
        return errno == EAGAIN || errno == EINTR;
    const int on = 1;
    setsockopt(m_descriptor, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
    m_text.append(buffer.data(), static_cast<std::size_t>(got));
    m_shared.notifications += Count(m_text, kName);
    if (m_welcomes)
        Answer();
    // A word that the end cuts is found with the next bytes.
    const std::size_t kept = std::min(m_text.size(), sizeof kName - 2);
    m_text.erase(0, m_text.size() - kept);
    m_shared.bytes += static_cast<std::uint64_t>(got);
    return got > 0;
}

void CPeer::Answer()
{
    std::string answer;
    if (!m_welcomed && m_text.find(kHello) != std::string::npos)
    {
        m_welcomed = true;
        answer = "d7:welcomei0ee";
    }
    const std::size_t number = m_text.rfind(kNumber);
    const std::size_t end =
        number == std::string::npos ? number : m_text.find('e', number + sizeof kNumber - 1);
    if (m_welcomed && end != std::string::npos)
    {
        const std::size_t first = number + sizeof kNumber - 1;
        answer += "d3:acki" + m_text.substr(first, end - first) + "ee";
    }
    if (!answer.empty())
        send(m_descriptor, answer.data(), answer.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

[[noreturn]] void Serve(int listener, bool welcomes, CSink::SShared& shared)
{
    std::vector<char> buffer(kBuffer);
    std::vector<std::unique_ptr<CPeer>> peers;
    for (;;)
    {
        std::vector<pollfd> waiting{{listener, POLLIN, 0}};
        for (const auto& peer : peers)
            waiting.push_back({peer->Descriptor(), POLLIN, 0});
        poll(waiting.data(), waiting.size(), -1);
        for (std::size_t place = peers.size(); place-- > 0;)
        {
            if (waiting[place + 1].revents == 0 || peers[place]->Take(buffer))
                continue;
            close(peers[place]->Descriptor());
            peers.erase(peers.begin() + static_cast<std::ptrdiff_t>(place));
        }
        if (waiting[0].revents != 0)
            peers.push_back(std::make_unique<CPeer>(AcceptOne(listener), welcomes, shared));
    }
}
} // namespace

CSink::CSink(std::uint16_t port, bool welcomes) : m_shared(Share<SShared>())
{
    const int listener = ListenOnLoopback(port);
    m_port = PortOf(listener);
    SShared& shared = m_shared;
    m_process =
        std::make_unique<CChildProcess>([listener, welcomes, &shared] { Serve(listener, welcomes, shared); });
    close(listener);
}

void CSink::WaitForBytes(std::uint64_t bytes) const
{
    WaitPatiently("bytes", [&] { return m_shared.bytes >= bytes; });
}

void CSink::WaitForNotifications(std::uint64_t notifications) const
{
    WaitPatiently("notifications", [&] { return m_shared.notifications >= notifications; });
}

} // namespace Benchmarks
