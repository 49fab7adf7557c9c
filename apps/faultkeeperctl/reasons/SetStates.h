#ifndef FAULTKEEPERCTL_REASONS_SETSTATES_H
#define FAULTKEEPERCTL_REASONS_SETSTATES_H

#include <string>
#include <vector>

namespace Faultkeeper
{
class CError;
} // namespace Faultkeeper

namespace Faultkeeper::Apps
{

/// How things stand with one of an error's trigger sets.
struct SSetState
{
    int number = 1;        ///< among the error's sets, from 1
    bool automatic = true; ///< raises and clears the error by itself
    int active = 0;        ///< triggers that are active; one that is listed twice counts twice
    int triggers = 0;
    int needed = 1;

    /// Are so many active that the set raises the error, if it is automatic?
    bool Satisfied() const { return active > 0 && active >= needed; }
    /// Triggers that would have to be active as well.
    int Missing() const;
};

/// The states of all sets of an error as they are now.
std::vector<SSetState> SetStates(const CError& error);

/// "set 1 has 1 of 2 active and needs 1"
std::string SetText(const SSetState& set);

/// What of an error's sets raised it just now, or let it be cleared, after that happened to one of its
/// triggers: "set 1 has 1 of 2 active and needs 1; set 2 ..."
std::string WhyFollowed(const CError& error, const CError& trigger);

/// Why an error has not followed when that happened to one of its triggers: "set 1 has 1 of 3 active and
/// needs 2", "set 2 does not hold <trigger>", "none of its sets is automatic".
std::string WhyNotFollowed(const CError& error, const CError& trigger);

} // namespace Faultkeeper::Apps

#endif
