#ifndef FAULTKEEPER_APPS_STORE_STORERECORDS_H
#define FAULTKEEPER_APPS_STORE_STORERECORDS_H

#include "common/text/ErrorNames.h"

#include <Faultkeeper/ErrorEntry.h>

#include <Core/Time.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

/// What an owner keeps over its own end.
namespace Faultkeeper::Apps
{

/// One error: its record in the shared table, and how often it was raised, which does not wrap.
struct SStoredError
{
    SErrorEntry entry;
    std::uint64_t raises = 0;
};

/// Why an owner has raised or cleared an error by itself. Append only: stores hold the numbers.
enum EOwnersReason : int
{
    eorNone = 0,          ///< it has not
    eorConfiguration = 1, ///< cleared: it had followed by the links of another configuration
    eorTable = 2          ///< a former owner's table says so, which was written while the store was not
};

/// One raise or clear that happened.
struct STransition
{
    std::uint64_t number = 0; ///< from 1 on, given by the journal; one is missing only if its row was damaged
    Core::Time time;          ///< wall clock
    std::int64_t sinceBoot = 0; ///< nanoseconds
    bool raised = false;
    int problemCode = 0;
    int problemType = 0;
    std::string session; ///< who reported it; empty if nobody who had introduced itself, or if it was caused
    bool caused = false; ///< it followed from a change of another error
    int causeCode = 0;   ///< that error, if caused
    int causeType = 0;
    EOwnersReason reason = eorNone; ///< if nobody reported it and nothing caused it
};

/// How far a reporting client's session has been applied.
struct SStoredSession
{
    static constexpr std::int64_t kConnected = std::numeric_limits<std::int64_t>::max();

    std::string id;
    std::uint64_t applied = 0;
    std::int64_t left = kConnected; ///< when its last connection ended, in nanoseconds since boot
};

/// All that is to be stored together or not at all.
struct SStoreBatch
{
    std::vector<SStoredError> errors;
    std::vector<STransition> transitions; ///< without numbers
    std::vector<SStoredSession> sessions;
    std::vector<std::string> forgottenSessions;
    std::string configuration; ///< the one that all of this is of; empty: it is the same as before

    bool Empty() const
    {
        return errors.empty() && transitions.empty() && sessions.empty() && forgottenSessions.empty() &&
               configuration.empty();
    }
};

/// What was found in a store.
struct SStoreContents
{
    std::string boot;          ///< of the machine, when the store was written; empty for a new store
    std::string configuration; ///< fingerprint
    std::vector<SStoredError> errors;
    std::vector<SStoredSession> sessions; ///< those that have been without a connection the longest first
    std::vector<std::string> dropped;     ///< rows that could not be trusted, in words
    std::vector<ErrorId> droppedErrors;   ///< whose rows were among them

    /// Was it written in that start of the machine? Nothing is of one whose name is not known.
    bool OfBoot(const std::string& id) const { return !id.empty() && boot == id; }
};

} // namespace Faultkeeper::Apps

#endif
