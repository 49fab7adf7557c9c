#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

/// Configurations that are one edit or a few away from a good one, with all that the check has to say of
/// them.
namespace CheckCases
{

// The files of the good one: two modules, a parent with two triggers, two patterns.
constexpr const char* kList = "FaultkeeperConfig.xml";
constexpr const char* kPositioning = "positioning.xml";
constexpr const char* kCan = "can.xml";
constexpr const char* kPatterns = "ErrorPatterns.xml";

extern const char* const kCanText;

/// In an edit: all that the file holds, or nothing if there is no such file.
constexpr const char* kWhole = "";
/// In an edit: the file is taken away.
constexpr const char* kNoFile = "(no file)";

/// Puts one text in the place of another, where that stands first in the file.
struct SEdit
{
    std::string file;
    std::string from;
    std::string to;
};

inline SEdit Without(const std::string& file)
{
    return {file, kWhole, kNoFile};
}

// Edits of many cases, by what they make of the good configuration: the parent is the lack of satellites, its
// triggers are the silent receiver and the bus without power.
SEdit BusWithoutTitle();
SEdit BusVisible();
SEdit SatellitesWithoutBus(); ///< as a trigger
SEdit SatellitesNotVisible();
SEdit SatellitesWithTheirOwnTitle();
/// The first set without its first trigger, the silent receiver.
SEdit SatellitesWithoutReceiver();
/// Another automatic set behind the first, of the bus alone.
SEdit SecondSetOfBus();
/// The first pattern, without its second error.
SEdit PatternOfSatellitesOnly();

struct SCheckCase
{
    std::string name;
    std::vector<SEdit> edits;
    std::string expected; ///< all that is printed
    int lineWidth = 0;
};

inline void PrintTo(const SCheckCase& checked, std::ostream* out)
{
    *out << checked.name;
}

inline std::string NameOf(const testing::TestParamInfo<SCheckCase>& info)
{
    return info.param.name;
}

/// Writes the good configuration, edited, to a directory.
void WriteEdited(const std::string& prefix, const std::vector<SEdit>& edits);

class CheckTest : public testing::TestWithParam<SCheckCase>
{
};

} // namespace CheckCases
