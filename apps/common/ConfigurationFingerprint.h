#ifndef FAULTKEEPER_APPS_CONFIGURATIONFINGERPRINT_H
#define FAULTKEEPER_APPS_CONFIGURATIONFINGERPRINT_H

#include <string>

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Faultkeeper::Apps
{

/// A short name for all that a loaded configuration says, 16 hexadecimal digits: two processes with the same
/// one show the same errors in the same places. Blanks and comments in the files make no difference, the
/// order of the errors does. Chance makes two different ones equal once in 2^64.
std::string ConfigurationFingerprint(const CErrorDatabase& database);

} // namespace Faultkeeper::Apps

#endif
