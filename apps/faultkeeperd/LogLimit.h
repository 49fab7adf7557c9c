#ifndef FAULTKEEPER_FAULTKEEPERD_LOGLIMIT_H
#define FAULTKEEPER_FAULTKEEPERD_LOGLIMIT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

/// Lets the same line through once a second, and counts the others: logs are kept on flash, and whoever reads
/// one wants to see what else there is.
///
/// Lines are the same if they differ in nothing but numbers and what is quoted, so no peer can fill the log
/// by sending something else each time. Cost: the last line of each kind, for kKinds of them at most.
class CLogLimit
{
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::seconds kPause{1};
    static constexpr std::size_t kKinds = 64;

    /// A line is to be written.
    /// @return what to write now: the line, with the number of those left out since the last one like it; or
    ///         nothing
    std::string Admit(const std::string& line, Clock::time_point now);

    /// The last of each kind that was left out, with their number, once their second is over.
    /// @param all  without waiting for that
    std::vector<std::string> LeftOut(Clock::time_point now, bool all);

private:
    struct SKind
    {
        Clock::time_point written;
        std::string last;
        std::uint64_t leftOut = 0;
    };

    void MakeRoom();

    std::map<std::string, SKind> m_kinds; // by what lines of a kind have in common
};

} // namespace Faultkeeper::Apps

#endif
