#ifndef CONNECTIONS_LOOPBACKLISTENERS_H
#define CONNECTIONS_LOOPBACKLISTENERS_H

#include "Sockets/FileDescriptor.h"
#include "Sockets/SocketAddress.h"

#include <string>
#include <vector>

/// The listening sockets of a server: one for 127.0.0.1 and, where the machine has it, one for ::1.
class LoopbackListeners
{
public:
    /// @param port  0: any that is free for both
    /// @return false if that is not possible; Error says why, and nothing listens
    bool Open(unsigned short port);

    void Close();

    /// 0 while nothing listens.
    unsigned short Port() const { return m_port; }

    /// Such as "port 5300 on 127.0.0.1: Address already in use".
    const std::string& Error() const { return m_error; }

    const std::vector<FileDescriptor>& Descriptors() const { return m_descriptors; }

private:
    bool OpenBoth(unsigned short port, int& problem);
    bool OpenOne(const SocketAddress& address, int& problem);
    bool Fail(const SocketAddress& address, int problem);

    std::vector<FileDescriptor> m_descriptors;
    unsigned short m_port = 0;
    std::string m_error;
};

#endif
