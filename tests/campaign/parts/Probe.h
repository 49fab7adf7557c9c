#pragma once

#include "campaign/parts/Account.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Campaign
{

/// A reporter and a display in one thread: measures again and again how long it takes from RaiseError until
/// the display has copied the raise.
class CProbe
{
public:
    /// @param configuration  with a slash at its end
    /// @param error          that nobody else reports
    CProbe(const std::string& configuration, const ErrorId& error);
    ~CProbe();
    CProbe(const CProbe&) = delete;
    CProbe& operator=(const CProbe&) = delete;

    /// Ends it.
    void Finish();

    /// Milliseconds, once finished, the shortest first.
    const std::vector<double>& Delays() const { return m_delays; }
    /// So large a part of them is no longer than this; 0 if there are none.
    double Quantile(double part) const;
    /// Changes of the error that were reported, all acknowledged.
    std::uint64_t Raises() const { return m_raises; }

private:
    void Measure(const std::string& configuration, const ErrorId& error);

    std::atomic<bool> m_over{false};
    std::vector<double> m_delays;
    std::uint64_t m_raises = 0;
    std::thread m_thread; // last: it uses the others
};

} // namespace Campaign
