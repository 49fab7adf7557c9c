#ifndef CONNECTIONS_SERVERLOOP_H
#define CONNECTIONS_SERVERLOOP_H

#include "Connections/LoopbackListeners.h"
#include "Connections/ServerConnection.h"
#include "Sockets/FileDescriptor.h"

#include <MPI/MPISocketServerC.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

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
    std::size_t MaximumConnections() const { return m_maximumConnections; }
    void MaximumConnections(std::size_t count) { m_maximumConnections = count; }
    void WelcomePeer(std::uint64_t number, std::uint64_t applied);
    void Acknowledge(std::uint64_t number, std::uint64_t applied);
    bool Answer(std::uint64_t number, const BElementC& message);
    bool GathersInput() const { return m_gathersInput; }
    void GathersInput(bool gathersInput) { m_gathersInput = gathersInput; }
    void Close();

private:
    bool Watch(int descriptor, std::uint64_t number);
    bool MakeTimer(FileDescriptor& timer, std::uint64_t number);
    bool MakeTimers();
    static void SetTimer(const FileDescriptor& timer, long nanoseconds);
    bool WatchListeners();
    void PauseListening(int problem);
    void ResumeListening();
    bool Fail(const std::string& what, int problem);
    bool MakeEvent();
    void LetDataGather(int timeoutMilliseconds);
    int Turn(int timeoutMilliseconds);
    void CloseIfAsked();
    int WaitForEvents(int timeoutMilliseconds);
    void NoteReady(std::uint64_t number, std::uint32_t events);
    int ServeTurn();
    int ServeConnection(std::uint64_t number);
    void Requeue(ServerConnection& connection);
    void Hold(ServerConnection& connection);
    void Release(std::uint64_t number);
    void StartLooking();
    void LosePatience();
    ServerConnection* Find(std::uint64_t number);
    void FollowOutput(ServerConnection& connection);
    void FollowAcknowledgement(ServerConnection& connection);
    void AcknowledgeQuiet();
    void TellOfQueue();
    static FileDescriptor SpareDescriptor();
    void AcceptFromAll();
    bool AcceptFrom(int listener);
    void TakeIn(FileDescriptor descriptor);
    const ServerConnection* LongestSilent() const;
    void GiveWay(const ServerConnection& connection);
    void TurnAway(FileDescriptor descriptor);
    bool TurnAwayForWantOfDescriptors(int listener);
    void Remove(std::uint64_t number);

    MPIServerHandlerC& m_handler;
    FileDescriptor m_watch;
    FileDescriptor m_spare; // given up for a moment to turn somebody away when the process has no others left
    FileDescriptor m_pause; // a timer that runs while the listeners are not watched
    FileDescriptor m_quiet; // a timer that runs while acknowledgements wait
    FileDescriptor m_patience; // a timer that runs while connections wait for others of their session
    bool m_looking = false;    // that timer runs
    FileDescriptor m_more;     // an event that lasts while the queue is not empty
    bool m_moreTold = false;
    std::vector<char> m_buffer;                 // for all connections, one after the other
    std::vector<std::uint64_t> m_turn;          // whom to serve in this turn
    std::deque<std::uint64_t> m_queue;          // who had something left over when the last turn ended
    std::vector<std::uint64_t> m_toAcknowledge; // whose acknowledgements wait
    bool m_wellFilled = false;                  // something read in the last turn
    std::chrono::steady_clock::time_point m_wellFilledAt; // the last time
    bool m_gathersInput = false;                          // even if told not to wait
    bool m_serving = false;
    bool m_closeAsked = false; // from within the handler
    SessionOrder m_order;
    std::size_t m_maximumConnections = kMaximumConnections;
    bool m_troubleTold = false;
    LoopbackListeners m_listeners;
    std::map<std::uint64_t, std::unique_ptr<ServerConnection>> m_connections;
    std::uint64_t m_lastNumber = 0; // of a connection; 0 stands for the listeners
    std::string m_error;
};

#endif
