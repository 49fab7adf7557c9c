#ifndef FAULTKEEPERCTL_PAST_STOREPAST_H
#define FAULTKEEPERCTL_PAST_STOREPAST_H

#include "faultkeeperctl/past/PastState.h"
#include "store/reading/StoreImage.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Faultkeeper::Apps
{

struct SSettings;

/// The store to read.
/// @param option  as given; "" for the one that an owner uses if nothing else is said
std::string StorePath(const SSettings& settings, const std::string& option);

/// Reads all of it, and tells on standard error which of its rows cannot be trusted.
/// @throws CFailure (epsNo) if it cannot be read
SPast ReadPast(const std::string& path);

/// Follows a journal that an owner is writing.
class CJournalFollower
{
public:
    /// @param from  number of the first transition that is of interest
    CJournalFollower(const std::string& path, std::uint64_t from) : m_path(path), m_next(from) {}

    /// What has come since the last call. A store that cannot be read just now is told once, on standard
    /// error; a new one in its place is read from its beginning. Cost: next to none if nothing has changed.
    std::vector<STransition> News();

private:
    std::vector<STransition> Read();

    const std::string m_path;
    std::uint64_t m_next;
    SStoreMark m_mark;
    bool m_read = false;
    bool m_failureTold = false;
};

} // namespace Faultkeeper::Apps

#endif
