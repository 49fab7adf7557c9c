#include "support/FreshDirectory.h"
#include "unit/Common/fixtures/ConfigurationText.h"

#include <Faultkeeper/ErrorDatabase.h>
#include <Faultkeeper/ErrorOverlay.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// Something else stands where a file is expected, or one that cannot be read. It counts as missing, at once
// and without a word.
namespace
{

using namespace Faultkeeper;
using namespace ConfigurationText;

constexpr uid_t kNobody = 65534;

/// A way in which a file is no file that can be read. `replace` is given the path, where nothing is.
struct SObstacle
{
    const char* name;
    void (*replace)(const std::string& path);
};

void MakeSocket(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
}

const SObstacle kObstacles[] = {
    {"Nothing", [](const std::string&) {}},
    {"Directory", [](const std::string& path) { std::filesystem::create_directory(path); }},
    {"Pipe", [](const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0666), 0); }},
    {"Socket", &MakeSocket},
    {"Device", [](const std::string& path) { std::filesystem::create_symlink("/dev/zero", path); }},
    {"LinkToNothing", [](const std::string& path) { std::filesystem::create_symlink("nowhere", path); }},
    {"LinkToItself", [](const std::string& path) { std::filesystem::create_symlink(path, path); }},
    {"EmptyFile", [](const std::string& path) { Support::WriteFile(path, ""); }},
};

class UnreadableFilesTest : public testing::TestWithParam<SObstacle>
{
protected:
    UnreadableFilesTest()
    {
        WriteList(m_directory.Prefix(),
                  "<Module identifier=\"GPS\" file=\"first.xml\"/>" + kEntry); // first.xml is not there
        WriteModule(m_directory.Prefix(), WholeError("No Data"));
        Support::WriteFile(
            m_directory.File("ErrorPatterns.xml"),
            "<Overlay><Patterns><pattern fixedCode=\"any\" allowPartialMatch=\"yes\"/></Patterns></Overlay>");
    }

    void Replace(const std::string& name) const
    {
        std::filesystem::remove(m_directory.File(name));
        GetParam().replace(m_directory.File(name));
    }

    const Support::CFreshDirectory m_directory;
};

TEST_P(UnreadableFilesTest, InPlaceOfTheListOfModulesLoadsNothing)
{
    Replace("FaultkeeperConfig.xml");
    const CErrorDatabase database(m_directory.Prefix());
    EXPECT_FALSE(database.Loaded());
    EXPECT_TRUE(database.GetErrorList().empty());
}

TEST_P(UnreadableFilesTest, InPlaceOfAModuleLoadsTheOthers)
{
    Replace("first.xml");
    const CErrorDatabase database(m_directory.Prefix());
    EXPECT_TRUE(database.Loaded());
    EXPECT_EQ(database.GetErrorList().size(), 1u);
}

TEST_P(UnreadableFilesTest, InPlaceOfThePatternsMatchesNothing)
{
    EXPECT_EQ(CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}), "any");
    Replace("ErrorPatterns.xml");
    EXPECT_EQ(CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}), "");
}

INSTANTIATE_TEST_SUITE_P(A, UnreadableFilesTest, testing::ValuesIn(kObstacles),
                         [](const auto& obstacle) { return std::string(obstacle.param.name); });

/// A pipe with a writer that has a good file for whoever reads.
TEST(PipeWithAWriter, IsNotReadEither)
{
    const Support::CFreshDirectory directory;
    const std::string path = directory.File("FaultkeeperConfig.xml");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int both = open(path.c_str(), O_RDWR | O_CLOEXEC);
    const std::string text = "<Faultkeeper><ErrorList/></Faultkeeper>";
    ASSERT_EQ(write(both, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    EXPECT_FALSE(CErrorDatabase(directory.Prefix()).Loaded());
    close(both);
}

/// Files and directories that only their owner may read, looked at by somebody else: root may read
/// everything.
class ForbiddenFilesDeathTest : public testing::Test
{
protected:
    ForbiddenFilesDeathTest()
    {
        std::filesystem::permissions(m_directory.Path(), std::filesystem::perms(0755));
        WriteList(m_directory.Prefix(), kEntry);
        WriteModule(m_directory.Prefix(), WholeError("No Data"));
        Support::WriteFile(
            m_directory.File("ErrorPatterns.xml"),
            "<Overlay><Patterns><pattern fixedCode=\"any\" allowPartialMatch=\"yes\"/></Patterns></Overlay>");
    }

    void Forbid(const std::string& path) const
    {
        std::filesystem::permissions(path, std::filesystem::perms(0));
    }

    /// Ends the process, which is a child, with 0 if somebody without rights finds what is expected and the
    /// finding prints nothing.
    static void Judge(const std::function<bool()>& asExpected)
    {
        int ends[2] = {-1, -1};
        int printed = 0;
        if (pipe2(ends, O_CLOEXEC) != 0 || dup2(ends[1], STDERR_FILENO) < 0)
            _exit(3);
        if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0))
            _exit(2);
        const bool found = asExpected();
        const bool silent = ioctl(ends[0], FIONREAD, &printed) == 0 && printed == 0;
        _exit(found && silent ? 0 : 1);
    }

    std::size_t Errors() const { return CErrorDatabase(m_directory.Prefix()).GetErrorList().size(); }
    bool Loaded() const { return CErrorDatabase(m_directory.Prefix()).Loaded(); }
    std::string AnyCode() const { return CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}); }

    const Support::CFreshDirectory m_directory;
};

