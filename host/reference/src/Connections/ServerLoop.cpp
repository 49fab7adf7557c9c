#include "Connections/ServerLoop.h"

#include "Connections/FlagScope.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <limits>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

namespace
{

constexpr int kEventsPerTurn = 64;
constexpr std::uint64_t kListeners = 0; // in place of a connection's number
constexpr std::uint64_t kPauseOver = std::numeric_limits<std::uint64_t>::max(); // likewise
constexpr std::uint64_t kMore = kPauseOver - 1;
constexpr std::uint64_t kQuiet = kPauseOver - 2;
constexpr std::uint64_t kPatience = kPauseOver - 3;
constexpr long kQuietNanoseconds = 2000000; // 2 ms without input: then a peer has nothing under way

// More than this at once means that much is under way. Then a moment's rest lets it come in larger pieces,
// which costs each message less; who has little to say is not kept waiting.
constexpr std::size_t kWellFilledBytes = 1024;
constexpr long kRestNanoseconds = 20000; // 20 us, to which the system adds some

// After this long nothing is under way any more, or enough has gathered while the owner was at work.
constexpr std::chrono::microseconds kUnderWay(500);

constexpr std::size_t kReadBytes = 65536;

} // namespace

MPISocketServerC::Implementation::Implementation(MPIServerHandlerC& handler)
    : m_handler(handler), m_watch(epoll_create1(EPOLL_CLOEXEC)), m_spare(SpareDescriptor()),
      m_buffer(kReadBytes)
{
    if (!m_watch.Valid())
        Fail("epoll_create1", errno);
}

bool MPISocketServerC::Implementation::Fail(const std::string& what, int problem)
{
    m_error = what + ": " + std::strerror(problem);
    return false;
}

bool MPISocketServerC::Implementation::Listen(unsigned short port)
{
    if (Port() != 0)
        return Fail("port " + std::to_string(Port()) + " is listened on already", EALREADY);
    if (!MakeTimers() || (!m_more.Valid() && !MakeEvent()))
        return false;
    if (!m_listeners.Open(port))
    {
        m_error = m_listeners.Error();
        return false;
    }
    if (!WatchListeners())
    {
        m_listeners.Close();
        return false;
    }
    m_error.clear();
    return true;
}

/// Made beforehand: when they are wanted there may be no descriptors.
bool MPISocketServerC::Implementation::MakeTimers()
{
    return (m_pause.Valid() || MakeTimer(m_pause, kPauseOver)) &&
           (m_quiet.Valid() || MakeTimer(m_quiet, kQuiet)) &&
           (m_patience.Valid() || MakeTimer(m_patience, kPatience));
}

bool MPISocketServerC::Implementation::MakeTimer(FileDescriptor& timer, std::uint64_t number)
{
    timer = FileDescriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    if (!timer.Valid())
        return Fail("timerfd_create", errno);
    if (Watch(timer.Number(), number))
        return true;
    timer = FileDescriptor();
    return false;
}

bool MPISocketServerC::Implementation::MakeEvent()
{
    m_more = FileDescriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!m_more.Valid())
        return Fail("eventfd", errno);
    if (Watch(m_more.Number(), kMore))
        return true;
    m_more = FileDescriptor();
    return false;
}

bool MPISocketServerC::Implementation::WatchListeners()
{
    for (const FileDescriptor& listener : m_listeners.Descriptors())
    {
        if (!Watch(listener.Number(), kListeners))
            return false;
    }
    return true;
}

bool MPISocketServerC::Implementation::Watch(int descriptor, std::uint64_t number)
{
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLRDHUP;
    event.data.u64 = number;
    if (epoll_ctl(m_watch.Number(), EPOLL_CTL_ADD, descriptor, &event) == 0)
        return true;
    return Fail("epoll_ctl", errno);
}

int MPISocketServerC::Implementation::Serve(int timeoutMilliseconds)
{
    CloseIfAsked(); // where the handler threw behind that
    LetDataGather(timeoutMilliseconds);
    const int handedOver = Turn(m_queue.empty() ? timeoutMilliseconds : 0);
    CloseIfAsked();
    return handedOver;
}

int MPISocketServerC::Implementation::Turn(int timeoutMilliseconds)
{
    const FlagScope serving(m_serving);
    try
    {
        const int handedOver = WaitForEvents(timeoutMilliseconds) < 0 ? -1 : ServeTurn();
        TellOfQueue();
        return handedOver;
    }
    catch (...)
    {
        TellOfQueue();
        throw;
    }
}

