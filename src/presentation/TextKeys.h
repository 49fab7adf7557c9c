#ifndef FAULTKEEPER_PRESENTATION_TEXTKEYS_H
#define FAULTKEEPER_PRESENTATION_TEXTKEYS_H

namespace Faultkeeper
{

/// What is put behind an error's name to make a text key. The console's string tables are filed under these:
/// the title is the "short title" there, and the short problem text the title for virtual terminals.
constexpr const char* kProblemKey = ".problem";
constexpr const char* kSolutionKey = ".solution";
constexpr const char* kTitleKey = ".shortTitle";
constexpr const char* kShortProblemKey = ".vtTitle";

} // namespace Faultkeeper

#endif
