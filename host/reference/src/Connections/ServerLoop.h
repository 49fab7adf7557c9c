#ifndef CONNECTIONS_SERVERLOOP_H
#define CONNECTIONS_SERVERLOOP_H

#include "Connections/LoopbackListeners.h"
#include "Connections/ServerConnection.h"
#include "Sockets/FileDescriptor.h"

#include <MPI/MPISocketServerC.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

/// What a server does: the listening sockets and connections, watched by one epoll descriptor.
class CORE_LOCAL MPISocketServerC::Implementation
{
public:
    explicit Implementation(MPIServerHandlerC& handler);

    bool Listen(unsigned short port);
    unsigned short Port() const { return m_listeners.Port(); }
    const std::string& Error() const { return m_error; }
    int Number() const { return m_watch.Number(); }
    int Serve(int timeoutMilliseconds);
    std::size_t ConnectionCount() const { return m_connections.size(); }
    void Close();

private:
    bool Watch(int descriptor, std::uint64_t number);
    bool MakeTimer();
    void SetTimer(long nanoseconds);
    bool WatchListeners();
    void PauseListening(int problem);
    void ResumeListening();
    bool Fail(const std::string& what, int problem);
    int ServeReady(std::uint64_t number);
    int ServeConnection(std::uint64_t number);
    void AcceptFromAll();
    bool AcceptFrom(int listener);
    void Welcome(FileDescriptor descriptor);
    void TurnAway(FileDescriptor descriptor);
    bool TurnAwayForWantOfDescriptors(int listener);
    void Remove(std::uint64_t number);

    MPIServerHandlerC& m_handler;
    FileDescriptor m_watch;
    FileDescriptor m_spare; // given up for a moment to turn somebody away when the process has no others left
    FileDescriptor m_pause; // a timer that runs while the listeners are not watched
    bool m_troubleTold = false;
    LoopbackListeners m_listeners;
    std::map<std::uint64_t, std::unique_ptr<ServerConnection>> m_connections;
    std::uint64_t m_lastNumber = 0; // of a connection; 0 stands for the listeners
    std::string m_error;
};

#endif
