#include "ClientModel.h"

namespace Models
{

namespace
{
std::string Shown(bool value)
{
    return value ? "true" : "false";
}

std::string Returns(int result)
{
    return "returns " + std::to_string(result) + "\n";
}
} // namespace

std::string Shown(const SClientStep& step)
{
    const std::string id = std::to_string(step.code) + ", " + std::to_string(step.type);
    std::string answers;
    switch (step.action)
    {
    case ecaRaise:
        return "RaiseError(" + id + ", " + Shown(step.flag) + ", " + Shown(step.queue) + ")";
    case ecaClear:
        return "ClearError(" + id + ", " + Shown(step.queue) + ")";
    case ecaRaisePair:
        return "RaiseError({" + id + "}, " + Shown(step.flag) + ")";
    case ecaClearPair:
        return "ClearError({" + id + "})";
    case ecaProcess:
        return "ProcessQueuedErrors()";
    case ecaSilent:
        return "SilentMode(" + Shown(step.flag) + ")";
    case ecaConnection:
        return step.flag ? "connection up" : "connection down";
    case ecaAnswers:
        for (const bool answer : step.answers)
            answers += answer ? " yes" : " no";
        return "next answers" + answers;
    case ecaRestart:
        return "new client";
    }
    return "";
}

std::string CClientModel::Do(const SClientStep& step)
{
    m_calls.clear();
    m_walked.clear();
    int result = 0;
    switch (step.action)
    {
    case ecaRaise:
        result = Raise(step.code, step.type, step.queue);
        return Returns(result) + m_calls;
    case ecaClear:
        result = Clear(step.code, step.type, step.queue);
        return Returns(result) + m_calls;
    case ecaRaisePair:
        result = m_silent ? 0 : Raise(step.code, step.type, true);
        return Returns(result) + m_calls;
    case ecaClearPair:
        result = m_silent ? 0 : Clear(step.code, step.type, true);
        return Returns(result) + m_calls;
    case ecaProcess:
        ProcessQueue();
        return m_calls;
    case ecaSilent:
        m_silent = step.flag;
        return m_calls;
    case ecaConnection:
        m_connected = step.flag;
        return m_calls;
    case ecaAnswers:
        m_answers.assign(step.answers.begin(), step.answers.end());
        return m_calls;
    case ecaRestart:
        Restart();
        return m_calls;
    }
    return "";
}

int CClientModel::Raise(int code, int type, bool queue)
{
    if (IsSentLast({true, code, type}))
    {
        if (queue)
            ProcessQueue();
        return 0;
    }
    if (!Verify())
    {
        if (queue)
            m_queue.push_back({true, code, type});
        return -1;
    }
    NoteSent({true, code, type});
    Send("RaiseError(" + std::to_string(code) + ", " + std::to_string(type) + ", 0)");
    if (queue)
        ProcessQueue();
    return 1;
}

int CClientModel::Clear(int code, int type, bool queue)
{
    if (IsSentLast({false, code, type}))
    {
        if (queue)
            ProcessQueue();
        return 0;
    }
    if (!Verify())
    {
        if (queue)
            m_queue.push_back({false, code, type});
        return -1;
    }
    NoteSent({false, code, type});
    Send("ClearError(" + std::to_string(code) + ", " + std::to_string(type) + ")");
    if (queue)
        ProcessQueue();
    return 1;
}

void CClientModel::ProcessQueue()
{
    if (m_queue.empty() || !Verify())
        return;
    std::vector<std::size_t> done;
    for (std::size_t place = 0; place < m_queue.size(); ++place)
    {
        const SReport event = m_queue[place];
        const int result =
            event.raise ? Raise(event.code, event.type, false) : Clear(event.code, event.type, false);
        m_walked.push_back(result);
        if (result == 0 || result == 1)
            done.push_back(place);
    }
    RemoveFromQueue(done);
}

void CClientModel::RemoveFromQueue(const std::vector<std::size_t>& places)
{
    std::vector<SReport> rest;
    std::size_t next = 0;
    for (std::size_t place = 0; place < m_queue.size(); ++place)
    {
        if (next < places.size() && places[next] == place)
            ++next;
        else
            rest.push_back(m_queue[place]);
    }
    m_queue = rest;
}

bool CClientModel::IsSentLast(const SReport& report) const
{
    for (const SReport& sent : m_sentLast)
        if (sent.code == report.code && sent.type == report.type)
            return sent.raise == report.raise;
    return false;
}

void CClientModel::NoteSent(const SReport& report)
{
    for (SReport& sent : m_sentLast)
    {
        if (sent.code == report.code && sent.type == report.type)
        {
            sent.raise = report.raise;
            return;
        }
    }
    m_sentLast.push_back(report);
}

void CClientModel::Send(const std::string& message)
{
    m_calls += "send " + message + "\nlist destroyed\nlist deleted\n";
}

bool CClientModel::Verify()
{
    bool answer = m_connected;
    if (!m_answers.empty())
    {
        answer = m_answers.front();
        m_answers.pop_front();
    }
    m_calls += "verify " + Shown(answer) + "\n";
    return answer;
}

void CClientModel::Restart()
{
    m_sentLast.clear();
    m_queue.clear();
    m_silent = false;
    m_calls = "~MPISocketClientC\nMPISocketClientC true\nConnect localhost 5300 -1\n";
}

} // namespace Models
