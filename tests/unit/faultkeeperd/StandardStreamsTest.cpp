#include "common/StandardStreams.h"

#include "system/ChildProcess.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using Faultkeeper::Apps::OpenStandardStreams;
using namespace Support;

namespace
{
bool SameFile(int descriptor, const char* path)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(descriptor, &opened) == 0 && stat(path, &named) == 0 && opened.st_rdev == named.st_rdev &&
           opened.st_ino == named.st_ino;
}
} // namespace

TEST(StandardStreams, ThatAreClosedLeadNowhere)
{
    CChildProcess program(
        []
        {
            close(0);
            close(2);
            OpenStandardStreams();
            return SameFile(0, "/dev/null") && SameFile(2, "/dev/null") && dup(2) > 2 ? 0 : 1;
        });
    EXPECT_EQ(program.Wait(), 0);
}

TEST(StandardStreams, ThatAreOpenStayAsTheyAre)
{
    CChildProcess program(
        []
        {
            const int file = open(".", O_RDONLY);
            dup2(file, 1);
            OpenStandardStreams();
            return SameFile(1, ".") ? 0 : 1;
        });
    EXPECT_EQ(program.Wait(), 0);
}
