#ifndef FAULTKEEPER_FAULTKEEPERD_SERVICE_SIGNALS_H
#define FAULTKEEPER_FAULTKEEPERD_SERVICE_SIGNALS_H

namespace Faultkeeper::Apps
{

/// Turns the signals that ask a program to end into something that poll(2) can wait for.
///
/// SIGTERM and SIGINT ask it to end, and SIGHUP does unless it was ignored when the program started, as nohup
/// does. SIGPIPE is ignored: a peer that has gone is noticed by its connection. Threads: one object in a
/// process at a time. The former handlers come back with the destructor.
class CSignals
{
public:
    /// Throws std::system_error if the system can't give what it takes.
    CSignals();
    ~CSignals();
    CSignals(const CSignals&) = delete;
    CSignals& operator=(const CSignals&) = delete;

    /// Has input once the program was asked to end.
    int Descriptor() const;

    /// The request to end is seen to: from here on the descriptor has input once the program is asked again,
    /// or was already. To be called once.
    void TakeFirst() const;

    /// The number of the first signal that asked, or 0.
    int Received() const;
};

} // namespace Faultkeeper::Apps

#endif