TEST_F(ForbiddenFilesDeathTest, FilesThatMayBeReadAreRead)
{
    EXPECT_EXIT(Judge([this] { return Loaded() && Errors() == 1 && AnyCode() == "any"; }),
                testing::ExitedWithCode(0), "");
}

TEST_F(ForbiddenFilesDeathTest, AListOfModulesThatMayNotBeReadLoadsNothing)
{
    Forbid(m_directory.File("FaultkeeperConfig.xml"));
    EXPECT_EXIT(Judge([this] { return !Loaded() && Errors() == 0; }), testing::ExitedWithCode(0), "");
}

TEST_F(ForbiddenFilesDeathTest, AModuleThatMayNotBeReadAddsNothing)
{
    Forbid(m_directory.File("module.xml"));
    EXPECT_EXIT(Judge([this] { return Loaded() && Errors() == 0; }), testing::ExitedWithCode(0), "");
}

TEST_F(ForbiddenFilesDeathTest, PatternsThatMayNotBeReadMatchNothing)
{
    Forbid(m_directory.File("ErrorPatterns.xml"));
    EXPECT_EXIT(Judge([this] { return AnyCode().empty(); }), testing::ExitedWithCode(0), "");
}

TEST_F(ForbiddenFilesDeathTest, ADirectoryThatMayNotBeEnteredHoldsNothing)
{
    Forbid(m_directory.Path());
    EXPECT_EXIT(Judge([this] { return !Loaded() && AnyCode().empty(); }), testing::ExitedWithCode(0), "");
    std::filesystem::permissions(m_directory.Path(), std::filesystem::perms(0700));
}

// ---- Files that are far too large

constexpr std::size_t kMebibyte = 1048576;

class LargeFilesTest : public testing::Test
{
protected:
    /// One error whose element has further attributes of one mebibyte each.
    static std::string Module(std::size_t mebibytes)
    {
        std::string attributes = kErrorAttributes;
        const std::string value(kMebibyte - 16, 'x');
        for (std::size_t number = 0; number < mebibytes; ++number)
            attributes += " a" + std::to_string(100 + number) + "=\"" + value + "\"";
        return SubModule(Problem(Error(kTexts, attributes)));
    }

    const Support::CFreshDirectory m_directory;
};

TEST_F(LargeFilesTest, AModuleWithOneHundredMebibytesOfAttributesCountsAsMissing)
{
    WriteList(m_directory.Prefix(), kEntry);
    WriteModule(m_directory.Prefix(), Module(100));
    const CErrorDatabase database(m_directory.Prefix());
    EXPECT_TRUE(database.Loaded());
    EXPECT_TRUE(database.GetErrorList().empty());
}

TEST_F(LargeFilesTest, OneHundredMebibytesOfAttributesInTwoModulesAreRead)
{
    WriteList(m_directory.Prefix(), kEntry + kEntry);
    WriteModule(m_directory.Prefix(), Module(50));
    EXPECT_EQ(CErrorDatabase(m_directory.Prefix()).GetErrorList().size(), 2u);
}

TEST_F(LargeFilesTest, AListOfModulesOrPatternsWithThemCountsAsMissing)
{
    const std::string many = Module(100);
    WriteList(m_directory.Prefix(), kEntry + many);
    Support::WriteFile(m_directory.File("ErrorPatterns.xml"),
                       "<Overlay><Patterns>" + many + "</Patterns></Overlay>");
    EXPECT_FALSE(CErrorDatabase(m_directory.Prefix()).Loaded());
    EXPECT_EQ(CErrorOverlay(m_directory.Prefix()).FindFriendlyCode({}), "");
}

TEST_F(LargeFilesTest, OneHundredThousandAttributesOfOneErrorAreRead)
{
    std::string attributes = kErrorAttributes;
    for (int number = 0; number < 100000; ++number)
        attributes += " a" + std::to_string(number) + "=\"\"";
    WriteList(m_directory.Prefix(), kEntry);
    WriteModule(m_directory.Prefix(), SubModule(Problem(Error(kTexts, attributes))));
    EXPECT_EQ(CErrorDatabase(m_directory.Prefix()).GetErrorList().size(), 1u);
}

} // namespace
