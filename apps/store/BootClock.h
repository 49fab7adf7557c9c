#ifndef FAULTKEEPER_APPS_STORE_BOOTCLOCK_H
#define FAULTKEEPER_APPS_STORE_BOOTCLOCK_H

#include <cstdint>
#include <string>

namespace Faultkeeper::Apps
{

/// Which start of the machine this is, as the system names it; empty if it does not.
std::string BootId();

/// Nanoseconds since the machine was started, sleep included. Nobody sets this clock.
std::int64_t NanosecondsSinceBoot();

} // namespace Faultkeeper::Apps

#endif
