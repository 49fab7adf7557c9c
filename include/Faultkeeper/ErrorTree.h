#ifndef FAULTKEEPER_ERRORTREE_H
#define FAULTKEEPER_ERRORTREE_H

#include <cstdint>
#include <string>
#include <vector>

namespace Faultkeeper
{

/// One fault as a screen shows it: a top error together with everything that its active triggers contribute.
/// A snapshot: it holds copies and does not follow later changes.
struct SErrorTree
{
    bool visible = false;               ///< is the top error shown at all?
    bool forceShutdown = false;         ///< does the top error force the console to shut down?
    bool fullScreen = false;            ///< is the top error shown over the whole screen?
    bool includeServiceNumber = false;  ///< is the service's number shown with the top error?
    bool shouldBeep = false;            ///< of the top error or of any trigger that contributes
    bool shouldBeepIfGuiding = false;   ///< likewise
    std::int32_t problemCode = 0;       ///< identifier of the top error: module | sub-module | problem
    std::int32_t problemType = 0;       ///< and failure mode
    std::int32_t severity = 0;          ///< EErrorSeverity of the top error
    std::string title;                  ///< title text, or its key "<name>.shortTitle"
    std::string shortTitle;             ///< short problem text, or its key "<name>.vtTitle"
    std::vector<std::string> problems;  ///< problem texts, or their keys "<name>.problem"
    std::vector<std::string> solutions; ///< solution texts, or their keys "<name>.solution"
    std::int32_t raisedTime = 0;  ///< last raise of the top error, whole seconds since 1970, rounded down
    std::int32_t clearedTime = 0; ///< last clear, likewise
    std::uint32_t counter1 = 0;   ///< raises of the top error, 0..65535
    std::uint32_t counter2 = 0;   ///< counts along with counter1
    std::string stateKey;         ///< which triggers were active, as upper-case hexadecimal digits
    std::string friendlyCode;     ///< code of the first pattern that matches, or ""
};

} // namespace Faultkeeper

#endif
