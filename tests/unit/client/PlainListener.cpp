#include "PlainListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace
{
constexpr int kPatienceMilliseconds = 30000;

bool Readable(int descriptor, int timeoutMilliseconds)
{
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, timeoutMilliseconds) > 0;
}

void AwaitReadable(int descriptor, const char* what)
{
    if (!Readable(descriptor, kPatienceMilliseconds))
        throw std::runtime_error(std::string("waited too long for ") + what);
}
} // namespace

CPlainListener::CPlainListener() : m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), m_client(-1)
{
    const int on = 1;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(5300);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 5) != 0)
    {
        close(m_listener);
        throw std::runtime_error("cannot listen on port 5300");
    }
}

CPlainListener::~CPlainListener()
{
    HangUp();
    close(m_listener);
}

bool CPlainListener::Waiting() const
{
    return Readable(m_listener, 0);
}

void CPlainListener::Accept()
{
    HangUp();
    AwaitReadable(m_listener, "a client");
    m_client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
}

void CPlainListener::Say(const std::string& bytes)
{
    if (send(m_client, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the client does not take " + bytes);
}

std::string CPlainListener::ReadIntroduction()
{
    const std::string begin = "d4:argsl32:";
    const std::string end = "e4:name5:Helloe";
    const std::string bytes = Read(begin.size() + 32 + end.size());
    if (bytes.compare(0, begin.size(), begin) != 0 || bytes.compare(begin.size() + 32, end.size(), end) != 0)
        throw std::runtime_error("no introduction: " + bytes);
    return bytes.substr(begin.size(), 32);
}

std::string CPlainListener::Read(std::size_t size)
{
    std::string bytes(size, '\0');
    std::size_t have = 0;
    while (have < size)
    {
        AwaitReadable(m_client, "bytes");
        const ssize_t got = recv(m_client, &bytes[have], size - have, 0);
        if (got <= 0)
            throw std::runtime_error("the client ended after " + bytes.substr(0, have));
        have += static_cast<std::size_t>(got);
    }
    return bytes;
}

std::string CPlainListener::ReadToEnd()
{
    std::string bytes;
    char piece[4096];
    for (ssize_t got = sizeof piece; got > 0;)
    {
        AwaitReadable(m_client, "bytes or the client's end");
        got = recv(m_client, piece, sizeof piece, 0);
        bytes.append(piece, got > 0 ? static_cast<std::size_t>(got) : 0);
    }
    return bytes;
}

bool CPlainListener::Ended()
{
    AwaitReadable(m_client, "the client's end");
    char byte = 0;
    return recv(m_client, &byte, 1, 0) == 0;
}

void CPlainListener::HangUp()
{
    if (m_client >= 0)
        close(m_client);
    m_client = -1;
}
