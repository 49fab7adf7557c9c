#include "campaign/parts/Stranger.h"

#include "system/ChildProcess.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <utility>

namespace Campaign
{

namespace
{
constexpr unsigned kKinds = 16;
constexpr unsigned kCutOff = 3;
constexpr unsigned kMessages = 5; // from here on
} // namespace

CStranger::CStranger() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    struct sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5300);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(m_socket, reinterpret_cast<struct sockaddr*>(&address), sizeof address) == 0)
        return;
    close(m_socket);
    m_socket = -1;
}

CStranger::~CStranger()
{
    if (m_socket != -1)
        close(m_socket);
}

CStranger::CStranger(CStranger&& other) noexcept : m_socket(std::exchange(other.m_socket, -1)) {}

bool CStranger::Send(const std::string& bytes) const
{
    return send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool CStranger::Closed() const
{
    char byte = 0;
    const ssize_t count = recv(m_socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return count == 0 || (count < 0 && errno != EAGAIN);
}

bool CStranger::ClosedInTime() const
{
    struct pollfd waiting = {m_socket, POLLIN, 0};
    return poll(&waiting, 1, Support::kPatienceMilliseconds) == 1 && Closed();
}

bool IsMessage(unsigned number)
{
    return number % kKinds >= kMessages;
}

bool EndsConnection(unsigned number)
{
    return !IsMessage(number) && number % kKinds != kCutOff;
}

std::string Garbage(unsigned number)
{
    std::minstd_rand random(number + 1);
    std::string bytes;
    switch (number % kKinds)
    {
    case 0: // no message at all
        for (unsigned i = 0; i < 200; ++i)
            bytes += static_cast<char>(random());
        return bytes;
    case 1:
        return "d4:argsl1073741824:";
    case 2:
        return "1073741824:";
    case kCutOff:
        return "d4:argsli265243ei2e"; // cut off by the next
    case 4:
        return std::string(100, 'l');
    default: // messages that mean nothing here
        bytes = "d4:argsli" + std::to_string(random()) + "ei" + std::to_string(random() % 22) + "ee4:name";
        return bytes + (number % 2 == 0 ? "10:RaiseErrore" : "6:Gossipe");
    }
}

} // namespace Campaign
