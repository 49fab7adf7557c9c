#ifndef FAULTKEEPER_FAULTKEEPERAPI_H
#define FAULTKEEPER_FAULTKEEPERAPI_H

#include <Faultkeeper/Export.h>
#include <Faultkeeper/Identifiers.h>

#include <MPI/MPISocketClientC.h>

#include <list>
#include <map>
#include <utility>

namespace Faultkeeper
{

/// Reports a process's own faults to the process that owns the error state.
///
/// Sends a "RaiseError" or "ClearError" notification to port 5300 of this machine for every change, and
/// nothing for a repeat of what it sent last for the same error. What cannot be sent because there is no
/// connection can be kept and sent later, in order, behind the first report that gets through; call
/// ProcessQueuedErrors before that report where the order of all matters. The connection is asked for once,
/// at construction; the host's socket tries again.
///
/// Ownership: self-contained. What is still queued at destruction is dropped without being sent.
/// Threads: none inside; one thread at a time for each object.
/// Failure: no connection is told by the result -1 alone. A message lost after it was handed to the
/// connection is not noticed: the state counts as sent until the opposite is sent.
/// Cost: a repeat costs one look-up. One map entry stays for every error ever sent.
class FAULTKEEPER_EXPORT CFaultkeeperAPI : public MPISocketClientC
{
public:
    /// Starts connecting to the owner and does not wait for it.
    CFaultkeeperAPI();
    ~CFaultkeeperAPI() override;
    CFaultkeeperAPI(const CFaultkeeperAPI&) = delete;
    CFaultkeeperAPI& operator=(const CFaultkeeperAPI&) = delete;

    /// Reports an error as raised.
    /// @param code   module | sub-module | problem
    /// @param flag   accepted and not used
    /// @param queue  keep the event if there is no connection; after a success or a repeat send what was kept
    /// @return 1 sent, 0 nothing to do because a raise was sent last, -1 not connected
    int RaiseError(int code, EProblemType type, bool flag, bool queue);
    /// Reports an error as cleared. Arguments and result as for RaiseError; the first clear of an error that
    /// was never raised through this object is sent.
    int ClearError(int code, EProblemType type, bool queue);

    /// As above with queue true; in silent mode nothing happens and the result is 0.
    /// @param id  problem code, failure mode
    int RaiseError(const std::pair<int, int>& id, bool flag);
    /// Likewise for an error as cleared.
    int ClearError(const std::pair<int, int>& id);

    /// Sends what was kept, oldest first. An event that meets a lost connection stays, and so does its place.
    void ProcessQueuedErrors();

    /// Silent mode mutes the two forms that take a pair, and only those. Off at construction.
    void SilentMode(bool on);

private:
    struct ErrorEvent
    {
        bool raise;
        int problemCode;
        EProblemType problemType;
    };

    int Report(const ErrorEvent& event, bool queue);
    int ReportChange(const ErrorEvent& event, bool queue);
    bool SentLast(const ErrorEvent& event) const;
    void SendReport(const ErrorEvent& event);
    void DrainQueue();

    std::map<std::pair<int, int>, bool, SErrorIDComparer> m_sentStates; // true: the last message was a raise
    std::list<ErrorEvent> m_queue;                                      // oldest first
    bool m_silent;
    bool m_draining; // inside ProcessQueuedErrors
};

} // namespace Faultkeeper

#endif
