#ifndef FAULTKEEPER_APPS_STANDARDSTREAMS_H
#define FAULTKEEPER_APPS_STANDARDSTREAMS_H

namespace Faultkeeper::Apps
{

/// Connects those of the descriptors 0, 1 and 2 that are closed to /dev/null, so that no pipe, socket or
/// file that is opened later becomes standard input, output or error. Writing to them fails as before. The
/// first thing that a program does.
void OpenStandardStreams();

} // namespace Faultkeeper::Apps

#endif
