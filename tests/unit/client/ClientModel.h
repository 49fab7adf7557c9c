#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

/// What is asked of a client and what happens to its connection, as data, and what should come of it.
namespace Models
{

enum EClientAction
{
    ecaRaise,      ///< code, type, flag, queue
    ecaClear,      ///< code, type, queue
    ecaRaisePair,  ///< code and type, flag
    ecaClearPair,  ///< code and type
    ecaProcess,    ///< the queue
    ecaSilent,     ///< on or off by the flag
    ecaConnection, ///< up or down by the flag
    ecaAnswers,    ///< what the next checks of the connection find; those after them find it up or down
    ecaRestart     ///< the client goes, and a new one comes
};

struct SClientStep
{
    EClientAction action = ecaProcess;
    int code = 0;
    int type = 0;
    bool flag = false;
    bool queue = false;
    std::vector<bool> answers;
};

/// "RaiseError(1, 2, false, true)", "connection down", "next answers yes no yes"
std::string Shown(const SClientStep& step);

/// A client and its connection, spelt out and without haste.
class CClientModel
{
public:
    /// Does a step.
    /// @return what should be seen of it: the result, if it has one, and the calls of the host, one a line
    std::string Do(const SClientStep& step);

    bool Silent() const { return m_silent; }
    /// What became of each event that the last step met in the queue, in order: 1 sent, 0 a repeat, -1 kept.
    const std::vector<int>& Walked() const { return m_walked; }
    /// How many checks of the connection have their answers given.
    std::size_t AnswersLeft() const { return m_answers.size(); }

private:
    struct SReport
    {
        bool raise;
        int code;
        int type;
    };

    int Raise(int code, int type, bool queue);
    int Clear(int code, int type, bool queue);
    void ProcessQueue();
    void RemoveFromQueue(const std::vector<std::size_t>& places);
    bool IsSentLast(const SReport& report) const;
    void NoteSent(const SReport& report);
    void Send(const std::string& message);
    bool Verify();
    void Restart();

    bool m_connected = true;
    std::deque<bool> m_answers;
    std::vector<SReport> m_sentLast; // one for each code and type
    std::vector<SReport> m_queue;    // oldest first
    bool m_silent = false;

    std::string m_calls; // of the host, in the last step
    std::vector<int> m_walked;
};

} // namespace Models
