#include "common/owner/RunDirectory.h"

#include "support/FreshDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace Faultkeeper::Apps;
using namespace Support;

TEST(RunDirectory, ComesFromTheEnvironment)
{
    setenv("FAULTKEEPER_RUN_DIR", "/somewhere", 1);
    EXPECT_EQ(DefaultRunDirectory(), "/somewhere");
    unsetenv("FAULTKEEPER_RUN_DIR");
}

TEST(RunDirectory, IsTheUsualOneOrTheCurrentOneIfTheEnvironmentSaysNothing)
{
    setenv("FAULTKEEPER_RUN_DIR", "", 1);
    EXPECT_EQ(DefaultRunDirectory(),
              std::filesystem::is_directory("/run/faultkeeper") ? "/run/faultkeeper" : ".");
    unsetenv("FAULTKEEPER_RUN_DIR");
}

TEST(Configuration, ComesFromTheEnvironmentOrFromTheUsualPlace)
{
    setenv("FAULTKEEPER_CONFIG", "here", 1);
    EXPECT_EQ(DefaultConfiguration(), "here");
    unsetenv("FAULTKEEPER_CONFIG");
    EXPECT_EQ(DefaultConfiguration(), "/etc/faultkeeper");
}

TEST(Paths, AreResolvedFromTheWorkingDirectory)
{
    const CFreshDirectory directory;
    const CWorkingDirectory working(directory.Path());
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(AbsolutePath("a"), here + "/a");
    EXPECT_EQ(AbsolutePath("./a//b/."), here + "/a/b");
    EXPECT_EQ(AbsolutePath("."), here);
    EXPECT_EQ(AbsolutePath(""), here);
    EXPECT_EQ(AbsolutePath("/"), "/");
}

TEST(Paths, LeadBehindALinkToWhereTheSystemFindsThem)
{
    const CFreshDirectory directory;
    const CWorkingDirectory working(directory.Path());
    std::filesystem::create_directories("real/inner");
    std::filesystem::create_directory("real/run");
    std::filesystem::create_directory("run");
    std::filesystem::create_directory_symlink("real/inner", "link");
    EXPECT_TRUE(std::filesystem::equivalent(AbsolutePath("link/../run"), "real/run"));
    EXPECT_TRUE(std::filesystem::equivalent(AbsolutePath("link/.."), "real"));
    EXPECT_TRUE(std::filesystem::equivalent(DirectoryPrefix("link/../"), "real"));
    EXPECT_EQ(AbsolutePath("link"), std::filesystem::current_path().string() + "/link");
    EXPECT_FALSE(std::filesystem::exists(AbsolutePath("nowhere/../run"))); // nor does the system find it
}

TEST(Paths, EndWithOneSlashAsPrefixes)
{
    EXPECT_EQ(DirectoryPrefix("/a/b"), "/a/b/");
    EXPECT_EQ(DirectoryPrefix("/a/b/"), "/a/b/");
    EXPECT_EQ(DirectoryPrefix("/"), "/");
}

TEST(EnterDirectory, ChangesTheWorkingDirectory)
{
    const CFreshDirectory directory;
    const CWorkingDirectory goBackAtTheEnd(".");
    std::string problem = "untouched";
    EXPECT_TRUE(EnterDirectory(directory.Path(), problem));
    EXPECT_TRUE(std::filesystem::equivalent(".", directory.Path()));
    EXPECT_EQ(problem, "untouched");
}

TEST(EnterDirectory, TellsWhyItCannot)
{
    const CFreshDirectory directory;
    std::string problem;
    EXPECT_FALSE(EnterDirectory(directory.File("none"), problem));
    EXPECT_EQ(problem, "cannot enter " + directory.File("none") + ": No such file or directory");
}
