#ifndef FAULTKEEPERCTL_SIMULATION_SCRIPT_H
#define FAULTKEEPERCTL_SIMULATION_SCRIPT_H

#include "common/text/ErrorNames.h"

#include <string>
#include <vector>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// One request of a script.
struct SScriptStep
{
    int line = 1;
    bool raise = true;
    ErrorId id;
};

/// What is wrong with a script, and where.
struct SScriptMistake
{
    int line = 1;
    int column = 1; ///< in characters
    std::string text;
};

/// A script: one request a line, "raise ID" or "clear ID" as one would type it on the command line; blank
/// lines and what follows a "#" mean nothing.
struct SScript
{
    std::vector<SScriptStep> steps;
    std::vector<SScriptMistake> mistakes; ///< all of them; lines with one are no steps
};

/// @param text      the whole script, with any line ends
/// @param database  must define every error that is named
SScript ParseScript(const std::string& text, const CErrorDatabase& database);

} // namespace Faultkeeper::Apps

#endif
