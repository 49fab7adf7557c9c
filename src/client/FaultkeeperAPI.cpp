#include <Faultkeeper/FaultkeeperAPI.h>

#include <MPI/BAtomC.h>
#include <MPI/BListC.h>

#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace Faultkeeper
{

namespace
{
constexpr unsigned short kOwnerPort = 5300;

void AppendNumber(BListC& arguments, int number)
{
    arguments.Append(std::make_unique<BAtomC>(number, &arguments));
}

/// Lets a host that can gather messages do so for one scope, which End should end: the host may call back
/// from there, and a program's hooks may throw. Others send them one by one.
template <typename Client, typename = void> class CBatchScope
{
public:
    explicit CBatchScope(Client&) {}
    void End() {}
};

template <typename Client>
class CBatchScope<Client, std::void_t<decltype(&Client::BeginBatch), decltype(&Client::EndBatch)>>
{
public:
    explicit CBatchScope(Client& client) : m_client(client) { m_client.BeginBatch(); }
    ~CBatchScope()
    {
        try
        {
            End();
        }
        catch (...)
        {
            // An exception is under way already, and is the one to be told.
        }
    }
    CBatchScope(const CBatchScope&) = delete;
    CBatchScope& operator=(const CBatchScope&) = delete;

    void End()
    {
        if (!std::exchange(m_ended, true))
            m_client.EndBatch();
    }

private:
    Client& m_client;
    bool m_ended = false;
};

/// Sets a flag for one scope.
class CFlagScope
{
public:
    explicit CFlagScope(bool& flag) : m_flag(flag) { m_flag = true; }
    ~CFlagScope() { m_flag = false; }
    CFlagScope(const CFlagScope&) = delete;
    CFlagScope& operator=(const CFlagScope&) = delete;

private:
    bool& m_flag;
};
} // namespace

CFaultkeeperAPI::CFaultkeeperAPI() : MPISocketClientC(true), m_silent(false), m_draining(false)
{
    Socket::Connect("localhost", kOwnerPort, -1); // whether it works out is asked before every message
}

CFaultkeeperAPI::~CFaultkeeperAPI() = default;

int CFaultkeeperAPI::RaiseError(int code, EProblemType type, bool, bool queue)
{
    return Report({true, code, type}, queue);
}

int CFaultkeeperAPI::ClearError(int code, EProblemType type, bool queue)
{
    return Report({false, code, type}, queue);
}

int CFaultkeeperAPI::RaiseError(const std::pair<int, int>& id, bool flag)
{
    return m_silent ? 0 : RaiseError(id.first, static_cast<EProblemType>(id.second), flag, true);
}

int CFaultkeeperAPI::ClearError(const std::pair<int, int>& id)
{
    return m_silent ? 0 : ClearError(id.first, static_cast<EProblemType>(id.second), true);
}

int CFaultkeeperAPI::Report(const ErrorEvent& event, bool queue)
{
    if (!SentLast(event))
        return ReportChange(event, queue);
    if (queue)
        ProcessQueuedErrors();
    return 0;
}

int CFaultkeeperAPI::ReportChange(const ErrorEvent& event, bool queue)
{
    if (!VerifyConnection())
    {
        if (queue)
            m_queue.push_back(event);
        return -1;
    }
    SendReport(event);
    if (queue)
        ProcessQueuedErrors();
    return 1;
}

bool CFaultkeeperAPI::SentLast(const ErrorEvent& event) const
{
    const auto sent = m_sentStates.find({event.problemCode, event.problemType});
    return sent != m_sentStates.end() && sent->second == event.raise;
}

void CFaultkeeperAPI::SendReport(const ErrorEvent& event)
{
    // Built first: a message that there is no memory for has not been sent.
    const std::unique_ptr<BListC> arguments = std::make_unique<BListC>();
    AppendNumber(*arguments, event.problemCode);
    AppendNumber(*arguments, event.problemType);
    if (event.raise)
        AppendNumber(*arguments, 0); // owners expect three arguments of a raise
    // Noted before it is sent: a host that calls back during the send finds the new state, and a repeat is
    // not sent again.
    m_sentStates[{event.problemCode, event.problemType}] = event.raise;
    SendNotification(event.raise ? "RaiseError" : "ClearError", arguments.get());
}

void CFaultkeeperAPI::ProcessQueuedErrors()
{
    if (m_draining || m_queue.empty())
        return;
    // A host may call back from the check or a send; the walk must be the only one then.
    const CFlagScope draining(m_draining);
    if (VerifyConnection())
        DrainQueue();
}

void CFaultkeeperAPI::DrainQueue()
{
    CBatchScope<MPISocketClientC> batch(*this);
    // One by one: what has been sent must not stay if a later one throws, or it would be sent again.
    for (auto event = m_queue.begin(); event != m_queue.end();)
        event = Report(*event, false) == -1 ? std::next(event) : m_queue.erase(event);
    batch.End();
}

void CFaultkeeperAPI::SilentMode(bool on)
{
    m_silent = on;
}

} // namespace Faultkeeper