void MPISocketServerC::Implementation::CloseIfAsked()
{
    if (m_closeAsked)
        Close();
}

void MPISocketServerC::Implementation::LetDataGather(int timeoutMilliseconds)
{
    const timespec rest = {0, kRestNanoseconds};
    const bool wanted = m_wellFilled && m_queue.empty() && (timeoutMilliseconds != 0 || m_gathersInput);
    if (wanted && std::chrono::steady_clock::now() - m_wellFilledAt < kUnderWay)
        clock_nanosleep(CLOCK_MONOTONIC, 0, &rest, nullptr);
    m_wellFilled = false;
}

int MPISocketServerC::Implementation::WaitForEvents(int timeoutMilliseconds)
{
    epoll_event events[kEventsPerTurn];
    const int count = epoll_wait(m_watch.Number(), events, kEventsPerTurn, timeoutMilliseconds);
    if (count < 0 && errno != EINTR)
    {
        Fail("epoll_wait", errno);
        return -1;
    }
    m_error.clear();
    m_turn.clear();
    for (int index = 0; index < count; ++index)
        NoteReady(events[index].data.u64, events[index].events);
    return 0;
}

void MPISocketServerC::Implementation::NoteReady(std::uint64_t number, std::uint32_t events)
{
    if (number == kQuiet)
        return AcknowledgeQuiet();
    if (number == kPatience)
        return LosePatience();
    if (number == kPauseOver)
        ResumeListening();
    if (number == kPauseOver || number == kListeners)
        return AcceptFromAll();
    ServerConnection* const connection = Find(number);
    if (connection == nullptr)
        return;
    if ((events & EPOLLRDHUP) != 0)
        connection->SeeEnd();
    if ((events & EPOLLOUT) != 0)
    {
        connection->SendWaiting();
        FollowAcknowledgement(*connection);
    }
    FollowOutput(*connection);
    if (!connection->InQueue())
        m_turn.push_back(number);
}

/// Who has something left over from a full batch comes after those who have not had their turn.
int MPISocketServerC::Implementation::ServeTurn()
{
    int handedOver = 0;
    const std::size_t queued = m_queue.size();
    for (std::size_t index = 0; index < m_turn.size() && !m_closeAsked; ++index)
        handedOver += ServeConnection(m_turn[index]);
    for (std::size_t count = 0; count < queued && !m_closeAsked; ++count)
    {
        const std::uint64_t number = m_queue.front();
        m_queue.pop_front();
        handedOver += ServeConnection(number);
    }
    return handedOver;
}

int MPISocketServerC::Implementation::ServeConnection(std::uint64_t number)
{
    ServerConnection* const connection = Find(number);
    if (connection == nullptr)
        return 0;
    connection->InQueue(false);
    int handedOver = 0;
    try
    {
        if (!connection->Told())
            connection->Tell();
        handedOver = connection->Serve(m_buffer.data(), m_buffer.size());
    }
    catch (...)
    {
        Requeue(*connection);
        throw;
    }
    if (connection->BytesRead() >= kWellFilledBytes)
    {
        m_wellFilled = true;
        m_wellFilledAt = std::chrono::steady_clock::now();
    }
    if (connection->Ended())
    {
        Remove(number);
        return handedOver;
    }
    FollowOutput(*connection);
    Requeue(*connection);
    return handedOver;
}

/// Lets a connection that has something to do without new input have another turn. It is not in the queue: it
/// has just been served, or was held.
void MPISocketServerC::Implementation::Requeue(ServerConnection& connection)
{
    if (connection.Held())
        return Hold(connection);
    if (!connection.HasWork())
        return;
    m_queue.push_back(connection.Peer().connection);
    connection.InQueue(true);
}

/// Makes the descriptor have input for as long as there is a queue.
void MPISocketServerC::Implementation::TellOfQueue()
{
    if (m_moreTold == !m_queue.empty())
        return;
    m_moreTold = !m_moreTold;
    std::uint64_t count = 1;
    const ssize_t done = m_moreTold ? write(m_more.Number(), &count, sizeof(count))
                                    : read(m_more.Number(), &count, sizeof(count));
    static_cast<void>(done); // neither can fail: the one finds room, the other what that one wrote
}

