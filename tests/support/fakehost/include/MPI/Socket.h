#pragma once

#include <string>

class Socket
{
public:
    Socket() = default;
    virtual ~Socket() = default;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool Connect(const std::string& host, unsigned short port, int timeoutMilliseconds);
};
