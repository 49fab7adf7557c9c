#pragma once

#include "support/ConfigurationBuilder.h"

#include <Faultkeeper/Identifiers.h>

#include <string>
#include <utility>

/// Errors for tests that know them by number: "Positioning:GPS:No Data:0" up to ":20", then the same of the
/// sub-modules behind GPS.
namespace NumberedErrors
{

constexpr int kFailureModes = 21;
constexpr int kSubModules = 54;
constexpr int kFirstSubModule = Faultkeeper::esmiGPS >> 8;

inline Faultkeeper::ESubModuleIdentifier SubModule(int number)
{
    const int row = (kFirstSubModule - 1 + number / kFailureModes) % kSubModules;
    return static_cast<Faultkeeper::ESubModuleIdentifier>((row + 1) << 8);
}

inline std::string Name(int number)
{
    return "Positioning:" + Faultkeeper::TranslateSubModuleId(SubModule(number)) +
           ":No Data:" + std::to_string(number % kFailureModes);
}

inline int Code(int number)
{
    const int subModule = SubModule(number);
    const int problem = Faultkeeper::epiNoData;
    return Faultkeeper::emiPositioning | subModule | problem;
}

inline int Type(int number)
{
    return number % kFailureModes;
}

inline std::pair<int, int> Id(int number)
{
    return {Code(number), Type(number)};
}

/// Writes a configuration of the errors 0 .. count-1 without trigger sets.
/// @return the prefix, for the database's constructor
inline std::string Written(const std::string& prefix, int count)
{
    Support::CConfigurationBuilder builder;
    for (int number = 0; number < count; ++number)
        builder.Leaf(Name(number));
    builder.WriteTo(prefix);
    return prefix;
}

} // namespace NumberedErrors
