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
/// Lines are the same if they differ in nothing but numbers and what is quoted, where a backslash keeps a
/// quotation mark from ending the quotation: so no peer can fill the log by sending something else each time.
/// If there are more than kKinds kinds in a second, those beyond are left out and counted together. Cost: the
/// last line of each kind, for kKinds of them at most.
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

    /// The last of each kind that was left out, with their number, once their second is over; also the last
    /// of those that found no room.
    /// @param all  without waiting for that
    std::vector<std::string> LeftOut(Clock::time_point now, bool all);

private:
    struct SKind
    {
        Clock::time_point written;
        std::string last;
        std::uint64_t leftOut = 0;
    };

    bool MakeRoom(Clock::time_point now);
    void TellOthers(Clock::time_point now, bool all, std::vector<std::string>& lines);

    std::map<std::string, SKind> m_kinds; // by what lines of a kind have in common
    SKind m_others;                       // what found no room there, or had to make some
};

} // namespace Faultkeeper::Apps

#endif
