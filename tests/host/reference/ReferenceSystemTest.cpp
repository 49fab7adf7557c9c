// A program of its own, because it takes the place of system functions that our host calls.
#include <Core/IO/XMLDocument.h>
#include <Core/Time.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>

#include "support/FreshDirectory.h"

namespace
{

/// What the functions do in place of asking the system. One test at a time sets something and takes it back.
struct SFailures
{
    int readError = 0;
    int readErrors = 0;   ///< so many reads fail
    bool endless = false; ///< every read gives blanks
    int statusError = 0;
    const timespec* now = nullptr;
};

SFailures failures;

class HostSystem : public testing::Test
{
protected:
    HostSystem() { Support::WriteFile(m_path, "<a><b/></a>"); }
    ~HostSystem() override { failures = SFailures(); }

    /// What is said of the file while the functions fail; "" if it is read.
    std::string Refusal() const
    {
        Core::IO::XMLDocument document(false);
        const bool read = document.Parse(m_path);
        EXPECT_EQ(read, !document.RootNode().Children().empty());
        return document.Error();
    }

    const Support::CFreshDirectory m_directory;
    const std::string m_path = m_directory.File("document.xml");
};

} // namespace

// Names and parameters are the system's, and so is the name that the headers give a function on machines with
// 32 bits. The executable's definitions win over the C library's.
extern "C"
{

    ssize_t read(int descriptor, void* buffer, size_t size)
    {
        if (failures.readErrors > 0)
        {
            --failures.readErrors;
            errno = failures.readError;
            return -1;
        }
        if (failures.endless)
        {
            std::memset(buffer, ' ', size);
            return static_cast<ssize_t>(size);
        }
        return static_cast<ssize_t>(syscall(SYS_read, descriptor, buffer, size));
    }

    int fstat(int descriptor, struct stat* status) noexcept
    {
        errno = failures.statusError;
        return errno != 0 ? -1 : fstatat(descriptor, "", status, AT_EMPTY_PATH);
    }

    int clock_gettime(clockid_t clock, timespec* time) noexcept
    {
        const char* const name = sizeof(void*) == 4 ? "__clock_gettime64" : "clock_gettime";
        static const auto original = reinterpret_cast<int (*)(clockid_t, timespec*)>(dlsym(RTLD_NEXT, name));
        if (failures.now == nullptr)
            return original(clock, time);
        *time = *failures.now;
        return 0;
    }

} // extern "C"

namespace
{

TEST_F(HostSystem, AReadThatIsInterruptedIsRepeated)
{
    failures.readError = EINTR;
    failures.readErrors = 3;
    EXPECT_EQ(Refusal(), "");
}

TEST_F(HostSystem, AReadThatFailsRefusesTheFile)
{
    failures.readError = EIO;
    failures.readErrors = 1;
    EXPECT_EQ(Refusal(), "0:0: Input/output error");
    EXPECT_EQ(Refusal(), "");
}

TEST_F(HostSystem, AFileThatGrowsWithoutEndWhileItIsReadIsRefused)
{
    failures.endless = true;
    EXPECT_EQ(Refusal(), "0:0: File too large");
}

TEST_F(HostSystem, AFileThatCannotBeExaminedIsRefused)
{
    failures.statusError = EOVERFLOW;
    EXPECT_EQ(Refusal(), "0:0: Value too large for defined data type");
}

/// The bytes that a time ends with.
std::int64_t Nanoseconds(const Core::Time& time)
{
    std::int64_t nanoseconds = 0;
    std::memcpy(&nanoseconds, reinterpret_cast<const char*>(&time) + 4, sizeof nanoseconds);
    return nanoseconds;
}

/// Ends a child, whose clock nobody else needs, with 0 if its clock stands still at the last time there is.
void JudgeTheLastTime()
{
    const std::int64_t latest = std::numeric_limits<std::int64_t>::max();
    const bool last = Nanoseconds(Core::Time::Now()) == latest && Nanoseconds(Core::Time::Now()) == latest;
    _exit(last ? 0 : 1);
}

TEST(HostSystemDeathTest, AClockFarInTheFutureStandsStillAtTheLastTime)
{
    const timespec distant = {std::numeric_limits<time_t>::max(), 999999999};
    failures.now = &distant;
    EXPECT_EXIT(JudgeTheLastTime(), testing::ExitedWithCode(0), "");
    failures.now = nullptr;
}

TEST(HostSystemDeathTest, ATableFromTheFarFutureLeavesNoLaterTime)
{
    EXPECT_EXIT(
        (Core::Time::NotBefore(Core::Time(std::numeric_limits<std::int64_t>::max())), JudgeTheLastTime()),
        testing::ExitedWithCode(0), "");
}

} // namespace
