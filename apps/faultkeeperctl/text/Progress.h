#ifndef FAULTKEEPERCTL_PROGRESS_H
#define FAULTKEEPERCTL_PROGRESS_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace Faultkeeper::Apps
{

/// Tells on standard error what is being waited for, and for how long, when it takes more than a second. The
/// line goes with the object. Where standard error is no terminal nothing is told.
///
/// Threads: has one of its own, which writes nothing but that line; nothing else goes to standard error
/// meanwhile.
class CProgress
{
public:
    /// @param what  in a few words: "waiting for the owner"
    explicit CProgress(const std::string& what);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

private:
    void Tell();

    const std::string m_what;
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_over = false;
    std::thread m_teller; // none where there is no terminal
};

} // namespace Faultkeeper::Apps

#endif