ServerConnection* MPISocketServerC::Implementation::Find(std::uint64_t number)
{
    const auto found = m_connections.find(number);
    return found == m_connections.end() ? nullptr : found->second.get();
}

/// Watches a connection for output as long as something waits to go out.
void MPISocketServerC::Implementation::FollowOutput(ServerConnection& connection)
{
    const bool wanted = connection.Sending();
    if (wanted == connection.WatchedForOutput() || connection.Descriptor() < 0 || !connection.Watched())
        return;
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLRDHUP | (wanted ? EPOLLOUT : 0U);
    event.data.u64 = connection.Peer().connection;
    if (epoll_ctl(m_watch.Number(), EPOLL_CTL_MOD, connection.Descriptor(), &event) == 0)
        connection.WatchedForOutput(wanted);
}

void MPISocketServerC::Implementation::WelcomePeer(std::uint64_t number, std::uint64_t applied)
{
    if (ServerConnection* const connection = Find(number))
    {
        connection->Welcome(applied);
        FollowOutput(*connection);
    }
}

void MPISocketServerC::Implementation::Acknowledge(std::uint64_t number, std::uint64_t applied)
{
    if (ServerConnection* const connection = Find(number))
    {
        connection->Acknowledge(applied);
        FollowOutput(*connection);
        FollowAcknowledgement(*connection);
    }
}

/// Has a look at the connection later if it has an acknowledgement to send. One whose peer does not read is
/// looked at when it takes output again.
void MPISocketServerC::Implementation::FollowAcknowledgement(ServerConnection& connection)
{
    if (!connection.AcknowledgementWaits() || connection.InQuietQueue() || connection.BytesWaiting() > 0)
        return;
    connection.InQuietQueue(true);
    m_toAcknowledge.push_back(connection.Peer().connection);
    if (m_toAcknowledge.size() == 1)
        SetTimer(m_quiet, kQuietNanoseconds);
}

void MPISocketServerC::Implementation::AcknowledgeQuiet()
{
    std::vector<std::uint64_t> numbers;
    numbers.swap(m_toAcknowledge);
    if (m_quiet.Valid())
        SetTimer(m_quiet, 0);
    for (const std::uint64_t number : numbers)
    {
        ServerConnection* const connection = Find(number);
        if (connection == nullptr)
            continue;
        connection->InQuietQueue(false);
        if (connection->AcknowledgeIfQuiet())
            FollowOutput(*connection);
        else
            FollowAcknowledgement(*connection);
    }
}

bool MPISocketServerC::Implementation::Answer(std::uint64_t number, const BElementC& message)
{
    ServerConnection* const connection = Find(number);
    if (connection == nullptr || !connection->Answer(message))
        return false;
    FollowOutput(*connection);
    return true;
}

/// @param nanoseconds  0 stops it, and takes back that it has run out
void MPISocketServerC::Implementation::SetTimer(const FileDescriptor& timer, long nanoseconds)
{
    const itimerspec time = {{0, 0}, {0, nanoseconds}};
    timerfd_settime(timer.Number(), 0, &time, nullptr);
}

void MPISocketServerC::Implementation::Remove(std::uint64_t number)
{
    const auto found = m_connections.find(number);
    const MPIPeerC peer = found->second->Peer();
    const std::string session = found->second->Session();
    const bool told = found->second->Told();
    m_connections.erase(found);
    if (!session.empty())
        Release(m_order.Leave(session, number));
    if (told)
        m_handler.PeerDisconnected(peer);
}

void MPISocketServerC::Implementation::Close()
{
    if (m_serving)
    {
        m_closeAsked = true;
        for (const auto& entry : m_connections)
            entry.second->End();
        return;
    }
    m_order.Clear();
    if (m_patience.Valid())
        SetTimer(m_patience, 0);
    m_looking = false;
    m_listeners.Close();
    if (m_pause.Valid())
        SetTimer(m_pause, 0);
    m_troubleTold = false;
    while (!m_connections.empty())
        Remove(m_connections.begin()->first);
    m_queue.clear();
    AcknowledgeQuiet(); // nobody is left; it stops the timer
    m_wellFilled = false;
    TellOfQueue();
    m_closeAsked = false; // last: where the handler throws, the next turn goes on with it
}
