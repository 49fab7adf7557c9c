#include "store/BootClock.h"

#include <ctime>
#include <fstream>

namespace Faultkeeper::Apps
{

std::string BootId()
{
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string id;
    std::getline(file, id);
    return id;
}

std::int64_t NanosecondsSinceBoot()
{
    constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

} // namespace Faultkeeper::Apps
